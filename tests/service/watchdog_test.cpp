// Random lives of clients on a simulated clock, what happens between the two looks of a check, reuse.
// SPDX-License-Identifier: MIT
#include "zt/watchdog.h"

#include "zt/time.h"

#include "support/test.hpp"

// Stands in for the library's own: weeks pass at once, and a reading can change the world.
uint64_t g_now = 0x1'0000'0000 - 500;  // the low half is about to wrap
std::function<void()> g_at_reading = [] {};
uint64_t zt_time_get_ms() { return g_at_reading(), g_now; }

constexpr size_t kEnd = 10, kFed = 11, kClosed = 12;  // what can happen besides an entry's number
using Seen = std::vector<size_t>;
static Seen g_seen;
static std::function<void(size_t)> g_at_event;
static zt_watchdog_mgr_t g_mgr;

static zt_status_t see(size_t what) {
    EXPECT_EQ(g_mgr.lock.mutex.__data.__owner != 0, what < kEnd) << "locked for entries only";
    return g_seen.push_back(what), g_at_event(what), 1;
}
static void on_expired(zt_watchdog_mgr_t *, zt_watchdog_t *entry) { see(entry ? entry->user : kEnd); }
static zt_hw_watchdog_t g_hw = {[](auto, int flag) { return 1000 + flag; }, [](auto) { return see(kFed); },
                                [](auto) { return see(kClosed); }};
static Seen check() { return g_seen.clear(), zt_watchdog_mgr_check(&g_mgr), g_seen; }

TEST(Watchdog, ReportsTheOverdueInOrderOrFeedsTheHardware) {
    constexpr int32_t kTimeouts[] = {INT32_MIN, -1, 0, 1, 999, 1000, 86'400'000, INT32_MAX};
    constexpr uint64_t kSteps[] = {0, 0, 0, 1, 499, 999, 2'160'000'000, INT32_MAX, 0x1'0000'0000};
    std::mt19937 random(20240229);
    zt_watchdog_t all[4] = {};  // zeroed counts as not registered
    int64_t last[4], timeout[4], readings = 0;
    Seen order;  // who is registered
    const auto add = [&](size_t i, int ms) { zt_watchdog_register(&g_mgr, &all[i], i, ms); };
    const auto leave = [&](size_t i) { erase(order, i), zt_watchdog_unregister(&g_mgr, &all[i]); };
    g_at_event = [&](size_t i) { random() % 4 == 0 && i < kEnd ? leave(i) : void(); };
    g_mgr = ZT_WATCHDOG_MGR_INIT(g_mgr, on_expired);
    ASSERT_EQ(zt_watchdog_mgr_create(&g_mgr, &g_hw), 0);
    for (int step = 0; step < 20'000; ++step, g_now += kSteps[random() % std::size(kSteps)]) {
        const size_t i = random() % 4, dice = random() % 3;
        const bool is_new = std::count(order.begin(), order.end(), i) == 0;
        last[i] = g_now;
        if (dice == 0) leave(i);
        if (dice != 0 && is_new) order.push_back(i), add(i, timeout[i] = kTimeouts[random() % 8]);
        if (dice != 0 && !is_new) zt_watchdog_keep_alive(&all[i]);
        Seen want = order;
        std::erase_if(want, [&](size_t c) { return int64_t(g_now) - last[c] < timeout[c]; });
        want.push_back(want.empty() ? kFed : kEnd);
        ASSERT_EQ(check(), want) << "step " << step;
    }
    // The end, and a second life, at first with neither hardware nor callback.
    EXPECT_EQ(zt_watchdog_mgr_enable_hw(&g_mgr, -128), 1000 - 128);
    zt_watchdog_mgr_destroy(&g_mgr), zt_watchdog_mgr_destroy(nullptr);
    EXPECT_EQ(g_seen.back(), kClosed);
    EXPECT_EQ(zt_watchdog_mgr_create(&g_mgr, nullptr), 0);
    EXPECT_EQ(zt_watchdog_mgr_enable_hw(&g_mgr, 1) + zt_watchdog_mgr_enable_hw(nullptr, 1), 0);
    add(0, 10), add(1, 10);
    for (int i = 0; i < 2; ++i, g_now += 10) EXPECT_EQ(check(), Seen{}) << "alive, then overdue";
    // The first look ends at the first overdue entry, the second reads the clock for each.
    g_mgr.expired_cb = on_expired, g_at_reading = [&] { g_now -= ++readings == 3 ? 15 : 0; };
    EXPECT_EQ(check(), (Seen{0, kEnd}));
    g_now += 15, readings = 1;
    EXPECT_EQ(check(), Seen{kEnd}) << "all alive at the second look";
    zt_list_head_t *const half[] = {nullptr, &all[2].link};  // no neighbour on one side: not registered
    for (auto *prev : half) all[2].link = {&all[3].link, prev}, leave(2);
    EXPECT_TRUE(all[2].link.next == &all[3].link && all[2].link.prev == half[1]) << "left alone";
    zt_watchdog_mgr_destroy(&g_mgr);
}
