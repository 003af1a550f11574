/* zt/ntf_mgr.h - publish and subscribe for numbered notifications, as bits of a flag word.
 *
 * SPDX-License-Identifier: MIT
 *
 * A subscriber, known by a 64-bit id of the application's choosing, lists notification ids and gives each
 * a bit of its 64-bit flag word. Publishing an id sets that bit for everyone who listed it. A subscriber
 * polls all its bits with one call, is called back when they change, or both; its enable mask says which
 * raw bits become effective flags.
 *
 * Memory   The application owns the handle and may put it first in a record of its own: hooks and
 *          callbacks get its address. Id lists are copied. Everything else is the manager's, until
 *          zt_ntf_mgr_deinit.
 * Threads  The manager locks through the six hooks only; without them it belongs to one thread. With a
 *          reader/writer lock behind the first four and a mutex behind the last two, everything but init
 *          and deinit may run on any thread. A subscriber's callback runs on the publishing thread with
 *          read_lock and flags_lock held. It must never subscribe, unsubscribe or deinit; if the hooks'
 *          locks can be taken again by their holder it may call the rest.
 * Failure  Nothing has changed. InvalidArgument (7): the manager is not initialised, or a null argument;
 *          found before any hook is called.
 */
#ifndef ZT_NTF_MGR_H
#define ZT_NTF_MGR_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The handle. Zero it before zt_ntf_mgr_init. */
typedef struct zt_ntf_mgr_t {
    struct zt_ntf_mgr_priv_t *priv; /* null while the manager is not initialised */
} zt_ntf_mgr_t;

/* A locking hook; null ones are skipped. */
typedef void (*zt_ntf_mgr_hook_t)(zt_ntf_mgr_t *manager);

/* The hooks, taken in this order and released in reverse. */
typedef struct zt_ntf_mgr_ops_t {
    zt_ntf_mgr_hook_t read_lock;    /* publishing and reading */
    zt_ntf_mgr_hook_t read_unlock;  /* ends read_lock */
    zt_ntf_mgr_hook_t write_lock;   /* subscribing, unsubscribing; never with flags_lock */
    zt_ntf_mgr_hook_t write_unlock; /* ends write_lock */
    zt_ntf_mgr_hook_t flags_lock;   /* within read_lock, around masks and flag words */
    zt_ntf_mgr_hook_t flags_unlock; /* ends flags_lock */
} zt_ntf_mgr_ops_t;

/* Called when a publish has changed a subscriber's effective flags. True: consumed, the notification's
 * bit is cleared at once. */
typedef bool (*zt_ntf_cb_t)(zt_ntf_mgr_t *manager, uint64_t subscriber_id, uint64_t ntf_id);

/* Initialises the manager. The hooks are copied; null means none. An initialised handle must not be
 * initialised again. OutOfmemory (8): no memory. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ntf_mgr_init(const zt_ntf_mgr_ops_t *ops,
                                                 zt_ntf_mgr_t *manager);

/* Ends every subscription and releases everything. A handle that is not initialised is left alone. */
ZT_API void zt_ntf_mgr_deinit(zt_ntf_mgr_t *manager);

/* Subscribes to count notifications: ids[i] gets bit first_bit + i. An id listed twice gets two bits.
 * The mask starts with the low first_bit + count bits set. cb may be null.
 * InvalidArgument (7): also for a negative number, or first_bit + count over 64.  FileExists (22): this
 * subscriber exists; its subscription stays whole.  OutOfmemory (8): no memory. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ntf_mgr_subscribe(zt_ntf_mgr_t *manager, uint64_t subscriber_id,
                                                      int32_t first_bit, const uint64_t *ids,
                                                      int32_t count, zt_ntf_cb_t cb);

/* Ends a subscription. NotExist (16): there is no such subscriber. */
ZT_API zt_status_t zt_ntf_mgr_unsubscribe(zt_ntf_mgr_t *manager, uint64_t subscriber_id);

/* Reads and sets the enable mask. Setting it leaves the effective flags as they are: raw bits that are
 * enabled now join them at the next publish to this subscriber. NotExist (16): no such subscriber. */
ZT_API zt_status_t zt_ntf_mgr_get_en_mask(zt_ntf_mgr_t *manager, uint64_t subscriber_id,
                                          uint64_t *mask);
ZT_API zt_status_t zt_ntf_mgr_set_en_mask(zt_ntf_mgr_t *manager, uint64_t subscriber_id,
                                          uint64_t mask);

/* Reads and clears the effective flags; raw bits that are not enabled stay pending.
 * NotExist (16): no such subscriber, *flags is untouched. */
ZT_API zt_status_t zt_ntf_mgr_get_flags(zt_ntf_mgr_t *manager, uint64_t subscriber_id,
                                        uint64_t *flags);

/* Reads all pending bits, enabled or not, and clears everything.
 * NotExist (16): no such subscriber, *flags is untouched. */
ZT_API zt_status_t zt_ntf_mgr_get_raw_flags(zt_ntf_mgr_t *manager, uint64_t subscriber_id,
                                            uint64_t *flags);

/* Sets the notification's bit for everyone who listed it, and calls back those whose effective flags
 * have changed by that, in order of subscription. An id that nobody listed is no failure.
 * O(log n) for each link to a subscriber. */
ZT_API zt_status_t zt_ntf_mgr_publish(zt_ntf_mgr_t *manager, uint64_t ntf_id);

#ifdef __cplusplus
}
#endif

#endif /* ZT_NTF_MGR_H */
