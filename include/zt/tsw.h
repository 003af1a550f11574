/* zt/tsw.h - the smallest delta and the largest jitter of a recent stretch of timestamps.
 *
 * SPDX-License-Identifier: MIT
 *
 * Each update brings a reference timestamp (what a media sample carries, for one) and the local
 * time. Their difference is the sample's delta; its jitter is how far the delta lies from the
 * smallest delta that the window held when the sample came. Asked at any time: the smallest delta
 * of the last delta_window units of time, and the largest jitter of the last jitter_window units.
 * All times, windows and limits are in one unit of the caller's choice.
 *
 * A ring keeps the last samples; the oldest gives way to a new one when the ring is full. A sample
 * as old as a window is long still belongs to it. Windows move with updates only, not with time.
 *
 * Memory   The caller owns the record; the window owns one array of entries from create to destroy.
 *          An update allocates nothing.
 * Threads  No lock: use a window on one thread at a time.
 * Failure  Only creation fails. A window without entries (creation failed, or destroyed) reads as
 *          empty and ignores updates; reset and destroy do it no harm.
 */
#ifndef ZT_TSW_H
#define ZT_TSW_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/heap.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Filled in by the caller. */
typedef struct zt_tsw_param_t {
    uint32_t size;          /* entries in the ring, 1 to 48806446 (an array below 4 GiB) */
    uint32_t delta_window;  /* greatest age of a sample that counts for the smallest delta */
    uint32_t jitter_window; /* the same for the largest jitter; not above delta_window */
    bool smooth;            /* filter the deltas before they enter the window */
} zt_tsw_param_t;

/* A sample in the ring; written by the library only. */
typedef struct zt_tsw_entry_t {
    uint64_t now;               /* local time of the update */
    int64_t delta;              /* local time minus reference, smoothed if so wanted */
    int64_t jitter;             /* 0 to the limit given with the update */
    zt_heap_node_t delta_node;  /* in delta_heap while in the delta window */
    zt_heap_node_t jitter_node; /* in jitter_heap while in the jitter window */
} zt_tsw_entry_t;

/* All fields are written by the library. */
typedef struct zt_tsw_t {
    int32_t cur;             /* slot of the newest entry; -1: empty */
    int32_t delta_head;      /* slot of the oldest entry of the delta window; -1: empty */
    int32_t jitter_head;     /* slot of the oldest entry of the jitter window; -1: empty */
    zt_tsw_param_t param;    /* as given at creation */
    zt_tsw_entry_t *entries; /* owned; size slots; null: creation failed, or destroyed */
    zt_heap_t delta_heap;    /* smallest delta on top */
    zt_heap_t jitter_heap;   /* largest jitter on top */
    int64_t smoothed;        /* the last smoothed delta; means nothing without smooth */
    bool evicted;            /* an entry has left the delta window since creation or reset */
} zt_tsw_t;

/* Makes an empty window, whatever the record held; the parameters are copied.
 * InvalidArgument (7): a null pointer, a size of 0 or a jitter window above the delta window.
 * OutOfmemory (8): no memory for the entries, or more than 32 bits of it. */
ZT_API ZT_MUST_CHECK zt_status_t zt_tsw_create(zt_tsw_t *tsw, const zt_tsw_param_t *param);

/* Empties the window. Parameters and `smoothed` stay. O(size). */
ZT_API void zt_tsw_reset(zt_tsw_t *tsw);

/* Frees the entries. */
ZT_API void zt_tsw_destroy(zt_tsw_t *tsw);

/* Takes a sample in: its delta is now - ref, as a signed number.
 *
 * With smooth, a delta that meets a window with entries becomes delta / 8 + 7 * smoothed / 8, where
 * both quotients are truncated toward 0 and the product cannot overflow.
 *
 * The jitter of the first sample is 0, of any other its distance from the smallest delta, at most
 * limit. A delta that is limit or more above the smallest one is a discontinuity: the window is
 * reset, and the sample is its first one, with limit as its jitter. A delta below the smallest one,
 * however far, is none.
 *
 * Then whatever is older than its window, measured from this sample's now, leaves that window.
 * O(log size) and as much for each entry that leaves; a reset is O(size). */
ZT_API void zt_tsw_update(zt_tsw_t *tsw, uint64_t ref, uint64_t now, uint32_t limit);

/* The smallest delta in the delta window; 0 when that is empty. */
ZT_API int64_t zt_tsw_get_delta(const zt_tsw_t *tsw);

/* zt_tsw_get_delta, and in *now the local time of the sample with the smallest delta (of one of
 * them, if several have it). now may be null; it is not written when the window is empty. */
ZT_API int64_t zt_tsw_get_delta_ex(const zt_tsw_t *tsw, uint64_t *now);

/* The largest jitter in the jitter window; 0 when that is empty. */
ZT_API int64_t zt_tsw_get_jitter(const zt_tsw_t *tsw);

#ifdef __cplusplus
}
#endif

#endif /* ZT_TSW_H */
