/* zt/hdmi_info_frame.h - HDMI InfoFrames and data-island packets: kinds, sizes and checksums.
 *
 * SPDX-License-Identifier: MIT
 *
 * Eleven kinds of frames have a small id, dense from 0, a name and the type code that CEA-861 or
 * the HDMI specification gives them. A set of kinds is a mask with bit i for id i. Payloads are
 * neither built nor read.
 *
 * The bytes of a frame, at most 31:
 *
 *     0    type code
 *     1    version
 *     2    bits 0 to 4: payload length; bits 5 to 7 do not belong to the length
 *     3    checksum: makes the sum of all bytes of the frame 0 modulo 256
 *     4... payload
 *
 * Memory   Frames are the caller's and must reach as far as the size in their header says; they are
 *          only read. Names live as long as the process.
 * Threads  Safe on any thread; no state.
 * Failure  Ids and type codes out of range have fixed answers. Frame pointers are not checked.
 */
#ifndef ZT_HDMI_INFO_FRAME_H
#define ZT_HDMI_INFO_FRAME_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The kinds of frames, by id. */
enum {
    ZT_HDMI_INFO_FRAME_AVI = 0,    /* AVI InfoFrame */
    ZT_HDMI_INFO_FRAME_AUDIO = 1,  /* Audio InfoFrame */
    ZT_HDMI_INFO_FRAME_SPD = 2,    /* Source Product Description InfoFrame */
    ZT_HDMI_INFO_FRAME_MS = 3,     /* MPEG Source InfoFrame */
    ZT_HDMI_INFO_FRAME_VS = 4,     /* Vendor-Specific InfoFrame */
    ZT_HDMI_INFO_FRAME_ACP = 5,    /* Audio Content Protection packet */
    ZT_HDMI_INFO_FRAME_ISRC1 = 6,  /* International Standard Recording Code packet 1 */
    ZT_HDMI_INFO_FRAME_ISRC2 = 7,  /* International Standard Recording Code packet 2 */
    ZT_HDMI_INFO_FRAME_GAMUT = 8,  /* Gamut Metadata packet */
    ZT_HDMI_INFO_FRAME_VBI = 9,    /* NTSC VBI InfoFrame */
    ZT_HDMI_INFO_FRAME_HDR = 10,   /* Dynamic Range and Mastering InfoFrame */
    ZT_HDMI_INFO_FRAME_COUNT = 11, /* ids are below it */
};

/* The size of the longest frame in bytes. */
enum { ZT_HDMI_INFO_FRAME_MAX_SIZE = 31 };

/* The type code of an id; 0, which is no type code, for an id above 10. */
ZT_API ZT_CONST uint8_t zt_hdmi_info_frame_get_type_by_id(uint8_t id);

/* The name of an id, "AVI" for one; null for an id above 10. */
ZT_API ZT_CONST const char *zt_hdmi_info_frame_get_name_by_id(uint8_t id);

/* The id of a type code; -1 for a code of no known kind. */
ZT_API ZT_CONST int zt_hdmi_info_frame_get_id_by_type(uint8_t type);

/* Writes the type codes of a set of kinds, in the order of their ids, and returns how many. capacity
 * is the room in types; it also bounds the ids that are looked at: those from capacity on are left
 * out even when there is room, so give 11 to see all of them. A 0 follows the last code unless
 * capacity (or 11, if that is less) codes were written. With a capacity of 0 types may be null. */
ZT_API uint8_t zt_hdmi_info_frame_get_type_by_flags(uint32_t flags, uint8_t *types,
                                                    uint8_t capacity);

/* The size of a frame in bytes, 4 to 31, by its header. A length too long for any frame counts as
 * the longest. */
ZT_API int zt_hdmi_info_frame_get_size(const uint8_t *frame);

/* True when the length fits a frame and the bytes add up to 0 modulo 256. */
ZT_API bool zt_hdmi_info_frame_is_valid(const uint8_t *frame);

/* True when the lengths in the headers differ, or any byte within the size of the frames does. */
ZT_API bool zt_hdmi_info_frame_is_different(const uint8_t *first, const uint8_t *second);

/* What must be added to the checksum byte for the frame to become valid: with that byte set to 0
 * beforehand, the checksum itself; 0 for a valid frame. Writes nothing. */
ZT_API uint8_t zt_hdmi_info_frame_calc_checksum(const uint8_t *frame);

#ifdef __cplusplus
}
#endif

#endif /* ZT_HDMI_INFO_FRAME_H */
