// Days of timers on a simulated clock against a map, and a clock and an alarm that fail.
// SPDX-License-Identifier: MIT
#include "zt/timer_mgr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace {

// The application: a clock, an alarm, and a record around each timer.
struct App {
    zt_timer_mgr_t manager = {};
    uint64_t now = 0;
    std::vector<uint64_t> alarms;
    int clock_reads = 0;
    zt_status_t clock_status = 0, alarm_status = 0;

    App() {
        manager.get_time = [](zt_timer_mgr_t *m, uint64_t *time) {
            App *app = reinterpret_cast<App *>(m);
            ++app->clock_reads;
            if (app->clock_status == 0) *time = app->now;
            return app->clock_status;
        };
        manager.set_alarm = [](zt_timer_mgr_t *m, uint64_t due, int32_t flag) {
            App *app = reinterpret_cast<App *>(m);
            EXPECT_EQ(flag, 1);
            app->alarms.push_back(due);
            return app->alarm_status;
        };
    }
};

struct Timer {
    zt_timer_t timer = {};
    std::function<void(uint64_t)> fired;
    Timer() {
        timer.cb = [](uint64_t now, zt_timer_t *t) {
            const auto callback = std::move(reinterpret_cast<Timer *>(t)->fired);
            callback(now);  // may free the timer
        };
    }
};

class Simulation {
  public:
    explicit Simulation(uint64_t start) { app_.now = start; }

    void run(int steps) {
        for (int i = 0; i < 300; ++i) timers_.push_back(std::make_unique<Timer>());
        for (int i = 0; i < steps && !testing::Test::HasFatalFailure(); ++i) {
            if (random_() % 4 != 0) {
                act();
            } else {
                app_.now += random_() % 3 == 0 ? random_() % 200'000'000 : random_() % 500;
                process();
            }
        }
        EXPECT_GT(fired_, steps / 8);
    }

  private:
    uint64_t earliest() const {
        uint64_t due = UINT64_MAX;
        for (const auto &[timer, its_due] : due_) due = std::min(due, its_due);
        return due;
    }

    void schedule(Timer *timer) {
        timer->fired = [this, timer](uint64_t now) { on_fired(timer, now); };
        const bool absolute = random_() % 4 == 0;
        const uint32_t delay = 1 + (random_() % 50 == 0 ? UINT32_MAX - 1 : random_() % 1000);
        due_.erase(timer);
        app_.alarms.clear();
        const uint64_t due = app_.now + delay;
        ASSERT_EQ(absolute ? zt_timer_mgr_schedule_timer_abs(&app_.manager, &timer->timer, due)
                           : zt_timer_mgr_schedule_timer(&app_.manager, &timer->timer, delay),
                  0);
        const bool is_first = due_.empty() || due < earliest();
        ASSERT_EQ(app_.alarms, is_first ? std::vector<uint64_t>{due} : std::vector<uint64_t>{});
        due_[timer] = due;
    }

    void act() {
        Timer *timer = timers_[random_() % timers_.size()].get();
        if (random_() % 3 != 0) return schedule(timer);
        app_.alarms.clear();
        zt_timer_mgr_cancel_timer(&app_.manager, &timer->timer);
        due_.erase(timer);
        ASSERT_TRUE(app_.alarms.empty());
        ASSERT_EQ(app_.manager.heap.count, due_.size());
    }

    void on_fired(Timer *timer, uint64_t now) {
        ++fired_;
        EXPECT_EQ(now, processed_at_);
        EXPECT_LE(due_.at(timer), now);
        EXPECT_EQ(due_.at(timer), earliest());
        EXPECT_EQ(timer->timer.node.in_heap, 0);
        due_.erase(timer);
        for (uint32_t actions = random_() % 3; actions > 0; --actions) act();
        app_.now += random_() % 2;  // time goes on, the one passed to callbacks does not
        if (random_() % 3 == 0) schedule(timer);
        if (due_.count(timer) != 0 || random_() % 8 != 0) return;
        for (auto &owned : timers_) {
            if (owned.get() == timer) owned = std::make_unique<Timer>();  // frees it
        }
    }

    void process() {
        processed_at_ = app_.now;
        const int reads = app_.clock_reads;
        app_.alarms.clear();
        ASSERT_EQ(zt_timer_mgr_process_alarm(&app_.manager), 0);
        ASSERT_GT(app_.clock_reads, reads) << "the clock is read also when there is no timer";
        ASSERT_EQ(app_.alarms.empty() ? UINT64_MAX : app_.alarms.back(), earliest());
        ASSERT_GT(earliest(), processed_at_);
    }

    std::mt19937 random_{99};
    App app_;
    std::vector<std::unique_ptr<Timer>> timers_;
    std::map<Timer *, uint64_t> due_;
    uint64_t processed_at_ = 0;
    int fired_ = 0;
};

TEST(TimerMgr, DaysOfTimersFireWhenDue) {
    SCOPED_TRACE("seed 99");
    Simulation(0).run(20'000);
    Simulation(UINT64_MAX / 2).run(20'000);
}

TEST(TimerMgr, FailuresArePassedOn) {
    App app;
    zt_timer_t timer = {}, other = {};
    app.clock_status = 55;
    EXPECT_EQ(zt_timer_mgr_process_alarm(&app.manager), 55);
    ASSERT_EQ(zt_timer_mgr_schedule_timer_abs(&app.manager, &timer, 0), 0);
    EXPECT_EQ(zt_timer_mgr_process_alarm(&app.manager), 55);
    EXPECT_EQ(timer.node.in_heap, 1) << "nothing fires without a clock";
    EXPECT_EQ(zt_timer_mgr_schedule_timer(&app.manager, &timer, 5), 55);
    EXPECT_EQ(timer.node.in_heap, 0);
    app.clock_status = 0;
    app.alarm_status = 47;
    EXPECT_EQ(zt_timer_mgr_schedule_timer(&app.manager, &timer, 5), 47);
    EXPECT_EQ(zt_timer_mgr_schedule_timer(&app.manager, &other, 9), 0);
    EXPECT_EQ(zt_timer_mgr_process_alarm(&app.manager), 47);
    EXPECT_EQ(app.manager.heap.count, 2u) << "timers stay when the alarm fails";
    app.now = 9;
    EXPECT_EQ(zt_timer_mgr_process_alarm(&app.manager), 0);
    EXPECT_EQ(app.manager.heap.root, nullptr);
}

}  // namespace
