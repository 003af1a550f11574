// Threads that are blocked in a queue: who they are, how they wait and how a cancel reaches them.
// SPDX-License-Identifier: MIT
//
// A queue's record has no room for its waiters, so every blocked call keeps an entry on its own
// stack, linked into one list of the process while it waits. The call without a wait never looks at
// that list. What the list is for:
//
// - A cancel must release whoever was blocked when it came, also when a commit clears `canceled`
//   before they run. It marks their entries; a marked waiter leaves whatever the queue says by
//   then.
// - An event is drained by the one waiter that wakes, while the others sleep on in the kernel. So
//   whoever waited and leaves passes the wake-up on when there is more for others: items or nodes
//   that are left, or marked waiters that are still asleep.
// - A wake-up meant for a marked waiter must not be drained by one that arrived after the cancel, for
//   that one would go back to sleep with it. Newcomers stay off the event until the marked are gone.
//
// Locks: the queue's lock first, then the list's. Marks are set and read under the queue's lock.
#ifndef ZT_SRC_CONTAINER_QUEUE_WAITERS_HPP
#define ZT_SRC_CONTAINER_QUEUE_WAITERS_HPP

#include <cstdint>

#include "zt/queue.h"

namespace zt::detail {

enum class QueueSide : uint8_t { kConsumer, kProducer };

// How a wait ended. pass_on: once the lock is released, the event that was waited on is to be set
// again, because somebody else needs the wake-up.
struct QueueWait {
    zt_status_t status;  // Success: there is a node; Timeout; Canceled
    bool pass_on;
};

// Waits until the side's list has a node: the item list for consumers, the free list for producers.
// Called with the lock held and the list empty; returns with the lock held, and the node, if any,
// still on its list.
QueueWait queue_wait(zt_queue_t *queue, QueueSide side, int32_t timeout_ms);

// Marks everyone who is blocked in the queue. Under its lock; then both events must be set.
void queue_release_waiters(const zt_queue_t *queue);

// True when somebody on that side is blocked in the queue. Under its lock.
bool queue_has_waiters(const zt_queue_t *queue, QueueSide side);

}  // namespace zt::detail

#endif  // ZT_SRC_CONTAINER_QUEUE_WAITERS_HPP
