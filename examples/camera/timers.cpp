// timers.cpp - the alarm behind the timer manager is the time-out of the waiting thread.
//
// SPDX-License-Identifier: MIT
#include "timers.hpp"

#include <algorithm>
#include <utility>

#include "run.hpp"

namespace camera {
namespace {
constexpr uint64_t kLongestWaitMs = 1000;
}

Timers::Timers() {
    alarm_.manager.get_time = get_time;
    alarm_.manager.set_alarm = set_alarm;
    alarm_.due = UINT64_MAX;
}

void Timers::every(uint32_t period_ms, Action action) {
    add(period_ms, period_ms, std::move(action));
}

void Timers::once(uint32_t delay_ms, Action action) { add(delay_ms, 0, std::move(action)); }

void Timers::add(uint32_t delay_ms, uint32_t period_ms, Action action) {
    actions_.push_back(std::move(action));
    entries_.push_back({{}, this, period_ms, &actions_.back()});
    entries_.back().timer.cb = on_due;
    require(zt_timer_mgr_schedule_timer(&alarm_.manager, &entries_.back().timer, delay_ms),
            "timer");
}

void Timers::wait(zt_event_t *wake) {
    const uint64_t now = zt_time_get_ms();
    const uint64_t left = alarm_.due > now ? alarm_.due - now : 0;
    zt_event_wait(wake, static_cast<int32_t>(std::min(left, kLongestWaitMs)));
    if (zt_time_get_ms() < alarm_.due) return;
    alarm_.due = UINT64_MAX;  // the manager arms it again if any timer is left
    zt_timer_mgr_process_alarm(&alarm_.manager);
}

zt_status_t Timers::get_time(zt_timer_mgr_t *, uint64_t *now) {
    *now = zt_time_get_ms();
    return ZT_STATUS_SUCCESS;
}

zt_status_t Timers::set_alarm(zt_timer_mgr_t *manager, uint64_t due, int32_t) {
    ZT_CONTAINER_OF(manager, Alarm, manager)->due = due;
    return ZT_STATUS_SUCCESS;
}

void Timers::on_due(uint64_t, zt_timer_t *timer) {
    auto *entry = ZT_CONTAINER_OF(timer, Entry, timer);
    (*entry->action)();
    if (entry->period_ms == 0) return;
    zt_timer_mgr_schedule_timer(&entry->owner->alarm_.manager, timer, entry->period_ms);
}

}  // namespace camera
