/* zt/event.h - counting wake-up events between threads, usable in the application's own poll loop.
 *
 * SPDX-License-Identifier: MIT
 *
 * One side sets an event, the other waits for it, tests it or consumes it. Every set adds 1 to a
 * 64-bit kernel counter; consuming takes all pending sets at once. An event is set while its
 * counter is not 0. Underneath is a Linux eventfd, so `fd` may be given to poll (POLLIN: the event
 * is set).
 *
 * Memory   The caller owns the record, usually inside another object. An open event holds one file
 *          descriptor, non-blocking and closed on exec, from zt_event_init to zt_event_deinit.
 * Threads  No lock. Every operation may run on any thread at any time between init and deinit.
 *          Several threads may wait on one event: one of them consumes all pending sets, the others
 *          go on waiting or return -1. zt_event_set is no cancellation point, so a thread cannot be
 *          cancelled between changing something and announcing it; the others are.
 * Failure  The kernel's convention: -1 with errno set. Only init returns a status. Null is allowed
 *          where said. Time-outs are milliseconds as in poll: negative waits without limit, 0 only
 *          looks.
 */
#ifndef ZT_EVENT_H
#define ZT_EVENT_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The event; written by init and deinit only. */
typedef struct zt_event_t {
    /* The descriptor, never 0, while open. 0: not open, as in a zeroed record. -1: init failed. */
    int32_t fd;
} zt_event_t;

/* Opens the event, not set, whatever the record held before. On failure fd is -1 and the status is
 * the kernel's reason: TooMany (17) or Overflow (19) for lacking descriptors, OutOfmemory (8). */
ZT_API zt_status_t zt_event_init(zt_event_t *event);

/* Closes the event; the record may be opened again. Null, and a record that is not open, are left
 * alone. Must not race with any other operation on the event. */
ZT_API void zt_event_deinit(zt_event_t *event);

/* Adds 1 to the counter and wakes who waits. 0, or -1 (EAGAIN: the counter is at its limit of
 * 2^64 - 2; the event is set then). One system call, never blocks. */
ZT_API int zt_event_set(zt_event_t *event);

/* Consumes all pending sets. 0, or -1 (EAGAIN) when the event was not set. Never blocks. */
ZT_API int zt_event_clear(zt_event_t *event);

/* True while the event is set. Consumes nothing. A descriptor in error is not set. */
ZT_API bool zt_event_is_set(const zt_event_t *event);

/* Consumes all pending sets; true when there were any. Never blocks. */
ZT_API bool zt_event_try_wait(zt_event_t *event);

/* Waits until the event is set and consumes it. Returns the number of sets consumed, greater than
 * 0: the counter cut to 32 bits, or INT32_MAX when that is not a positive number. 0: not set within
 * timeout_ms. -1: another thread consumed the event first, the wait failed, or a signal arrived
 * when timeout_ms was already over. A signal before that does not end the wait or prolong it. */
ZT_API int zt_event_wait(zt_event_t *event, int32_t timeout_ms);

/* Waits until at least one of count events is set and returns how many are. Consumes nothing and
 * does not say which: test them. 0: none within timeout_ms. -1: poll failed, also with EINTR on a
 * signal. A count of 0 or less sleeps for timeout_ms (events may be null then) and returns 0.
 * Beyond 16 events it allocates; 8, OutOfmemory, when that fails, which looks like eight set
 * events. O(count). */
ZT_API int zt_event_wait_for_multiple(zt_event_t *const *events, int32_t count, int32_t timeout_ms);

#ifdef __cplusplus
}
#endif

#endif /* ZT_EVENT_H */
