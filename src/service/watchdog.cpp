// Supervision of clients by their keep-alives.
// SPDX-License-Identifier: MIT
#include "zt/watchdog.h"

#include <atomic>
#include <cstddef>
#include <type_traits>

#include "base/list_ops.hpp"
#include "os/mutex_guard.hpp"
#include "zt/memory.h"
#include "zt/time.h"

static_assert(std::is_standard_layout_v<zt_watchdog_t> && sizeof(zt_watchdog_t) == 48);
static_assert(offsetof(zt_watchdog_t, link) == 0);
static_assert(offsetof(zt_watchdog_t, name) == 16);
static_assert(offsetof(zt_watchdog_t, last_alive_ms) == 24);
static_assert(offsetof(zt_watchdog_t, timeout_ms) == 32);
static_assert(offsetof(zt_watchdog_t, user) == 40);

static_assert(std::is_standard_layout_v<zt_hw_watchdog_t>);
static_assert(offsetof(zt_hw_watchdog_t, enable) == 0);
static_assert(offsetof(zt_hw_watchdog_t, keep_alive) == 8);
static_assert(offsetof(zt_hw_watchdog_t, close) == 16);

static_assert(std::is_standard_layout_v<zt_watchdog_mgr_t>);
static_assert(offsetof(zt_watchdog_mgr_t, lock) == 0);
static_assert(offsetof(zt_watchdog_mgr_t, clients) == sizeof(zt_mutex_t));
static_assert(offsetof(zt_watchdog_mgr_t, hw) == sizeof(zt_mutex_t) + 16);
static_assert(offsetof(zt_watchdog_mgr_t, expired_cb) == sizeof(zt_mutex_t) + 24);

namespace {

using zt::detail::list_init;
using zt::detail::list_insert_before;
using zt::detail::list_remove;
using zt::detail::MutexGuard;

// The client's thread stores the time while the checking thread reads it.
std::atomic_ref<uint64_t> last_alive(zt_watchdog_t *entry) {
    return std::atomic_ref<uint64_t>(entry->last_alive_ms);
}

zt_watchdog_t *entry_of(zt_list_head_t *link) { return ZT_CONTAINER_OF(link, zt_watchdog_t, link); }

// Judged by the whole difference: cut to 32 bits, a client would come back to life after 25 days.
bool is_overdue(zt_watchdog_t *entry) {
    // Read before the clock, so that a keep-alive in between cannot lie in the future.
    const uint64_t last = last_alive(entry).load(std::memory_order_acquire);
    return static_cast<int64_t>(zt_time_get_ms() - last) >= entry->timeout_ms;
}

bool any_overdue(zt_watchdog_mgr_t *mgr) {
    const MutexGuard guard(&mgr->lock);
    for (zt_list_head_t *p = mgr->clients.next; p != &mgr->clients; p = p->next) {
        if (is_overdue(entry_of(p))) return true;
    }
    return false;
}

void report_overdue(zt_watchdog_mgr_t *mgr) {
    const MutexGuard guard(&mgr->lock);
    zt_list_head_t *next = nullptr;
    for (zt_list_head_t *p = mgr->clients.next; p != &mgr->clients; p = next) {
        next = p->next;  // the callback may unregister the entry
        if (is_overdue(entry_of(p)) && mgr->expired_cb != nullptr) {
            mgr->expired_cb(mgr, entry_of(p));
        }
    }
}

}  // namespace

zt_status_t zt_watchdog_mgr_create(zt_watchdog_mgr_t *mgr, zt_hw_watchdog_t *hw) {
    const zt_status_t status = zt_mutex_init(&mgr->lock);
    if (status == ZT_STATUS_SUCCESS) mgr->hw = hw;
    return status;
}

void zt_watchdog_mgr_destroy(zt_watchdog_mgr_t *mgr) {
    if (mgr == nullptr) return;
    if (mgr->hw != nullptr) mgr->hw->close(mgr->hw);
    zt_mutex_destroy(&mgr->lock);
    zt_memset(mgr, 0, sizeof *mgr);
    list_init(&mgr->clients);
}

zt_status_t zt_watchdog_mgr_enable_hw(zt_watchdog_mgr_t *mgr, int8_t flag) {
    if (mgr == nullptr || mgr->hw == nullptr) return ZT_STATUS_SUCCESS;
    return mgr->hw->enable(mgr->hw, flag);
}

zt_status_t zt_watchdog_mgr_check(zt_watchdog_mgr_t *mgr) {
    if (!any_overdue(mgr)) {
        if (mgr->hw != nullptr) mgr->hw->keep_alive(mgr->hw);
        return ZT_STATUS_SUCCESS;
    }
    report_overdue(mgr);
    if (mgr->expired_cb != nullptr) mgr->expired_cb(mgr, nullptr);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_watchdog_register(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry, uintptr_t user,
                                 int32_t timeout_ms) {
    const MutexGuard guard(&mgr->lock);
    entry->timeout_ms = timeout_ms;
    last_alive(entry).store(zt_time_get_ms(), std::memory_order_relaxed);
    entry->user = user;
    list_insert_before(&mgr->clients, &entry->link);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_watchdog_unregister(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry) {
    const MutexGuard guard(&mgr->lock);
    const zt_list_head_t &link = entry->link;
    // A zeroed entry counts as not registered as well.
    if (link.next == nullptr || link.prev == nullptr) return ZT_STATUS_SUCCESS;
    if (link.next == &link || link.prev == &link) return ZT_STATUS_SUCCESS;
    list_remove(&entry->link);
    return ZT_STATUS_SUCCESS;
}

void zt_watchdog_keep_alive(zt_watchdog_t *entry) {
    last_alive(entry).store(zt_time_get_ms(), std::memory_order_relaxed);
    __sync_synchronize();  // what the client does next is not seen before its sign of life
}
