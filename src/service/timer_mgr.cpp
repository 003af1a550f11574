// Timers in a heap ordered by due time.
// SPDX-License-Identifier: MIT
#include "zt/timer_mgr.h"

#include <cstddef>
#include <type_traits>

#include "container/heap_move.hpp"

static_assert(std::is_standard_layout_v<zt_timer_t> && sizeof(zt_timer_t) == 48);
static_assert(offsetof(zt_timer_t, node) == 0 && offsetof(zt_timer_t, due) == 32);
static_assert(offsetof(zt_timer_t, cb) == 40);
static_assert(std::is_standard_layout_v<zt_timer_mgr_t> && sizeof(zt_timer_mgr_t) == 32);
static_assert(offsetof(zt_timer_mgr_t, get_time) == 16 &&
              offsetof(zt_timer_mgr_t, set_alarm) == 24);

namespace {

zt_timer_t *timer_of(zt_heap_node_t *node) { return ZT_CONTAINER_OF(node, zt_timer_t, node); }

int32_t is_earlier(zt_heap_node_t *first, zt_heap_node_t *second) {
    return timer_of(first)->due < timer_of(second)->due ? 1 : 0;
}

zt_status_t arm(zt_timer_mgr_t *manager, uint64_t due) {
    return manager->set_alarm(manager, due, 1);
}

}  // namespace

zt_status_t zt_timer_mgr_schedule_timer(zt_timer_mgr_t *manager, zt_timer_t *timer,
                                        uint32_t delay) {
    uint64_t now = 0;
    const zt_status_t status = manager->get_time(manager, &now);
    if (status != ZT_STATUS_SUCCESS) {
        zt_timer_mgr_cancel_timer(manager, timer);
        return status;
    }
    return zt_timer_mgr_schedule_timer_abs(manager, timer, now + delay);
}

zt_status_t zt_timer_mgr_schedule_timer_abs(zt_timer_mgr_t *manager, zt_timer_t *timer,
                                            uint64_t due) {
    timer->due = due;
    if (timer->node.in_heap != 0) {
        zt::detail::heap_move(&manager->heap, &timer->node, is_earlier);
    } else {
        zt_heap_insert(&manager->heap, &timer->node, is_earlier);
    }
    return manager->heap.root == &timer->node ? arm(manager, due) : ZT_STATUS_SUCCESS;
}

void zt_timer_mgr_cancel_timer(zt_timer_mgr_t *manager, zt_timer_t *timer) {
    zt_heap_remove(&manager->heap, &timer->node, is_earlier);
}

zt_status_t zt_timer_mgr_process_alarm(zt_timer_mgr_t *manager) {
    uint64_t now = 0;
    const zt_status_t status = manager->get_time(manager, &now);
    if (status != ZT_STATUS_SUCCESS) return status;

    // The root is taken anew each time: a callback may have changed everything, and freed its timer.
    while (manager->heap.root != nullptr && timer_of(manager->heap.root)->due <= now) {
        zt_timer_t *timer = timer_of(manager->heap.root);
        zt_heap_dequeue(&manager->heap, is_earlier);
        if (timer->cb != nullptr) timer->cb(now, timer);
    }
    if (manager->heap.root == nullptr) return ZT_STATUS_SUCCESS;
    return arm(manager, timer_of(manager->heap.root)->due);
}
