/* zt/mem_heap.h - hands out aligned pieces of an address range that it never touches.
 *
 * SPDX-License-Identifier: MIT
 *
 * For memory that the process may not even map: a reserved region of a device, a window of a bus.
 * The bookkeeping lives in ordinary memory. First fit in address order; freeing merges with free
 * neighbours at once, so no two free blocks are ever adjacent.
 *
 * Memory   The caller owns the handle variable and the region. The heap owns its record and all
 *          block descriptors, also those it has handed out: they end with zt_mem_heap_free or at
 *          destroy.
 * Threads  alloc, free and the sizes lock and may run on any thread. Create and destroy must not
 *          run beside any other call on the heap.
 * Failure  A null block means that nothing has changed.
 */
#ifndef ZT_MEM_HEAP_H
#define ZT_MEM_HEAP_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/list.h"
#include "zt/mutex.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A piece of the region. Callers read addr and size and change nothing. */
typedef struct zt_mem_heap_block_t {
    zt_list_head_t link; /* place among all blocks, in address order */
    uint8_t is_free;     /* 1: free, 0: handed out */
    uint64_t addr;       /* first address, a multiple of the alignment */
    uint32_t size;       /* bytes */
} zt_mem_heap_block_t;

/* The record behind a handle, for debuggers; written by the heap only. */
typedef struct zt_mem_heap_record_t {
    zt_list_head_t blocks; /* every block, free or not: together they cover the region */
    zt_mutex_t lock;       /* guards everything else */
    uint32_t total_size;   /* bytes in the region */
    uint32_t free_size;    /* bytes in free blocks */
    uint32_t align;        /* power of two: alignment of addresses, granule of sizes */
} zt_mem_heap_record_t;

/* A heap's handle; null while there is none. */
typedef zt_mem_heap_record_t *zt_mem_heap_t;

/* Makes a heap of size bytes from base on and stores its handle in *heap. The region may end at the
 * very top of the address space.
 * InvalidArgument (7): heap is null, align is not a power of two (0 is none), or base is not a
 * multiple of it; *heap is untouched.  OutOfmemory (8): no memory; *heap may have become null.
 * Otherwise what zt_mutex_init reports, with *heap null. */
ZT_API ZT_MUST_CHECK zt_status_t zt_mem_heap_create(zt_mem_heap_t *heap, uint64_t base,
                                                    uint32_t size, uint32_t align);

/* Releases the record and all descriptors and sets *heap to null. A null pointer or handle is
 * ignored. */
ZT_API void zt_mem_heap_destroy(zt_mem_heap_t *heap);

/* The first free block that is large enough, cut to size rounded up to the alignment; a size of 0
 * gives an empty block. Null: no block fits, no memory for a descriptor, or a null handle.
 * O(blocks). */
ZT_API ZT_MUST_CHECK zt_mem_heap_block_t *zt_mem_heap_alloc(zt_mem_heap_t *heap, uint32_t size);

/* Takes a block back and merges it with its free neighbours; the descriptor is gone. Null and
 * blocks that are free are ignored. The block must be this heap's: that is not checked. O(1). */
ZT_API void zt_mem_heap_free(zt_mem_heap_t *heap, zt_mem_heap_block_t *block);

/* Bytes in the region, handed out, and free. 0 for a null handle. */
ZT_API uint32_t zt_mem_heap_get_size(zt_mem_heap_t *heap);
ZT_API uint32_t zt_mem_heap_get_alloc_size(zt_mem_heap_t *heap);
ZT_API uint32_t zt_mem_heap_get_free_size(zt_mem_heap_t *heap);

#ifdef __cplusplus
}
#endif

#endif /* ZT_MEM_HEAP_H */
