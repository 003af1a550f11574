/* zt/md5.h - the MD5 message digest of RFC 1321.
 *
 * SPDX-License-Identifier: MIT
 *
 * For checksums and for protocols that ask for it. MD5 is broken: anybody can make two messages of the
 * same digest, so it protects nothing.
 *
 * Memory   The caller owns the context. Nothing is allocated.
 * Threads  Safe on any thread; a context belongs to one thread at a time.
 * Failure  None; pointers must be valid, data may be null when its length is 0.
 */
#ifndef ZT_MD5_H
#define ZT_MD5_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A digest in the making; written by the functions below only. */
typedef struct zt_md5_ctx_t {
    uint32_t count[2];  /* message bits so far modulo 2^64, low word first */
    uint32_t state[4];  /* the chaining values A to D */
    uint8_t buffer[64]; /* input not yet processed: (count / 8) mod 64 bytes of it */
} zt_md5_ctx_t;

/* The padding that zt_md5_final takes its bytes from: 0x80 and 63 zeros. */
ZT_API extern const uint8_t PADDING[64];

/* Starts a message, whatever the context held. */
ZT_API void zt_md5_init(zt_md5_ctx_t *ctx);

/* Adds length bytes to the message. */
ZT_API void zt_md5_update(zt_md5_ctx_t *ctx, const void *data, uint32_t length);

/* Ends the message and writes its digest. The context must be initialised again before another. */
ZT_API void zt_md5_final(zt_md5_ctx_t *ctx, uint8_t digest[16]);

/* The digest of one piece of memory. */
ZT_API void zt_md5(const void *data, uint32_t length, uint8_t digest[16]);

/* The same as 32 lower-case hexadecimal characters; no NUL is written. */
ZT_API void zt_md5_to_hex_string(const void *data, uint32_t length, char text[32]);

#ifdef __cplusplus
}
#endif

#endif /* ZT_MD5_H */
