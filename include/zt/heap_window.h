/* zt/heap_window.h - the maximum or minimum of the newest samples of a stream.
 *
 * SPDX-License-Identifier: MIT
 *
 * A window holds at most slot_count samples, and of those only the ones whose age, measured from
 * the newest sample, is at most window_len. An update adds one sample and drops what has left the
 * window; the extreme is read in constant time. Samples are signed 64-bit numbers, or opaque items
 * of a fixed size with a comparison of the caller's.
 *
 * Memory   The caller owns the record. create allocates the slots once, destroy frees them; items
 *          are copied in and out. The record must stay at its address while it holds samples.
 * Threads  No lock: guard a window with your own mutex. The comparison runs inside update.
 * Failure  A create that fails leaves an empty window without slots, which updates, reads, reset
 *          and destroy accept. Nothing else can fail for want of memory.
 */
#ifndef ZT_HEAP_WINDOW_H
#define ZT_HEAP_WINDOW_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/heap.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

struct zt_heap_window_t;

/* Not 0 when item first must rank above item second: is greater, for a maximum. 0 for equal items.
 * All 32 bits count. Both point to item_size bytes aligned to 8. */
typedef int32_t (*zt_heap_window_compare_t)(struct zt_heap_window_t *window, const void *first,
                                            const void *second);

/* One sample. Slots lie one behind the other, each 48 bytes and the item's size rounded up to a
 * multiple of 8, at least 56. Written by the library only. */
typedef struct zt_heap_window_slot_t {
    zt_heap_node_t node;            /* in_heap is 1 while the sample is in the window */
    uint64_t time;                  /* when it was taken, as update was told */
    struct zt_heap_window_t *owner; /* the window */
    int64_t data;                   /* the number, or the first bytes of the item */
} zt_heap_window_slot_t;

/* The fields are the library's; callers may read them. */
typedef struct zt_heap_window_t {
    int32_t first;                    /* slot of the oldest sample; -1: the window is empty */
    int32_t last;                     /* slot of the newest sample; -1: the window is empty */
    uint32_t slot_count;              /* the most samples that the window holds */
    uint32_t window_len;              /* the greatest age of a sample, in the unit of its time */
    void *slots;                      /* slot_count slots, a ring; null: not created */
    zt_heap_t heap;                   /* the samples in the window, the extreme on top */
    zt_heap_window_compare_t compare; /* null: samples are 64-bit numbers */
    uint32_t item_size;               /* bytes of an item; 8 for numbers */
    uint8_t is_max;                   /* numbers: 0 minimum, else maximum; unused with compare */
} zt_heap_window_t;

/* Makes an empty window, whatever the record held before: destroy an old window first. Without a
 * comparison the samples are numbers and item_size does not matter.
 * InvalidArgument (7): a null window, 0 slots, or a comparison with item_size 0.
 * OutOfmemory (8): no memory for the slots, or their size does not fit 32 bits. */
ZT_API ZT_MUST_CHECK zt_status_t zt_heap_window_create(zt_heap_window_t *window,
                                                       uint32_t window_len, uint32_t slot_count,
                                                       zt_heap_window_compare_t compare,
                                                       uint32_t item_size, uint8_t is_max);

/* Frees the slots. The window is empty afterwards and can be created again. */
ZT_API void zt_heap_window_destroy(zt_heap_window_t *window);

/* Drops all samples. O(slot_count). */
ZT_API void zt_heap_window_reset(zt_heap_window_t *window);

/* Adds item_size bytes from item as the sample of this time, and drops what has left the window.
 * For windows with a comparison. Times must not run backwards: an earlier time counts as a huge age
 * and empties the window. O(log slot_count) for each sample that comes or goes. */
ZT_API void zt_heap_window_update(zt_heap_window_t *window, uint64_t time, const void *item);

/* The same for windows of numbers. */
ZT_API void zt_heap_window_update_int64(zt_heap_window_t *window, uint64_t time, int64_t value);

/* Copies the extreme item, item_size bytes, to item.
 * NeedMoreData (50): the window is empty; item is untouched. */
ZT_API ZT_MUST_CHECK zt_status_t zt_heap_window_get_max(const zt_heap_window_t *window, void *item);

/* The extreme number (the minimum when is_max is 0), or 0 when the window is empty. */
ZT_API int64_t zt_heap_window_get_max_int64(const zt_heap_window_t *window);

#ifdef __cplusplus
}
#endif

#endif /* ZT_HEAP_WINDOW_H */
