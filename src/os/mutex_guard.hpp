// Holds a zt_mutex_t for the length of a scope.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_OS_MUTEX_GUARD_HPP
#define ZT_SRC_OS_MUTEX_GUARD_HPP

#include "zt/mutex.h"

namespace zt::detail {

class MutexGuard {
  public:
    explicit MutexGuard(zt_mutex_t *mutex) : mutex_(mutex) { zt_mutex_lock(mutex_); }
    ~MutexGuard() { zt_mutex_unlock(mutex_); }
    MutexGuard(const MutexGuard &) = delete;
    MutexGuard &operator=(const MutexGuard &) = delete;

  private:
    zt_mutex_t *mutex_;
};

}  // namespace zt::detail

#endif  // ZT_SRC_OS_MUTEX_GUARD_HPP
