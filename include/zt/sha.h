/* zt/sha.h - SHA-256, and a code over one 64-byte block made with the SHA-1 compression function.
 *
 * SPDX-License-Identifier: MIT
 *
 * Despite their names none of these takes a key: zt_sha256_mac is the plain SHA-256 of FIPS 180-4, and
 * sha1_mac is neither SHA-1 nor an HMAC and protects nothing against somebody who wants to deceive.
 *
 * Memory   Nothing is allocated or kept.
 * Threads  Safe on any thread.
 * Failure  None; pointers must be valid, data may be null when its length is 0.
 */
#ifndef ZT_SHA_H
#define ZT_SHA_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The code of exactly one block: the 80 steps of SHA-1 from its initial value, which is not added at the
 * end; the words E to A, each least significant byte first. */
ZT_API void sha1_mac(const uint8_t block[64], uint8_t code[20]);

/* The SHA-256 digest of length bytes; a negative length counts as 0. */
ZT_API void zt_sha256_mac(const void *data, int32_t length, uint8_t digest[32]);

/* The same as 64 lower-case hexadecimal characters; no NUL is written. */
ZT_API void zt_sha256_mac_to_hex_string(const void *data, int32_t length, char text[64]);

#ifdef __cplusplus
}
#endif

#endif /* ZT_SHA_H */
