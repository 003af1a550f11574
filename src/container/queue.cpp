// Bounded blocking double-ended queue of item pointers.
// SPDX-License-Identifier: MIT
#include "zt/queue.h"

#include <cstddef>
#include <type_traits>

#include "base/list_ops.hpp"
#include "container/queue_waiters.hpp"
#include "os/mutex_guard.hpp"
#include "zt/memory.h"

// Both records are ABI: no field may be added, and padding is not ours to use either.
static_assert(std::is_standard_layout_v<zt_queue_node_t> && sizeof(zt_queue_node_t) == 32);
static_assert(offsetof(zt_queue_node_t, link) == 0 && offsetof(zt_queue_node_t, owner) == 16);
static_assert(offsetof(zt_queue_node_t, data) == 24);
static_assert(std::is_standard_layout_v<zt_queue_t> && alignof(zt_mutex_t) == 8);
static_assert(offsetof(zt_queue_t, initialized) == 0 && offsetof(zt_queue_t, canceled) == 1);
static_assert(offsetof(zt_queue_t, capacity) == 4 && offsetof(zt_queue_t, count) == 8);
static_assert(offsetof(zt_queue_t, lock) == 16);
static_assert(offsetof(zt_queue_t, avail_event) == 16 + sizeof(zt_mutex_t));
static_assert(offsetof(zt_queue_t, space_event) == 20 + sizeof(zt_mutex_t));
static_assert(offsetof(zt_queue_t, items) == 24 + sizeof(zt_mutex_t));
static_assert(offsetof(zt_queue_t, free_nodes) == 40 + sizeof(zt_mutex_t));
static_assert(offsetof(zt_queue_t, nodes) == 56 + sizeof(zt_mutex_t));
static_assert(sizeof(zt_queue_t) == 64 + sizeof(zt_mutex_t));

namespace {

using zt::detail::list_empty;
using zt::detail::list_init;
using zt::detail::list_insert_after;
using zt::detail::list_insert_before;
using zt::detail::list_remove;
using zt::detail::MutexGuard;
using zt::detail::queue_has_waiters;
using zt::detail::queue_release_waiters;
using zt::detail::queue_wait;
using zt::detail::QueueSide;
using zt::detail::QueueWait;

enum class End : uint8_t { kHead, kTail };
enum class Where : uint8_t { kBefore, kAfter };

zt_queue_node_t *node_of(zt_list_head_t *link) {
    return ZT_CONTAINER_OF(link, zt_queue_node_t, link);
}

// Unlinks a free node, of which there must be one, and stores the item in it.
zt_queue_node_t *fill_free_node(zt_queue_t *queue, void *item) {
    zt_queue_node_t *node = node_of(queue->free_nodes.next);
    list_remove(&node->link);
    node->data = item;
    node->owner = &queue->items;
    ++queue->count;
    return node;
}

// Moves a node from the item list to the free list and returns its item.
void *take_item(zt_queue_t *queue, zt_queue_node_t *node) {
    list_remove(&node->link);
    --queue->count;
    node->owner = &queue->free_nodes;
    list_insert_before(&queue->free_nodes, &node->link);
    return node->data;
}

// The place is a node of the item list or its head; what is next to it is looked at after the wait.
// Events are set once the lock is released, so that whoever wakes does not run into it.
zt_status_t put(zt_queue_t *queue, void *item, zt_list_head_t *place, Where where,
                int32_t timeout_ms) {
    QueueWait wait = {ZT_STATUS_SUCCESS, false};
    zt_mutex_lock(&queue->lock);
    if (list_empty(&queue->free_nodes)) wait = queue_wait(queue, QueueSide::kProducer, timeout_ms);
    if (wait.status == ZT_STATUS_SUCCESS) {
        zt_queue_node_t *node = fill_free_node(queue, item);
        if (where == Where::kBefore) {
            list_insert_before(place, &node->link);
        } else {
            list_insert_after(place, &node->link);
        }
    }
    zt_mutex_unlock(&queue->lock);

    if (wait.pass_on) zt_event_set(&queue->space_event);
    if (wait.status == ZT_STATUS_SUCCESS) zt_event_set(&queue->avail_event);
    return wait.status;
}

void *get(zt_queue_t *queue, End end, int32_t timeout_ms) {
    QueueWait wait = {ZT_STATUS_SUCCESS, false};
    void *item = nullptr;
    zt_mutex_lock(&queue->lock);
    if (list_empty(&queue->items)) wait = queue_wait(queue, QueueSide::kConsumer, timeout_ms);
    if (wait.status == ZT_STATUS_SUCCESS) {
        item = take_item(queue, node_of(end == End::kHead ? queue->items.next : queue->items.prev));
    }
    zt_mutex_unlock(&queue->lock);

    if (wait.pass_on) zt_event_set(&queue->avail_event);
    if (wait.status == ZT_STATUS_SUCCESS) zt_event_set(&queue->space_event);
    return item;
}

// Gives up the node block, and with it every item: the items are the callers' and are not touched.
void drop_nodes(zt_queue_t *queue) {
    queue->capacity = 0;
    queue->count = 0;
    zt_free(queue->nodes);
    queue->nodes = nullptr;
    list_init(&queue->items);
    list_init(&queue->free_nodes);
}

// Gives a queue without nodes its block; on failure it stays without.
zt_status_t set_up_nodes(zt_queue_t *queue, uint32_t capacity) {
    if (capacity == 0) return ZT_STATUS_SUCCESS;
    const uint64_t bytes = uint64_t{capacity} * sizeof(zt_queue_node_t);
    if (bytes > UINT32_MAX) return ZT_STATUS_OUT_OF_MEMORY;
    queue->nodes = static_cast<zt_queue_node_t *>(zt_zalloc(static_cast<uint32_t>(bytes)));
    if (queue->nodes == nullptr) return ZT_STATUS_OUT_OF_MEMORY;

    // Each goes to the front: the free list runs from the last node of the block to the first.
    for (uint32_t i = 0; i < capacity; ++i) {
        queue->nodes[i].owner = &queue->free_nodes;
        list_insert_after(&queue->free_nodes, &queue->nodes[i].link);
    }
    queue->capacity = capacity;
    return ZT_STATUS_SUCCESS;
}

}  // namespace

zt_status_t zt_queue_create(zt_queue_t *queue, uint32_t capacity) {
    zt_memset(queue, 0, sizeof *queue);
    list_init(&queue->items);
    list_init(&queue->free_nodes);

    zt_status_t status = zt_mutex_init(&queue->lock);
    if (status == ZT_STATUS_SUCCESS) status = zt_event_init(&queue->space_event);
    if (status == ZT_STATUS_SUCCESS) status = zt_event_init(&queue->avail_event);
    if (status == ZT_STATUS_SUCCESS) status = set_up_nodes(queue, capacity);
    if (status != ZT_STATUS_SUCCESS) {
        zt_queue_destroy(queue);  // leaves members alone that were not reached
        return status;
    }
    queue->initialized = 1;
    return ZT_STATUS_SUCCESS;
}

void zt_queue_destroy(zt_queue_t *queue) {
    // Without the lock: it may never have been initialised, and nobody else is here.
    drop_nodes(queue);
    zt_mutex_destroy(&queue->lock);
    zt_event_deinit(&queue->space_event);
    zt_event_deinit(&queue->avail_event);
    queue->initialized = 0;
}

zt_status_t zt_queue_commit(zt_queue_t *queue, uint32_t capacity) {
    zt_mutex_lock(&queue->lock);
    drop_nodes(queue);
    const zt_status_t status = set_up_nodes(queue, capacity);
    queue->canceled = 0;
    // Whoever blocked for lack of nodes would sleep on, since no get need ever come. Waking one is
    // enough: it passes on.
    const bool wake_producers =
        queue->capacity > 0 && queue_has_waiters(queue, QueueSide::kProducer);
    zt_mutex_unlock(&queue->lock);

    if (wake_producers) zt_event_set(&queue->space_event);
    return status;
}

void zt_queue_decommit(zt_queue_t *queue, bool cancel) {
    if (!queue->initialized) return;
    zt_mutex_lock(&queue->lock);
    drop_nodes(queue);
    queue->canceled = cancel;
    // `canceled` alone would strand those who run only after the next commit has cleared it.
    if (cancel) queue_release_waiters(queue);
    zt_mutex_unlock(&queue->lock);

    if (!cancel) return;
    zt_event_set(&queue->avail_event);
    zt_event_set(&queue->space_event);
}

zt_status_t zt_queue_add_head(zt_queue_t *queue, void *item, int32_t timeout_ms) {
    return put(queue, item, &queue->items, Where::kAfter, timeout_ms);
}

zt_status_t zt_queue_add_tail(zt_queue_t *queue, void *item, int32_t timeout_ms) {
    return put(queue, item, &queue->items, Where::kBefore, timeout_ms);
}

zt_status_t zt_queue_insert_before(zt_queue_t *queue, void *item, zt_queue_node_t *pos,
                                   int32_t timeout_ms) {
    return put(queue, item, &pos->link, Where::kBefore, timeout_ms);
}

zt_status_t zt_queue_insert_after(zt_queue_t *queue, void *item, zt_queue_node_t *pos,
                                  int32_t timeout_ms) {
    return put(queue, item, &pos->link, Where::kAfter, timeout_ms);
}

zt_status_t zt_queue_add_tail_with_discard(zt_queue_t *queue, void *item,
                                           zt_queue_discard_cb_t discard, void *context) {
    zt_mutex_lock(&queue->lock);
    if (queue->capacity == 0) {
        zt_mutex_unlock(&queue->lock);
        return ZT_STATUS_TIMEOUT;
    }
    // The dropped item's node becomes the only free one, and thus the one that is filled next.
    const bool full = list_empty(&queue->free_nodes);
    void *dropped = nullptr;
    if (full) dropped = take_item(queue, node_of(queue->items.next));
    zt_queue_node_t *node = fill_free_node(queue, item);
    list_insert_before(&queue->items, &node->link);
    zt_mutex_unlock(&queue->lock);

    if (full && discard != nullptr) discard(queue, dropped, context);
    zt_event_set(&queue->avail_event);
    return ZT_STATUS_SUCCESS;
}

void *zt_queue_peek_head(zt_queue_t *queue) {
    const MutexGuard guard(&queue->lock);
    return list_empty(&queue->items) ? nullptr : node_of(queue->items.next)->data;
}

void *zt_queue_peek_tail(zt_queue_t *queue) {
    const MutexGuard guard(&queue->lock);
    return list_empty(&queue->items) ? nullptr : node_of(queue->items.prev)->data;
}

void *zt_queue_get_head(zt_queue_t *queue, int32_t timeout_ms) {
    return get(queue, End::kHead, timeout_ms);
}

void *zt_queue_get_tail(zt_queue_t *queue, int32_t timeout_ms) {
    return get(queue, End::kTail, timeout_ms);
}

void *zt_queue_get_at(zt_queue_t *queue, zt_queue_node_t *pos) {
    zt_mutex_lock(&queue->lock);
    void *item = take_item(queue, pos);
    zt_mutex_unlock(&queue->lock);
    zt_event_set(&queue->space_event);
    return item;
}

bool zt_queue_is_empty(zt_queue_t *queue) {
    const MutexGuard guard(&queue->lock);
    return list_empty(&queue->items);
}

bool zt_queue_is_full(zt_queue_t *queue) {
    const MutexGuard guard(&queue->lock);
    return list_empty(&queue->free_nodes);
}

uint32_t zt_queue_get_num_avail(zt_queue_t *queue) {
    const MutexGuard guard(&queue->lock);
    return queue->count;
}

uint32_t zt_queue_get_num_free(zt_queue_t *queue) {
    const MutexGuard guard(&queue->lock);
    return queue->capacity - queue->count;
}
