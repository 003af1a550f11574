/* zt/id_pool.h - hands out small positive numbers and maps each to a caller's pointer.
 *
 * SPDX-License-Identifier: MIT
 *
 * A handle table: ids count up from 1 or are chosen by the caller, and an id that was freed is not
 * handed out again until the counter has been through all positive 32-bit numbers.
 *
 * Memory   The caller owns the record; the pool owns its buckets and entries and returns them at
 *          destroy. Entries are recycled: a pool in a steady state allocates nothing. The pointers
 *          stored belong to the caller and are never followed.
 * Threads  alloc, alloc_specific, free and lookup lock and may run on any thread. Create and
 *          destroy must not run beside any other call on the pool.
 * Failure  A status other than success, or false, leaves every entry as it was.
 */
#ifndef ZT_ID_POOL_H
#define ZT_ID_POOL_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/list.h"
#include "zt/mutex.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The pool; written by the operations below only. */
typedef struct zt_id_pool_t {
    zt_mutex_t lock;           /* guards everything else */
    int32_t next_id;           /* the next automatic id; not positive: 1 comes next */
    uint32_t bucket_count;     /* fixed at create */
    zt_list_head_t *buckets;   /* owned; the entries of id x are in bucket x modulo bucket_count */
    zt_list_head_t free_nodes; /* spare entries */
    uint32_t node_count;       /* entries allocated, in use or spare; for whoever watches memory */
} zt_id_pool_t;

/* Makes an empty pool, whatever the record held. A bucket count near the number of ids in use at
 * the same time keeps look-ups at one step. A failed create leaves a destroyed record.
 * InvalidArgument (7): bucket_count is 0.  OutOfmemory (8): no room for the buckets, or more than 32
 * bits of bytes.  Otherwise what zt_mutex_init reports. */
ZT_API ZT_MUST_CHECK zt_status_t zt_id_pool_create(zt_id_pool_t *pool, uint32_t bucket_count);

/* Releases all entries; the record can be created again. A zeroed or destroyed record is left
 * alone. */
ZT_API void zt_id_pool_destroy(zt_id_pool_t *pool);

/* Stores ptr under the next free id and writes that id to *id.
 * OutOfmemory (8): no entry could be had; *id is untouched, the counter has moved on. */
ZT_API ZT_MUST_CHECK zt_status_t zt_id_pool_alloc(zt_id_pool_t *pool, void *ptr, int32_t *id);

/* Stores ptr under the id in *id; below 1, as zt_id_pool_alloc does. *id becomes the id used. Later
 * automatic ids are above it.
 * FileExists (22): the id is in use.  OutOfmemory (8): no entry could be had. */
ZT_API ZT_MUST_CHECK zt_status_t zt_id_pool_alloc_specific(zt_id_pool_t *pool, void *ptr,
                                                           int32_t *id);

/* Gives an id back. False: it is not in use. Ids below 1 are ignored and give true. */
ZT_API bool zt_id_pool_free(zt_id_pool_t *pool, int32_t id);

/* Whether the id is in use; *ptr (when ptr is not null) becomes its pointer. */
ZT_API bool zt_id_pool_lookup(zt_id_pool_t *pool, int32_t id, void **ptr);

/* Unlinks and frees every entry on the list and counts node_count down. For the pool's own use. */
ZT_API void _delete_list(zt_id_pool_t *pool, zt_list_head_t *list);

#ifdef __cplusplus
}
#endif

#endif /* ZT_ID_POOL_H */
