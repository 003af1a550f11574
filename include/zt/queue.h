/* zt/queue.h - bounded blocking double-ended queue of item pointers between threads.
 *
 * SPDX-License-Identifier: MIT
 *
 * Producers wait while the queue is full, consumers while it is empty. The capacity can be set anew
 * at run time (zt_queue_commit) and given up (zt_queue_decommit), which can also release every
 * blocked thread at once.
 *
 * Memory   The caller owns the record and the items: the queue stores the pointers it is given and
 *          hands the same pointers back. It allocates its nodes as one block in create and commit;
 *          puts and gets allocate nothing.
 * Threads  Locked inside: any operation on any thread, but for create and destroy, which need the
 *          record for themselves. No lock is held while a call waits or while the discard callback
 *          runs. A blocked thread may be cancelled (pthread_cancel); nothing else here is a
 *          cancellation point, destroy aside.
 * Time     timeout_ms is in milliseconds, in total and however often the call is woken: negative
 *          waits without limit, 0 does not wait.
 * Failure  A put or get that fails leaves the queue as it was.
 *
 * The item list may be walked to find a position; take `lock` for the walk, and for its use too
 * unless no other thread takes items (the lock is recursive; do not wait while holding it):
 *
 *     for (zt_list_head_t *p = queue.items.next; p != &queue.items; p = p->next) {
 *         zt_queue_node_t *node = ZT_CONTAINER_OF(p, zt_queue_node_t, link);
 *     }
 */
#ifndef ZT_QUEUE_H
#define ZT_QUEUE_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/event.h"
#include "zt/export.h"
#include "zt/list.h"
#include "zt/mutex.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One place for an item. Callers read nodes, the queue alone writes them. */
typedef struct zt_queue_node_t {
    zt_list_head_t link;   /* place on the item list or on the free list */
    zt_list_head_t *owner; /* the head of the list that holds the node now */
    void *data;            /* the item; meaningless on the free list */
} zt_queue_node_t;

/* The queue. Callers may read everything under the lock and write nothing. */
typedef struct zt_queue_t {
    uint8_t initialized;       /* 1 from a successful create until destroy */
    uint8_t canceled;          /* 1 from a cancelling decommit to the next commit: nobody waits */
    uint32_t capacity;         /* nodes in the block */
    uint32_t count;            /* items queued; capacity - count nodes are free */
    zt_mutex_t lock;           /* guards every other field and both lists */
    zt_event_t avail_event;    /* set after an item was queued; consumers wait on it */
    zt_event_t space_event;    /* set after a node was given back; producers wait on it */
    zt_list_head_t items;      /* nodes that hold items, oldest end first */
    zt_list_head_t free_nodes; /* nodes that hold none */
    zt_queue_node_t *nodes;    /* the block; null while the queue has no nodes */
} zt_queue_t;

/* Told which item a discarding put has dropped; context is the put's. Runs on the put's thread,
 * without the lock, and may call any operation on the queue but destroy. */
typedef void (*zt_queue_discard_cb_t)(zt_queue_t *queue, void *item, void *context);

/* Makes an empty queue for capacity items, whatever the record held before. With a capacity of 0 it
 * has no nodes until commit: it is empty and full at once. O(capacity).
 * OutOfmemory (8): no memory for the nodes, or more than 4 GiB of them.  Otherwise the status of
 * the lock or event that could not be initialised. After a failure the record needs no destroy. */
ZT_API ZT_MUST_CHECK zt_status_t zt_queue_create(zt_queue_t *queue, uint32_t capacity);

/* Releases everything and drops the items left. No thread may be inside any operation on the queue.
 * Harmless on a zeroed record and after a failed create. */
ZT_API void zt_queue_destroy(zt_queue_t *queue);

/* Drops every item and gives the queue a new capacity, 0 included; a cancelled queue waits normally
 * again, also after a failure. Producers that are blocked go on if there are nodes for them.
 * O(capacity), on top of the threads that are blocked.
 * OutOfmemory (8): as in create; the queue is left without nodes. */
ZT_API ZT_MUST_CHECK zt_status_t zt_queue_commit(zt_queue_t *queue, uint32_t capacity);

/* Drops every item and gives up the nodes. With cancel, every blocked producer returns Canceled
 * (42) and every blocked consumer NULL, even if a commit follows at once (one that finds a node or
 * an item on its way out takes it), and no call waits until the next commit. Without cancel,
 * blocked calls stay blocked, and an earlier cancel is taken back. Does nothing on a record not
 * created. */
ZT_API void zt_queue_decommit(zt_queue_t *queue, bool cancel);

/* Puts an item, NULL allowed, at the head: it is the next that zt_queue_get_head returns. Waits for a
 * free node up to timeout_ms. Constant time.
 * Timeout (2): no free node within timeout_ms (a timeout_ms of 0 gives this also on a cancelled
 * queue).  Canceled (42): the queue was cancelled, before or during the wait. */
ZT_API zt_status_t zt_queue_add_head(zt_queue_t *queue, void *item, int32_t timeout_ms);

/* Puts at the tail; otherwise, and in its statuses, like zt_queue_add_head. */
ZT_API zt_status_t zt_queue_add_tail(zt_queue_t *queue, void *item, int32_t timeout_ms);

/* Puts right before, or right behind, pos: a node on this queue's item list, or the list head
 * itself, `(zt_queue_node_t *)&queue->items`. pos is not verified, and must still be on the list
 * when the wait is over. Otherwise, and in their statuses, like zt_queue_add_head. */
ZT_API zt_status_t zt_queue_insert_before(zt_queue_t *queue, void *item, zt_queue_node_t *pos,
                                          int32_t timeout_ms);
ZT_API zt_status_t zt_queue_insert_after(zt_queue_t *queue, void *item, zt_queue_node_t *pos,
                                         int32_t timeout_ms);

/* Puts at the tail without ever waiting: when the queue is full, the item at the head is dropped to
 * make room and discard, which may be null, is told.
 * Timeout (2): the queue has no nodes at all. */
ZT_API zt_status_t zt_queue_add_tail_with_discard(zt_queue_t *queue, void *item,
                                                  zt_queue_discard_cb_t discard, void *context);

/* The item at the head, or tail, which stays queued; NULL when there is none. Never waits. */
ZT_API void *zt_queue_peek_head(zt_queue_t *queue);
ZT_API void *zt_queue_peek_tail(zt_queue_t *queue);

/* Takes the item at the head, or tail, waiting for one up to timeout_ms. NULL when none came or the
 * queue was cancelled, which cannot be told from a NULL that was queued. Constant time. */
ZT_API void *zt_queue_get_head(zt_queue_t *queue, int32_t timeout_ms);
ZT_API void *zt_queue_get_tail(zt_queue_t *queue, int32_t timeout_ms);

/* Takes the item of node pos, which must be on this queue's item list: that is not verified. Never
 * waits. Constant time. */
ZT_API void *zt_queue_get_at(zt_queue_t *queue, zt_queue_node_t *pos);

/* What the queue held at the moment of the call: whether it had no item or no free node (a queue
 * without nodes has neither), and how many of each. */
ZT_API bool zt_queue_is_empty(zt_queue_t *queue);
ZT_API bool zt_queue_is_full(zt_queue_t *queue);
ZT_API uint32_t zt_queue_get_num_avail(zt_queue_t *queue);
ZT_API uint32_t zt_queue_get_num_free(zt_queue_t *queue);

#ifdef __cplusplus
}
#endif

#endif /* ZT_QUEUE_H */
