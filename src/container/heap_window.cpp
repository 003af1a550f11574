// Sliding-window extreme: a ring of samples in order of time, and a heap of the same samples in
// order of value.
// SPDX-License-Identifier: MIT
#include "zt/heap_window.h"

#include <cstddef>
#include <type_traits>

#include "container/heap_move.hpp"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_heap_window_t> && sizeof(zt_heap_window_t) == 56);
static_assert(offsetof(zt_heap_window_t, first) == 0);
static_assert(offsetof(zt_heap_window_t, last) == 4);
static_assert(offsetof(zt_heap_window_t, slot_count) == 8);
static_assert(offsetof(zt_heap_window_t, window_len) == 12);
static_assert(offsetof(zt_heap_window_t, slots) == 16);
static_assert(offsetof(zt_heap_window_t, heap) == 24);
static_assert(offsetof(zt_heap_window_t, compare) == 40);
static_assert(offsetof(zt_heap_window_t, item_size) == 48);
static_assert(offsetof(zt_heap_window_t, is_max) == 52);
static_assert(std::is_standard_layout_v<zt_heap_window_slot_t>);
static_assert(sizeof(zt_heap_window_slot_t) == 56);
static_assert(offsetof(zt_heap_window_slot_t, node) == 0);
static_assert(offsetof(zt_heap_window_slot_t, time) == 32);
static_assert(offsetof(zt_heap_window_slot_t, owner) == 40);
static_assert(offsetof(zt_heap_window_slot_t, data) == 48);

namespace {

using Window = zt_heap_window_t;
using Slot = zt_heap_window_slot_t;

constexpr int32_t kNone = -1;

// Rounded up so that every slot of the ring is aligned and has room for a number, and 64 bits wide:
// with the largest items it does not fit 32.
constexpr uint64_t slot_size(uint32_t item_size) {
    return offsetof(Slot, data) + ((uint64_t{item_size} + 7) & ~uint64_t{7});
}

// Fits: create has checked it.
uint32_t slots_size(const Window *window) {
    return static_cast<uint32_t>(slot_size(window->item_size) * window->slot_count);
}

Slot *slot_of(zt_heap_node_t *node) { return ZT_CONTAINER_OF(node, Slot, node); }

Slot *slot_at(const Window *window, int32_t index) {
    const uint64_t offset = static_cast<uint64_t>(index) * slot_size(window->item_size);
    return reinterpret_cast<Slot *>(static_cast<char *>(window->slots) + offset);
}

int32_t next_index(const Window *window, int32_t index) {
    return static_cast<uint32_t>(index + 1) < window->slot_count ? index + 1 : 0;
}

int32_t greater_number(zt_heap_node_t *first, zt_heap_node_t *second) {
    return slot_of(first)->data > slot_of(second)->data;
}

int32_t lesser_number(zt_heap_node_t *first, zt_heap_node_t *second) {
    return slot_of(first)->data < slot_of(second)->data;
}

int32_t higher_item(zt_heap_node_t *first, zt_heap_node_t *second) {
    Window *window = slot_of(first)->owner;
    return window->compare(window, &slot_of(first)->data, &slot_of(second)->data);
}

// One order a window, whichever update it is fed with.
zt_heap_less_t order_of(const Window *window) {
    if (window->compare != nullptr) return higher_item;
    return window->is_max != 0 ? greater_number : lesser_number;
}

// The slot for the next sample, which becomes the newest. In a full ring it is the slot of the oldest
// sample, whose node then still is in the heap.
Slot *take_slot(Window *window) {
    window->last = next_index(window, window->last);
    if (window->first == kNone) {
        window->first = window->last;
    } else if (window->first == window->last) {
        window->first = next_index(window, window->first);
    }
    return slot_at(window, window->last);
}

void drop_expired(Window *window, uint64_t time, zt_heap_less_t order) {
    // The age is a difference, which does not wrap as the sum of a time and a length would.
    while (window->first != window->last &&
           time - slot_at(window, window->first)->time > window->window_len) {
        zt_heap_remove(&window->heap, &slot_at(window, window->first)->node, order);
        window->first = next_index(window, window->first);
    }
}

}  // namespace

zt_status_t zt_heap_window_create(zt_heap_window_t *window, uint32_t window_len,
                                  uint32_t slot_count, zt_heap_window_compare_t compare,
                                  uint32_t item_size, uint8_t is_max) {
    if (window == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    window->slots = nullptr;
    zt_heap_window_reset(window);
    if (slot_count == 0) return ZT_STATUS_INVALID_ARGUMENT;
    if (compare != nullptr && item_size == 0) return ZT_STATUS_INVALID_ARGUMENT;
    const uint32_t size = compare != nullptr ? item_size : sizeof(int64_t);
    // Also keeps every index within 31 bits.
    if (slot_count > UINT32_MAX / slot_size(size)) return ZT_STATUS_OUT_OF_MEMORY;

    window->window_len = window_len;
    window->slot_count = slot_count;
    window->compare = compare;
    window->item_size = size;
    window->is_max = is_max;
    window->slots = zt_malloc(slots_size(window));
    if (window->slots == nullptr) return ZT_STATUS_OUT_OF_MEMORY;
    zt_heap_window_reset(window);
    return ZT_STATUS_SUCCESS;
}

void zt_heap_window_destroy(zt_heap_window_t *window) {
    zt_free(window->slots);
    window->slots = nullptr;
    zt_heap_window_reset(window);
}

void zt_heap_window_reset(zt_heap_window_t *window) {
    window->first = kNone;
    window->last = kNone;
    window->heap.root = nullptr;
    window->heap.count = 0;
    if (window->slots != nullptr) zt_memset(window->slots, 0, slots_size(window));
}

void zt_heap_window_update(zt_heap_window_t *window, uint64_t time, const void *item) {
    if (window->slots == nullptr) return;
    const zt_heap_less_t order = order_of(window);
    Slot *slot = take_slot(window);
    // Items that rank the same can differ: which of them is on top follows from the order of these.
    zt_heap_remove(&window->heap, &slot->node, order);
    drop_expired(window, time, order);
    slot->time = time;
    slot->owner = window;
    zt_memcpy(&slot->data, item, window->item_size);
    zt_heap_insert(&window->heap, &slot->node, order);
}

void zt_heap_window_update_int64(zt_heap_window_t *window, uint64_t time, int64_t value) {
    if (window->slots == nullptr) return;
    const zt_heap_less_t order = order_of(window);
    Slot *slot = take_slot(window);
    drop_expired(window, time, order);
    slot->time = time;
    slot->owner = window;
    slot->data = value;
    if (slot->node.in_heap != 0) {
        zt::detail::heap_move(&window->heap, &slot->node, order);
    } else {
        zt_heap_insert(&window->heap, &slot->node, order);
    }
}

zt_status_t zt_heap_window_get_max(const zt_heap_window_t *window, void *item) {
    if (window->heap.root == nullptr) return ZT_STATUS_NEED_MORE_DATA;
    zt_memcpy(item, &slot_of(window->heap.root)->data, window->item_size);
    return ZT_STATUS_SUCCESS;
}

int64_t zt_heap_window_get_max_int64(const zt_heap_window_t *window) {
    return window->heap.root != nullptr ? slot_of(window->heap.root)->data : 0;
}
