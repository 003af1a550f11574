// Days of timers on a simulated clock against a map, and a clock and an alarm that fail.
// SPDX-License-Identifier: MIT
#include "zt/timer_mgr.h"

#include "support/test.hpp"

// The application: a clock, an alarm, and what happens when a timer fires.
uint64_t g_now;
std::vector<uint64_t> g_alarms;  // as armed
zt_status_t g_clock_status, g_alarm_status;
std::function<void(uint64_t, zt_timer_t *)> g_fired;
const zt_timer_mgr_t kNewManager = {
    {},
    [](auto, uint64_t *now) { return *now = g_now, g_clock_status; },
    [](auto, uint64_t due, int flag) { return g_alarms.push_back(flag * due), g_alarm_status; }};

// Timers are scheduled, moved, cancelled and freed, between alarms and from callbacks.
// The sign bit turns on the way, or not.
ZT_MODEL(TimerMgr, DaysOfTimersFireWhenDue, 2, 20'000) {
    zt_timer_mgr_t manager = kNewManager;
    std::unique_ptr<zt_timer_t> timers[300];
    std::map<zt_timer_t *, uint64_t> due = {{nullptr, UINT64_MAX}};
    const auto earliest = [&] {
        const auto sooner = [](const auto &a, const auto &b) { return a.second < b.second; };
        return std::min_element(due.begin(), due.end(), sooner)->second;
    };
    uint64_t processed_at = g_now = random.variant(2) * (UINT64_MAX / 2 - 100'000'000'000);
    const auto schedule = [&](zt_timer_t *timer) {
        const uint32_t delay = 1 + random(random.pick({1000u, 1000u, 1000u, 1000u, 3u, 3u, 3u, UINT32_MAX}));
        due.erase(timer), g_alarms.clear();
        const std::vector<uint64_t> want(g_now + delay < earliest() ? 1 : 0, g_now + delay);
        due[timer] = g_now + delay;
        ASSERT_EQ(random(4) == 0 ? zt_timer_mgr_schedule_timer_abs(&manager, timer, due[timer])
                                 : zt_timer_mgr_schedule_timer(&manager, timer, delay),
                  0);
        ASSERT_EQ(g_alarms, want);
    };
    const auto act = [&] {
        auto &timer = timers[random(std::size(timers))];
        if (timer == nullptr) timer.reset(new zt_timer_t{{}, 0, [](auto... a) { g_fired(a...); }});
        if (random(3) != 0) return schedule(timer.get());
        g_alarms.clear(), due.erase(timer.get());
        zt_timer_mgr_cancel_timer(&manager, timer.get());
        ASSERT_TRUE(g_alarms.empty() && manager.heap.count == due.size() - 1);
    };
    g_fired = [&](uint64_t now, zt_timer_t *timer) {
        EXPECT_TRUE(now == processed_at && due.at(timer) == earliest() && earliest() <= now);
        EXPECT_EQ(timer->node.in_heap, 0);
        due.erase(timer);
        for (uint32_t actions = random(3); actions > 0; --actions) act();
        g_now += random(2);  // time goes on, the one passed to callbacks does not
        if (random(3) == 0) schedule(timer);
        if (due.contains(timer) || random(8) != 0) return;
        for (auto &owned : timers) owned.get() == timer ? owned.reset() : void();
    };
    for (; random.more(); act()) {
        if (random(3) != 0) continue;
        processed_at = g_now += random(random(3) == 0 ? 200'000'000 : 500);
        g_alarms.clear();
        ASSERT_EQ(zt_timer_mgr_process_alarm(&manager), 0);
        ASSERT_EQ(g_alarms.empty() ? UINT64_MAX : g_alarms.back(), earliest());
        ASSERT_GT(earliest(), processed_at);
    }
}

// The clock is read also when there is no timer, and nothing fires without it; timers outlive the alarm.
TEST(TimerMgr, FailuresArePassedOn) {
    zt_timer_mgr_t manager = kNewManager;
    zt_timer_t timer = {}, other = {};
    g_clock_status = 55;
    EXPECT_EQ(zt_timer_mgr_process_alarm(&manager), 55);
    ASSERT_EQ(zt_timer_mgr_schedule_timer_abs(&manager, &timer, 0), 0);
    EXPECT_EQ(zt_timer_mgr_process_alarm(&manager), 55);
    EXPECT_EQ(timer.node.in_heap, 1);
    EXPECT_EQ(zt_timer_mgr_schedule_timer(&manager, &timer, 5), 55);
    EXPECT_EQ(timer.node.in_heap, 0);
    g_clock_status = 0, g_alarm_status = 47;
    EXPECT_EQ(zt_timer_mgr_schedule_timer(&manager, &timer, 5), 47);
    EXPECT_EQ(zt_timer_mgr_schedule_timer(&manager, &other, 9), 0);
    EXPECT_EQ(zt_timer_mgr_process_alarm(&manager), 47);
    EXPECT_EQ(manager.heap.count, 2u);
    g_now += 9;
    EXPECT_EQ(zt_timer_mgr_process_alarm(&manager), 0);
    EXPECT_TRUE(manager.heap.root == nullptr && std::exchange(g_alarm_status, 0) == 47);
}
