/* zt/fourcc.h - what is known about a media format by its four-character code.
 *
 * SPDX-License-Identifier: MIT
 *
 * A code is four ASCII characters in a 32-bit number, the first one in the lowest byte: "NV12" is
 * 0x3231564E. Shorter codes end in blanks ("RGB ", "Y8  "). Upper and lower case are different.
 *
 * 79 codes are known: RGB, packed and planar YUV and grey pictures, compressed video and pictures,
 * and formats of single samples. Every other number is an unknown code: not RGB, packed, 0 bits per
 * pixel, colour depth 8, not compressed, sample size 0, bit depth 0. The library keeps no list for
 * applications to extend.
 *
 * Memory   Nothing is allocated.
 * Threads  Safe on any thread; no state.
 * Failure  None: an unknown code is no error.
 */
#ifndef ZT_FOURCC_H
#define ZT_FOURCC_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The code of four characters, a constant expression: ZT_FOURCC('N', 'V', '1', '2'). */
#define ZT_FOURCC(c0, c1, c2, c3)                                                                 \
    ((uint32_t)(uint8_t)(c0) | ((uint32_t)(uint8_t)(c1) << 8) | ((uint32_t)(uint8_t)(c2) << 16) | \
     ((uint32_t)(uint8_t)(c3) << 24))

/* True for the RGB formats. */
ZT_API ZT_CONST bool zt_fourcc_is_rgb(uint32_t code);

/* False for the planar and semi-planar formats, whose components lie in planes of their own; true
 * for everything else, also for compressed, sample and unknown codes. */
ZT_API ZT_CONST bool zt_fourcc_is_packed(uint32_t code);

/* Bits of storage a pixel takes, in planar formats as the average over the frame (12 for 4:2:0 with
 * samples of 8 bits). 0 for compressed, sample and unknown codes. */
ZT_API ZT_CONST int zt_fourcc_get_bpp(uint32_t code);

/* Bits of a colour component: 10 or 16 for the deep formats, 8 for everything else. */
ZT_API ZT_CONST int zt_fourcc_get_color_depth(uint32_t code);

/* True for coded video and pictures, whose frames have no fixed size. */
ZT_API ZT_CONST bool zt_fourcc_is_compressed(uint32_t code);

/* Bytes that a sample takes in memory: 4 for "S24 " and its family, 3 for "S243" and its family.
 * 0 for everything that is no sample format. */
ZT_API ZT_CONST int zt_fourcc_get_sample_size(uint32_t code);

/* Significant bits of an integer sample. 0 for floating-point samples and for everything that is no
 * sample format. */
ZT_API ZT_CONST int zt_fourcc_get_bit_depth(uint32_t code);

/* Writes the code's four characters and a NUL, 5 bytes in all. Nothing is checked or trimmed: the
 * bytes of an unknown code come out as they are, and blanks stay. */
ZT_API void zt_fourcc_get_name(uint32_t code, char *name);

#ifdef __cplusplus
}
#endif

#endif /* ZT_FOURCC_H */
