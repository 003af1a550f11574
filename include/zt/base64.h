/* zt/base64.h - base64 with the standard alphabet and padding of RFC 4648, section 4.
 *
 * SPDX-License-Identifier: MIT
 *
 * Both functions work on the caller's buffers and say how much room they need: call once with a null
 * destination to learn the size, and again with that much.
 *
 * Memory   Nothing is allocated. Source and destination must not overlap.
 * Threads  Safe on any thread.
 * Failure  Nothing is written to the destination. out_length must not be null, nor source when its
 *          length is not 0.
 */
#ifndef ZT_BASE64_H
#define ZT_BASE64_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes source as text without line breaks, and a NUL. *out_length becomes the length of the text. An
 * empty source gives length 0 and writes nothing, no NUL either.
 * OutOfmemory (8): destination is null or too small; *out_length becomes the size it needs, NUL
 * included, or the largest 64-bit number when that has no such size. */
ZT_API zt_status_t zt_base64_encode(char *destination, uint64_t size, uint64_t *out_length,
                                    const void *source, uint64_t length);

/* Writes the bytes that the text stands for. *out_length becomes their number. Lines may end with a line
 * feed, also behind a carriage return, with spaces before it; spaces may end the text. A last group of
 * fewer than four characters gives no bytes, but counts in the size asked for.
 * InvalidArgument (7): another character, a space elsewhere, more than two "=", or data behind one;
 * *out_length is untouched.
 * OutOfmemory (8): destination is null or too small; *out_length becomes the size it needs. */
ZT_API zt_status_t zt_base64_decode(void *destination, uint64_t size, uint64_t *out_length,
                                    const char *source, uint64_t length);

#ifdef __cplusplus
}
#endif

#endif /* ZT_BASE64_H */
