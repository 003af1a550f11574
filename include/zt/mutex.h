/* zt/mutex.h - a POSIX mutex that can be recursive, plain or a dummy that locks nothing.
 *
 * SPDX-License-Identifier: MIT
 *
 * Memory   The caller owns the record, usually inside the object that it guards. Destroy it before
 *          its memory goes away.
 * Threads  Lock, trylock and unlock may be called from any thread. Initialisation and destruction
 *          belong to the owning object's creation and destruction and must not race with anything.
 * Failure  What the POSIX call reports, translated by zt_get_status_by_errno: OutOfmemory (8) and
 *          TryAgain (4) for lacking resources, DeviceBusy (11) for a mutex that is held,
 *          NotPermitted (31) for a recursive mutex that the caller does not hold, UnknownError (6)
 *          for the rest.
 */
#ifndef ZT_MUTEX_H
#define ZT_MUTEX_H

#include <pthread.h>
#include <stdbool.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The mutex; written by the operations below only. */
typedef struct zt_mutex_t {
    bool initialized;      /* true from a successful initialisation until destruction */
    pthread_mutex_t mutex; /* unused in a dummy */
    bool dummy;            /* true: every operation succeeds at once and locks nothing */
} zt_mutex_t;

/* Initialises the record, whatever it held before. recursive: the holder may lock again and must
 * unlock as often. dummy: no POSIX mutex is made (and recursive does not matter), for objects that
 * are sometimes used by one thread only. On failure initialized is false. */
ZT_API zt_status_t zt_mutex_init_ex(zt_mutex_t *mutex, bool recursive, bool dummy);

/* zt_mutex_init_ex with recursive true and dummy false: the form every lock of this library uses. */
ZT_API zt_status_t zt_mutex_init(zt_mutex_t *mutex);

/* Destroys an initialised mutex. A zeroed or already destroyed record is left alone and gives 0.
 * DeviceBusy (11): it is held; initialized is cleared all the same. */
ZT_API zt_status_t zt_mutex_destroy(zt_mutex_t *mutex);

/* Waits until the mutex is the caller's. The record must be initialised: this is not checked. A mutex
 * that is not recursive and that the caller holds already is waited for without end.
 * TryAgain (4): locked as often as a recursive mutex can be. */
ZT_API zt_status_t zt_mutex_lock(zt_mutex_t *mutex);

/* Takes the mutex if that is possible at once.
 * DeviceBusy (11): another thread holds it, or, if it is not recursive, the caller.  TryAgain (4): as
 * above. */
ZT_API ZT_MUST_CHECK zt_status_t zt_mutex_trylock(zt_mutex_t *mutex);

/* Gives the mutex back. One that is not recursive must be held by the caller: this is not checked.
 * NotPermitted (31): a recursive mutex that the caller does not hold. */
ZT_API zt_status_t zt_mutex_unlock(zt_mutex_t *mutex);

#ifdef __cplusplus
}
#endif

#endif /* ZT_MUTEX_H */
