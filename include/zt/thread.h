/* zt/thread.h - named worker threads with a coarse priority and watchdog supervision.
 *
 * SPDX-License-Identifier: MIT
 *
 * Every thread started here names itself, applies its priority, calls the process-wide start hook,
 * runs the caller's function and leaves its watchdog manager, in this order, and also when the
 * function ends by pthread_exit or by a cancellation. Each has an alternate signal stack, so that
 * the crash handler of zt/backtrace.h can report a stack overflow.
 *
 * Memory   The library allocates the record behind a handle; zt_thread_wait_and_destory is the only
 *          way to release it. The handle variable is the caller's and its address is passed on to
 *          the thread: it stays in place until then.
 * Threads  Handles may be used from any thread; exactly one thread waits for a handle. Set the hook
 *          before the first thread is started. Hook and function run on the new thread, no lock
 *          held.
 * Failure  What POSIX reports, translated by zt_get_status_by_errno. A failed call leaves handle
 *          and record as they were, a failed creation a null handle. Names and priorities that the
 *          system refuses are silently ignored.
 */
#ifndef ZT_THREAD_H
#define ZT_THREAD_H

#include <pthread.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/status.h"
#include "zt/watchdog.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A thread; null when there is none. */
typedef struct zt_thread_record_t *zt_thread_t;

/* The work of a thread. thread is the address that was given to zt_thread_create_and_run; the
 * handle in it is valid from the first instruction. The result is what zt_thread_wait_and_destory
 * gives. */
typedef int32_t (*zt_thread_func_t)(zt_thread_t *thread, void *arg);

/* The start hook: runs in each new thread before its function. name is never null but may be empty. */
typedef void (*zt_thread_hook_t)(zt_thread_t *thread, void *arg, const char *name, void *context);

/* Starts a joinable thread with default attributes and stores its handle. Returns once the thread
 * runs under its name; that takes a switch to the new thread.
 *
 * priority  1 (lowest) to 5 (highest) give the thread the nice value 19, 10, 0, -10 or -20, any
 *           other number 0. Without the privilege it keeps the nice value of its creator.
 * func      may be null: the thread then does nothing and its result is 0.
 * name      the first 15 bytes are used; null or "": the thread keeps the name that it inherits.
 *
 * InvalidArgument (7): thread is null.  OutOfmemory (8): no memory for the record.  TryAgain (4):
 * the system has no resources for another thread. */
ZT_API ZT_MUST_CHECK zt_status_t zt_thread_create_and_run(zt_thread_t *thread, int32_t priority,
                                                          zt_thread_func_t func, void *arg,
                                                          const char *name);

/* Waits for the end of the thread, without limit, then releases its record and sets the handle to
 * null. *result (result may be null) gets the low 32 bits of the exit value: what the function
 * returned, what it gave to pthread_exit, or -1 after a cancellation.
 *
 * InvalidArgument (7): thread is null.  NotInitialized (35): the handle is null.  UnknownError (6):
 * a thread cannot wait for itself.  Other errors of pthread_join accordingly. */
ZT_API zt_status_t zt_thread_wait_and_destory(zt_thread_t *thread, int32_t *result);

/* Sets the hook and its context for the threads that start from now on; null: no hook. Always 0. */
ZT_API zt_status_t zt_thread_set_global_hook(zt_thread_hook_t hook, void *context);

/* Puts the thread under the supervision of mgr, under its own name and with the caller's kernel
 * thread id as the entry's user value; usually called by the thread itself. The thread is
 * unregistered when it ends, so mgr must live until then; a thread that has ended is not registered
 * any more. Calling it again moves the thread to another manager or sets another time-out. timeout_ms is
 * in milliseconds; with 0 or less the thread is overdue at once.
 *
 * InvalidArgument (7): thread or mgr is null.  NotInitialized (35): the handle is null. */
ZT_API zt_status_t zt_thread_enable_watchdog(zt_thread_t *thread, zt_watchdog_mgr_t *mgr,
                                             int32_t timeout_ms);

/* zt_watchdog_keep_alive for the thread's entry: one clock read and one store. A null address or
 * handle is ignored. */
ZT_API void zt_thread_keep_alive(zt_thread_t *thread);

/* The caller's POSIX handle. */
ZT_API pthread_t zt_get_curr_pthread_id(void);

/* The POSIX handle of a thread; 0 for a null handle. */
ZT_API pthread_t zt_get_pthread_id(zt_thread_t thread);

#ifdef __cplusplus
}
#endif

#endif /* ZT_THREAD_H */
