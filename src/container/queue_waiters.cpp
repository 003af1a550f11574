// The list of blocked threads, and the wait itself.
// SPDX-License-Identifier: MIT
#include "container/queue_waiters.hpp"

#include <pthread.h>

#include <atomic>

#include "base/list_ops.hpp"
#include "os/mutex_guard.hpp"
#include "zt/time.h"

namespace zt::detail {
namespace {

// One blocked call, on its thread's stack.
struct Waiter {
    zt_list_head_t link;
    zt_queue_t *queue;
    QueueSide side;
    bool released;  // a cancel came while it was blocked
};

constinit zt_mutex_t g_lock = {true, PTHREAD_MUTEX_INITIALIZER, false};
constinit zt_list_head_t g_waiters = ZT_LIST_HEAD_INIT(g_waiters);
// Released waiters still on the list, of all queues: spares the walk while nobody was cancelled.
// Written under the list's lock. Relaxed, since releases of a queue happen under that queue's lock.
constinit std::atomic<uint32_t> g_released_count{0};

// The first waiter on the list that the predicate is true for, or null. Under the list's lock.
template <typename Predicate>
Waiter *find_waiter(Predicate wanted) {
    for (zt_list_head_t *p = g_waiters.next; p != &g_waiters; p = p->next) {
        auto *waiter = ZT_CONTAINER_OF(p, Waiter, link);
        if (wanted(*waiter)) return waiter;
    }
    return nullptr;
}

void enlist(Waiter *self) {
    const MutexGuard guard(&g_lock);
    list_insert_before(&g_waiters, &self->link);
}

void unlist(Waiter *self) {
    const MutexGuard guard(&g_lock);
    list_remove(&self->link);
    if (self->released) g_released_count.fetch_sub(1, std::memory_order_relaxed);
}

// True when a released waiter of this queue and side is still on its way out.
bool has_released(const zt_queue_t *queue, QueueSide side) {
    if (g_released_count.load(std::memory_order_relaxed) == 0) return false;
    const MutexGuard guard(&g_lock);
    return find_waiter([=](const Waiter &waiter) {
               return waiter.released && waiter.queue == queue && waiter.side == side;
           }) != nullptr;
}

zt_event_t *event_of(zt_queue_t *queue, QueueSide side) {
    return side == QueueSide::kConsumer ? &queue->avail_event : &queue->space_event;
}

// Nodes that the side can take.
uint32_t ready_count(const zt_queue_t *queue, QueueSide side) {
    return side == QueueSide::kConsumer ? queue->count : queue->capacity - queue->count;
}

// Runs when the thread is cancelled in its sleep. It may have drained the event already.
void abandon(void *argument) {
    auto *self = static_cast<Waiter *>(argument);
    unlist(self);
    zt_event_set(event_of(self->queue, self->side));
}

// One sleep, without the queue's lock. give_way: released waiters need the event for themselves, so
// this call sees to it that they have it and takes a short nap elsewhere.
void sleep_once(Waiter *self, bool give_way, int32_t left_ms) {
    constexpr int32_t kNapMs = 1;
    zt_event_t *event = event_of(self->queue, self->side);
    pthread_cleanup_push(abandon, self);
    if (give_way) {
        zt_event_set(event);
        zt_event_wait_for_multiple(nullptr, 0, kNapMs);
    } else {
        zt_event_wait(event, left_ms);
    }
    pthread_cleanup_pop(0);
}

int32_t time_left(uint64_t deadline) {
    const uint64_t now = zt_time_get_ms();
    return now < deadline ? static_cast<int32_t>(deadline - now) : 0;
}

}  // namespace

QueueWait queue_wait(zt_queue_t *queue, QueueSide side, int32_t timeout_ms) {
    if (timeout_ms == 0) return {ZT_STATUS_TIMEOUT, false};
    if (queue->canceled) return {ZT_STATUS_CANCELED, false};

    const bool limited = timeout_ms > 0;
    const uint64_t deadline = limited ? zt_time_get_ms() + static_cast<uint64_t>(timeout_ms) : 0;
    int32_t left_ms = timeout_ms;
    Waiter self = {{}, queue, side, false};
    enlist(&self);
    // Whatever ended a sleep, the lists decide; they get a last look when the time is up.
    do {
        const bool give_way = has_released(queue, side);
        zt_mutex_unlock(&queue->lock);
        sleep_once(&self, give_way, left_ms);
        zt_mutex_lock(&queue->lock);
        if (limited) left_ms = time_left(deadline);
    } while (ready_count(queue, side) == 0 && !self.released && left_ms != 0);
    unlist(&self);

    const bool others_released = has_released(queue, side);
    if (const uint32_t ready = ready_count(queue, side); ready > 0) {
        return {ZT_STATUS_SUCCESS, ready > 1 || others_released};
    }
    return {self.released ? ZT_STATUS_CANCELED : ZT_STATUS_TIMEOUT, others_released};
}

void queue_release_waiters(const zt_queue_t *queue) {
    const MutexGuard guard(&g_lock);
    find_waiter([=](Waiter &waiter) {
        if (waiter.queue != queue || waiter.released) return false;
        waiter.released = true;
        g_released_count.fetch_add(1, std::memory_order_relaxed);
        return false;
    });
}

bool queue_has_waiters(const zt_queue_t *queue, QueueSide side) {
    const MutexGuard guard(&g_lock);
    return find_waiter([=](const Waiter &waiter) {
               return waiter.queue == queue && waiter.side == side;
           }) != nullptr;
}

}  // namespace zt::detail
