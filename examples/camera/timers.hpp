// timers.hpp - periodic and single actions on one thread, by the timer manager.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_TIMERS_HPP
#define CAMERA_TIMERS_HPP

#include <deque>
#include <functional>

#include "zt/base.h"

namespace camera {

class Timers {
  public:
    using Action = std::function<void()>;
    Timers();
    Timers(const Timers &) = delete;
    Timers &operator=(const Timers &) = delete;

    void every(uint32_t period_ms, Action action);
    void once(uint32_t delay_ms, Action action);

    // Waits for the alarm, or for wake to be set, and fires what is due.
    void wait(zt_event_t *wake);

  private:
    // The library hands out the addresses of manager and timers; these records lead back from them.
    struct Alarm {
        zt_timer_mgr_t manager;
        uint64_t due;
    };
    struct Entry {
        zt_timer_t timer;
        Timers *owner;
        uint32_t period_ms;  // 0: fires once
        Action *action;
    };
    void add(uint32_t delay_ms, uint32_t period_ms, Action action);
    static zt_status_t get_time(zt_timer_mgr_t *manager, uint64_t *now);
    static zt_status_t set_alarm(zt_timer_mgr_t *manager, uint64_t due, int32_t flag);
    static void on_due(uint64_t now, zt_timer_t *timer);

    Alarm alarm_{};
    std::deque<Action> actions_;
    std::deque<Entry> entries_;  // a deque: scheduled timers must stay where they are
};

}  // namespace camera

#endif  // CAMERA_TIMERS_HPP
