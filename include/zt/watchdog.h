/* zt/watchdog.h - a software watchdog between many supervised clients and one hardware watchdog.
 *
 * SPDX-License-Identifier: MIT
 *
 * Each client embeds a zt_watchdog_t, registers it with a time-out and keeps it alive. A
 * supervising thread of the application calls zt_watchdog_mgr_check periodically: as long as every
 * client is alive that feeds the hardware; as soon as one is not, the hardware starves and the
 * expiry callback is told who is to blame. Threads of zt/thread.h bring an entry of their own.
 *
 * Memory   The caller owns the manager, the entries and the hardware interface; nothing is
 *          allocated. An entry must be unregistered before its memory or its manager goes away.
 * Threads  Register, unregister and check may be called from any thread: a recursive lock of the
 *          manager guards the list. A keep-alive takes no lock. The expiry callback runs on the
 *          checking thread, for an entry with the lock held: it may register entries and unregister
 *          the entry that it was handed, but no other. The closing call with null, and all
 *          operations of the hardware, run without the lock. Create and destroy must not race with
 *          anything.
 * Failure  Only the creation can fail. Expiry is no failure: it is reported through the callback.
 *          Pointers are not checked except where a null one has a stated result.
 */
#ifndef ZT_WATCHDOG_H
#define ZT_WATCHDOG_H

#include <pthread.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/list.h"
#include "zt/mutex.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct zt_watchdog_t zt_watchdog_t;
typedef struct zt_watchdog_mgr_t zt_watchdog_mgr_t;
typedef struct zt_hw_watchdog_t zt_hw_watchdog_t;

/* One supervised client. Before its first registration the owner zeroes it, makes the link point to
 * itself (ZT_LIST_HEAD_INIT) and sets the name. */
struct zt_watchdog_t {
    __extension__ union {
        /* Its place among the manager's clients; points to itself while not registered. */
        zt_list_head_t link;
        __extension__ struct {
            zt_list_head_t *next; /* link.next */
            zt_list_head_t *prev; /* link.prev */
        };
    };
    const char *name;       /* for the expiry callback; set by the owner, never used here */
    uint64_t last_alive_ms; /* zt_time_get_ms of the last keep-alive or of the registration; written
                               by the client's thread without a lock, so read it atomically */
    int32_t timeout_ms;     /* set by the registration */
    uintptr_t user; /* set by the registration; a thread's entry holds its kernel thread id */
};

/* The hardware watchdog, supplied by the application. What follows the three operations in the
 * application's record is its own. No operation may be null. */
struct zt_hw_watchdog_t {
    /* Starts the hardware (flag not 0) or stops it (0); the result goes back to the caller. */
    zt_status_t (*enable)(zt_hw_watchdog_t *hw, int flag);
    /* Feeds the hardware. The result is ignored. */
    zt_status_t (*keep_alive)(zt_hw_watchdog_t *hw);
    /* The manager is being destroyed. The result is ignored. */
    zt_status_t (*close)(zt_hw_watchdog_t *hw);
};

/* Called for each overdue entry, then once with a null entry. */
typedef void (*zt_watchdog_expired_cb_t)(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry);

/* The manager; ZT_WATCHDOG_MGR_INIT prepares it for its creation. */
struct zt_watchdog_mgr_t {
    zt_mutex_t lock;        /* made by zt_watchdog_mgr_create */
    zt_list_head_t clients; /* registered entries, oldest registration first; the caller makes it
                               empty before the creation */
    zt_hw_watchdog_t *hw;   /* set by zt_watchdog_mgr_create; may be null */
    zt_watchdog_expired_cb_t expired_cb; /* set by the caller; may be null */
};

/* Initialiser of a manager that is yet to be created, with its expiry callback (may be null):
 *
 *     static zt_watchdog_mgr_t g_mgr = ZT_WATCHDOG_MGR_INIT(g_mgr, on_expired);
 */
/* clang-format off */
#define ZT_WATCHDOG_MGR_INIT(name, callback) \
    { { false, PTHREAD_MUTEX_INITIALIZER, false }, ZT_LIST_HEAD_INIT((name).clients), NULL, (callback) }
/* clang-format on */

/* Makes the lock and stores the hardware interface (null: none). Clients and callback are left as
 * the caller set them. A status of zt_mutex_init: no lock could be made; hw is left as it was. */
ZT_API ZT_MUST_CHECK zt_status_t zt_watchdog_mgr_create(zt_watchdog_mgr_t *mgr,
                                                        zt_hw_watchdog_t *hw);

/* Closes the hardware, destroys the lock and leaves the record zeroed with an empty client list: it
 * can be created again once expired_cb has been set again. Entries that are still registered are
 * not visited. A null manager is ignored. */
ZT_API void zt_watchdog_mgr_destroy(zt_watchdog_mgr_t *mgr);

/* Hands the flag, sign-extended, to the hardware's enable operation and returns its result. 0
 * without hardware, also for a null manager. */
ZT_API zt_status_t zt_watchdog_mgr_enable_hw(zt_watchdog_mgr_t *mgr, int8_t flag);

/* Feeds the hardware if no entry is overdue (an empty list is never overdue). Otherwise the
 * hardware is not fed, and expired_cb is called for each entry that is overdue at that moment, in
 * order of registration, and at last with null. Entries are looked at twice with the lock released
 * between: one that comes back to life in time is not reported, and then the null call is the only
 * one.
 *
 * Reporting does not re-arm: an entry is reported at every check until it is kept alive or
 * unregistered. Always 0. O(entries), one clock read each. */
ZT_API zt_status_t zt_watchdog_mgr_check(zt_watchdog_mgr_t *mgr);

/* Puts an entry that is not registered under supervision, alive as of now. It is overdue once
 * timeout_ms have passed without a keep-alive; with 0 or a negative time-out it always is. user is
 * stored in the entry. Always 0. O(1). */
ZT_API zt_status_t zt_watchdog_register(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry,
                                        uintptr_t user, int32_t timeout_ms);

/* Ends the supervision of an entry. One that is not registered is left alone. Always 0. O(1). */
ZT_API zt_status_t zt_watchdog_unregister(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry);

/* Says that the client is alive now. One clock read, one store and a full memory barrier: cheap
 * enough for every pass of a worker's loop. */
ZT_API void zt_watchdog_keep_alive(zt_watchdog_t *entry);

#ifdef __cplusplus
}
#endif

#endif /* ZT_WATCHDOG_H */
