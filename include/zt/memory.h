/* zt/memory.h - the allocator and the memory functions that the whole library goes through.
 *
 * SPDX-License-Identifier: MIT
 *
 * Each function is the C library's function of the same name with a 32-bit count. The library
 * allocates, frees, copies and compares through these exported names, so an application can put its
 * own in their place to count, limit or fail allocations.
 *
 * Memory   What zt_malloc and zt_zalloc return belongs to the caller and goes back through zt_free.
 * Threads  Safe on any thread; no state.
 * Failure  Out of memory is a null result. Pointers are not checked: null is the caller's fault,
 *          as with the functions wrapped.
 */
#ifndef ZT_MEMORY_H
#define ZT_MEMORY_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* size bytes with undefined contents, or null. */
ZT_API ZT_ALLOCATES(1) void *zt_malloc(uint32_t size);

/* size zero bytes, or null. */
ZT_API ZT_ALLOCATES(1) void *zt_zalloc(uint32_t size);

/* Releases what zt_malloc or zt_zalloc returned. Null is allowed and does nothing. */
ZT_API void zt_free(void *ptr);

/* Copies count bytes between regions that may overlap; returns destination. */
ZT_API void *zt_memmove(void *destination, const void *source, uint32_t count);

/* Copies count bytes between regions that do not overlap; returns destination. */
ZT_API void *zt_memcpy(void *destination, const void *source, uint32_t count);

/* Sets count bytes to the low 8 bits of value; returns destination. */
ZT_API void *zt_memset(void *destination, int value, uint32_t count);

/* Negative, 0 or positive as the first region compares below, equal to or above the second, byte by
 * byte as unsigned numbers. */
ZT_API int zt_memcmp(const void *first, const void *second, uint32_t count);

#ifdef __cplusplus
}
#endif

#endif /* ZT_MEMORY_H */
