/* zt/timer_mgr.h - any number of one-shot timers on one alarm of the application's.
 *
 * SPDX-License-Identifier: MIT
 *
 * The manager reads no clock and arms no alarm itself: it asks the application through two operations.
 * When the alarm goes off the application calls zt_timer_mgr_process_alarm, which fires what is due and
 * arms the alarm for the earliest timer left. The unit of time is whatever get_time counts in.
 *
 * Memory   Manager and timers belong to the caller; a scheduled timer must stay where it is. Nothing is
 *          allocated.
 * Threads  No lock. All calls on one manager, those from callbacks included, come from one thread at a
 *          time, usually the one that handles the alarm.
 * Failure  What get_time or set_alarm reports, passed on unchanged. Arguments must not be null.
 */
#ifndef ZT_TIMER_MGR_H
#define ZT_TIMER_MGR_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/heap.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One timer; zero-filled before its first use. */
typedef struct zt_timer_t {
    zt_heap_node_t node; /* in_heap tells whether the timer is scheduled; written by the manager */
    uint64_t due;        /* when it fires; written by the manager */
    /* Called with the time at which the alarm was processed when the timer fires; may be null. The timer
     * is idle by then: the callback may schedule it again, later than now, or free it, and may schedule
     * and cancel others. */
    void (*cb)(uint64_t now, struct zt_timer_t *timer);
} zt_timer_t;

/* The manager. The caller zeroes heap and sets both operations, which get the manager's address and so
 * reach the record that embeds it. */
typedef struct zt_timer_mgr_t {
    zt_heap_t heap; /* scheduled timers, the earliest at the root */
    /* Stores the current time and returns 0, or returns another status. */
    zt_status_t (*get_time)(struct zt_timer_mgr_t *manager, uint64_t *now);
    /* Arms the alarm for the time given, in place of any time before; flag is always 1. */
    zt_status_t (*set_alarm)(struct zt_timer_mgr_t *manager, uint64_t due, int32_t flag);
} zt_timer_mgr_t;

/* Lets the timer fire delay units from now; a timer that is scheduled moves. Arms the alarm when no
 * other timer is earlier. O(log timers).
 * Fails as get_time does, and then the timer is idle, or as set_alarm does, and then it is scheduled. */
ZT_API zt_status_t zt_timer_mgr_schedule_timer(zt_timer_mgr_t *manager, zt_timer_t *timer,
                                               uint32_t delay);

/* The same for an absolute time; the clock is not read. */
ZT_API zt_status_t zt_timer_mgr_schedule_timer_abs(zt_timer_mgr_t *manager, zt_timer_t *timer,
                                                   uint64_t due);

/* Makes the timer idle; one that is idle is left alone. The alarm stays as it is: it may go off with
 * nothing due. O(log timers). */
ZT_API void zt_timer_mgr_cancel_timer(zt_timer_mgr_t *manager, zt_timer_t *timer);

/* Fires every timer that is due, the earliest first, and arms the alarm for the next. The clock is read
 * once: every callback gets the same time. Timers with the same time fire in any order.
 * Fails as get_time does, with nothing fired, or as set_alarm does. */
ZT_API zt_status_t zt_timer_mgr_process_alarm(zt_timer_mgr_t *manager);

#ifdef __cplusplus
}
#endif

#endif /* ZT_TIMER_MGR_H */
