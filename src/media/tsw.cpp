// A ring of timestamp samples with two windows over it, each ordered by a heap.
// SPDX-License-Identifier: MIT
#include "zt/tsw.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "zt/list.h"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_tsw_param_t> && sizeof(zt_tsw_param_t) == 16);
static_assert(offsetof(zt_tsw_param_t, size) == 0);
static_assert(offsetof(zt_tsw_param_t, delta_window) == 4);
static_assert(offsetof(zt_tsw_param_t, jitter_window) == 8);
static_assert(offsetof(zt_tsw_param_t, smooth) == 12);
static_assert(std::is_standard_layout_v<zt_tsw_entry_t> && sizeof(zt_tsw_entry_t) == 88);
static_assert(offsetof(zt_tsw_entry_t, now) == 0);
static_assert(offsetof(zt_tsw_entry_t, delta) == 8);
static_assert(offsetof(zt_tsw_entry_t, jitter) == 16);
static_assert(offsetof(zt_tsw_entry_t, delta_node) == 24);
static_assert(offsetof(zt_tsw_entry_t, jitter_node) == 56);
static_assert(std::is_standard_layout_v<zt_tsw_t> && sizeof(zt_tsw_t) == 88);
static_assert(offsetof(zt_tsw_t, cur) == 0);
static_assert(offsetof(zt_tsw_t, delta_head) == 4);
static_assert(offsetof(zt_tsw_t, jitter_head) == 8);
static_assert(offsetof(zt_tsw_t, param) == 12);
static_assert(offsetof(zt_tsw_t, entries) == 32);
static_assert(offsetof(zt_tsw_t, delta_heap) == 40);
static_assert(offsetof(zt_tsw_t, jitter_heap) == 56);
static_assert(offsetof(zt_tsw_t, smoothed) == 72);
static_assert(offsetof(zt_tsw_t, evicted) == 80);

namespace {

using Entry = zt_tsw_entry_t;
using Node = zt_heap_node_t;

constexpr int32_t kNone = -1;
static_assert(UINT32_MAX / sizeof(Entry) <= INT32_MAX, "slots of any array fit their type");

const Entry *by_delta_node(Node *node) { return ZT_CONTAINER_OF(node, Entry, delta_node); }
const Entry *by_jitter_node(Node *node) { return ZT_CONTAINER_OF(node, Entry, jitter_node); }

int32_t smaller_delta(Node *first, Node *second) {
    return by_delta_node(first)->delta < by_delta_node(second)->delta;
}

int32_t larger_jitter(Node *first, Node *second) {
    return by_jitter_node(first)->jitter > by_jitter_node(second)->jitter;
}

// What is done alike for both windows: a run of slots from *head to cur.
struct Window {
    int32_t *head;
    zt_heap_t *heap;
    Node Entry::*node;
    zt_heap_less_t less;
    uint32_t length;
};

Window delta_window(zt_tsw_t *tsw) {
    return {&tsw->delta_head, &tsw->delta_heap, &Entry::delta_node, smaller_delta,
            tsw->param.delta_window};
}

Window jitter_window(zt_tsw_t *tsw) {
    return {&tsw->jitter_head, &tsw->jitter_heap, &Entry::jitter_node, larger_jitter,
            tsw->param.jitter_window};
}

int32_t next_slot(const zt_tsw_t *tsw, int32_t slot) {
    const auto next = static_cast<uint32_t>(slot + 1);
    return next == tsw->param.size ? 0 : static_cast<int32_t>(next);
}

void drop_oldest(zt_tsw_t *tsw, const Window &window) {
    zt_heap_remove(window.heap, &(tsw->entries[*window.head].*window.node), window.less);
    *window.head = next_slot(tsw, *window.head);
}

// Lets the window end at cur, where a new entry is about to be written: what lies there and what
// has become too old leaves. True when anything has left. The ages are unsigned: a clock that has
// gone back makes what came before it very old.
bool extend_to_cur(zt_tsw_t *tsw, const Window &window, uint64_t now) {
    bool dropped = false;
    if (*window.head == kNone) {
        *window.head = tsw->cur;
    } else if (*window.head == tsw->cur) {
        drop_oldest(tsw, window);
        dropped = true;
    }
    while (*window.head != tsw->cur && now - tsw->entries[*window.head].now > window.length) {
        drop_oldest(tsw, window);
        dropped = true;
    }
    return dropped;
}

// 7 * smoothed may need more than 64 bits, so it is divided first; quotient and remainder have the
// same sign, which makes the sum of the truncated parts the truncated whole.
int64_t smooth(int64_t delta, int64_t smoothed) {
    return delta / 8 + (smoothed / 8 * 7 + smoothed % 8 * 7 / 8);
}

// Empties the window at a discontinuity. The distance is unsigned: it may take all 64 bits.
int64_t judge_jitter(zt_tsw_t *tsw, int64_t delta, uint32_t limit) {
    const int64_t smallest = by_delta_node(tsw->delta_heap.root)->delta;
    const bool below = delta < smallest;
    const uint64_t rise = static_cast<uint64_t>(delta) - static_cast<uint64_t>(smallest);
    const uint64_t distance = below ? 0 - rise : rise;
    if (!below && distance >= limit) zt_tsw_reset(tsw);
    return static_cast<int64_t>(std::min<uint64_t>(distance, limit));
}

}  // namespace

zt_status_t zt_tsw_create(zt_tsw_t *tsw, const zt_tsw_param_t *param) {
    if (tsw == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    tsw->entries = nullptr;
    if (param == nullptr || param->size == 0) return ZT_STATUS_INVALID_ARGUMENT;
    if (param->jitter_window > param->delta_window) return ZT_STATUS_INVALID_ARGUMENT;

    tsw->param = *param;
    tsw->smoothed = 0;
    const uint64_t bytes = uint64_t{param->size} * sizeof(Entry);
    if (bytes <= UINT32_MAX) {
        tsw->entries = static_cast<Entry *>(zt_malloc(static_cast<uint32_t>(bytes)));
    }
    zt_tsw_reset(tsw);
    return tsw->entries != nullptr ? ZT_STATUS_SUCCESS : ZT_STATUS_OUT_OF_MEMORY;
}

void zt_tsw_reset(zt_tsw_t *tsw) {
    tsw->cur = kNone;
    tsw->delta_head = kNone;
    tsw->jitter_head = kNone;
    tsw->evicted = false;
    tsw->delta_heap = {};
    tsw->jitter_heap = {};
    if (tsw->entries == nullptr) return;
    zt_memset(tsw->entries, 0, static_cast<uint32_t>(tsw->param.size * sizeof(Entry)));
}

void zt_tsw_destroy(zt_tsw_t *tsw) {
    zt_free(tsw->entries);
    tsw->entries = nullptr;
}

void zt_tsw_update(zt_tsw_t *tsw, uint64_t ref, uint64_t now, uint32_t limit) {
    if (tsw->entries == nullptr) return;

    auto delta = static_cast<int64_t>(now - ref);
    const bool first = tsw->delta_head == kNone;
    if (tsw->param.smooth) {
        if (!first) delta = smooth(delta, tsw->smoothed);
        tsw->smoothed = delta;
    }
    // Judged by all that the window has held until now: what is too old leaves afterwards.
    const int64_t jitter = first ? 0 : judge_jitter(tsw, delta, limit);

    tsw->cur = next_slot(tsw, tsw->cur);
    if (extend_to_cur(tsw, delta_window(tsw), now)) tsw->evicted = true;
    extend_to_cur(tsw, jitter_window(tsw), now);

    Entry *entry = &tsw->entries[tsw->cur];
    entry->now = now;
    entry->delta = delta;
    entry->jitter = jitter;
    zt_heap_insert(&tsw->delta_heap, &entry->delta_node, smaller_delta);
    zt_heap_insert(&tsw->jitter_heap, &entry->jitter_node, larger_jitter);
}

int64_t zt_tsw_get_delta(const zt_tsw_t *tsw) { return zt_tsw_get_delta_ex(tsw, nullptr); }

int64_t zt_tsw_get_delta_ex(const zt_tsw_t *tsw, uint64_t *now) {
    if (tsw->entries == nullptr || tsw->delta_heap.root == nullptr) return 0;
    const Entry *entry = by_delta_node(tsw->delta_heap.root);
    if (now != nullptr) *now = entry->now;
    return entry->delta;
}

int64_t zt_tsw_get_jitter(const zt_tsw_t *tsw) {
    if (tsw->entries == nullptr || tsw->jitter_heap.root == nullptr) return 0;
    return by_jitter_node(tsw->jitter_heap.root)->jitter;
}
