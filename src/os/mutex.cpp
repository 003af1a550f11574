// POSIX mutexes with a record of their state and a dummy mode.
// SPDX-License-Identifier: MIT
#include "zt/mutex.h"

#include <cstddef>
#include <type_traits>

#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_mutex_t> && sizeof(bool) == 1);
static_assert(offsetof(zt_mutex_t, initialized) == 0);
static_assert(offsetof(zt_mutex_t, mutex) == alignof(pthread_mutex_t));
static_assert(offsetof(zt_mutex_t, dummy) == alignof(pthread_mutex_t) + sizeof(pthread_mutex_t));

namespace {

// POSIX thread calls return their error number and leave errno alone.
int init_recursive(pthread_mutex_t *mutex) {
    pthread_mutexattr_t attributes;
    int error = pthread_mutexattr_init(&attributes);
    if (error != 0) return error;
    error = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    if (error == 0) error = pthread_mutex_init(mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return error;
}

// Keeps the path without an error free of a second call.
zt_status_t status_of(int error) {
    return error == 0 ? ZT_STATUS_SUCCESS : zt_get_status_by_errno(error);
}

}  // namespace

zt_status_t zt_mutex_init_ex(zt_mutex_t *mutex, bool recursive, bool dummy) {
    zt_memset(mutex, 0, sizeof *mutex);
    mutex->dummy = dummy;
    int error = 0;
    if (!dummy) {
        error =
            recursive ? init_recursive(&mutex->mutex) : pthread_mutex_init(&mutex->mutex, nullptr);
    }
    mutex->initialized = error == 0;
    return status_of(error);
}

zt_status_t zt_mutex_init(zt_mutex_t *mutex) { return zt_mutex_init_ex(mutex, true, false); }

zt_status_t zt_mutex_destroy(zt_mutex_t *mutex) {
    if (!mutex->initialized) return ZT_STATUS_SUCCESS;
    const int error = mutex->dummy ? 0 : pthread_mutex_destroy(&mutex->mutex);
    mutex->dummy = false;
    mutex->initialized = false;
    return status_of(error);
}

zt_status_t zt_mutex_lock(zt_mutex_t *mutex) {
    if (mutex->dummy) return ZT_STATUS_SUCCESS;
    return status_of(pthread_mutex_lock(&mutex->mutex));
}

zt_status_t zt_mutex_trylock(zt_mutex_t *mutex) {
    if (mutex->dummy) return ZT_STATUS_SUCCESS;
    return status_of(pthread_mutex_trylock(&mutex->mutex));
}

zt_status_t zt_mutex_unlock(zt_mutex_t *mutex) {
    if (mutex->dummy) return ZT_STATUS_SUCCESS;
    return status_of(pthread_mutex_unlock(&mutex->mutex));
}
