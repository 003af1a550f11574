// SPDX-License-Identifier: MIT
#include "zt/watchdog.h"

#include <gtest/gtest.h>

#include <random>

#include "zt/time.h"

// Stand in for the library's own: weeks pass at once, a reading of the clock can change the world,
// and there may be no lock to be had.
uint64_t g_now = 0;
std::function<void()> g_at_reading;
bool g_no_lock = false;

uint64_t zt_time_get_ms() { return g_at_reading ? g_at_reading() : void(), g_now; }
zt_status_t zt_mutex_init(zt_mutex_t *mutex) {
    return g_no_lock ? ZT_STATUS_OUT_OF_MEMORY : zt_mutex_init_ex(mutex, true, false);
}

namespace {

constexpr int kEnd = -1, kFed = -2, kClosed = -3;  // what can happen besides an entry's number
using Seen = std::vector<int>;
Seen g_seen;
std::function<void(size_t)> g_at_expiry;

void on_expired(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry) {
    EXPECT_EQ(mgr->lock.mutex.__data.__owner != 0, entry != nullptr) << "locked";
    g_seen.push_back(entry != nullptr ? static_cast<int>(entry->user) : kEnd);
    if (entry != nullptr && g_at_expiry) g_at_expiry(entry->user);
}

struct Watchdogs : testing::Test {
    zt_hw_watchdog_t hw = {[](zt_hw_watchdog_t *, int flag) { return 1000 + flag; },
                           [](zt_hw_watchdog_t *) { return g_seen.push_back(kFed), 1; },
                           [](zt_hw_watchdog_t *) { return g_seen.push_back(kClosed), 1; }};
    zt_watchdog_mgr_t mgr = ZT_WATCHDOG_MGR_INIT(mgr, on_expired);
    zt_watchdog_t entries[4] = {};  // zeroed counts as not registered

    Watchdogs() { EXPECT_EQ(zt_watchdog_mgr_create(&mgr, &hw), 0); }
    ~Watchdogs() override { g_at_reading = nullptr, g_at_expiry = nullptr; }
    void add(size_t i, int32_t timeout) { zt_watchdog_register(&mgr, &entries[i], i, timeout); }
    Seen check() { return g_seen.clear(), zt_watchdog_mgr_check(&mgr), g_seen; }
};

// Against a list of who is registered since when. Reported entries may leave on the spot.
TEST_F(Watchdogs, ReportTheOverdueInOrderOrFeedTheHardware) {
    constexpr int32_t kTimeouts[] = {INT32_MIN, -1, 0, 1, 999, 1000, 86'400'000, INT32_MAX};
    constexpr uint64_t kSteps[] = {0, 0, 0, 1, 499, 999, 2'160'000'000, INT32_MAX, 0x1'0000'0000};
    std::mt19937 random(20240229);
    std::vector<size_t> order;
    uint64_t last[4] = {};
    int32_t timeout[4] = {};
    const auto leave = [&](size_t i) {
        EXPECT_EQ(zt_watchdog_unregister(&mgr, &entries[i]), 0);
        std::erase(order, i);
    };
    g_at_expiry = [&](size_t i) { random() % 4 == 0 ? leave(i) : void(); };
    g_now = 0x1'0000'0000 - 500;  // the low half is about to wrap
    for (int step = 0; step < 20'000; ++step, g_now += kSteps[random() % std::size(kSteps)]) {
        const size_t i = random() % std::size(entries);
        if (std::find(order.begin(), order.end(), i) == order.end()) {
            order.push_back(i);
            last[i] = g_now;
            add(i, timeout[i] = kTimeouts[random() % std::size(kTimeouts)]);
        } else if (random() % 2 == 0) {
            last[i] = g_now;
            zt_watchdog_keep_alive(&entries[i]);
        } else {
            leave(i), leave(i);
        }
        Seen want;
        for (const size_t c : order) {
            const bool overdue =
                timeout[c] <= 0 || (g_now - last[c]) / static_cast<uint32_t>(timeout[c]) > 0;
            if (overdue) want.push_back(static_cast<int>(c));
        }
        want.push_back(want.empty() ? kFed : kEnd);
        ASSERT_EQ(check(), want) << "step " << step;
    }
}

// The first look ends at the first overdue entry; what its reading does, the second look sees.
TEST_F(Watchdogs, LookTwiceAndReadTheClockForEachEntry) {
    int readings = 0;
    add(0, 10), add(1, 10);
    g_now += 10;
    g_at_reading = [&] { entries[1].last_alive_ms += ++readings == 2 ? 1 : 0; };
    EXPECT_EQ(check(), (Seen{0, kEnd}));
    EXPECT_EQ(readings, 3);
    g_at_reading = [&] { g_now -= ++readings == 5 ? 10 : 0; };
    EXPECT_EQ(check(), Seen{kEnd}) << "all alive at the second look";
}

TEST_F(Watchdogs, AreZeroedByTheDestructionAndReadyForReuse) {
    EXPECT_EQ(zt_watchdog_mgr_enable_hw(&mgr, -128), 1000 - 128);
    g_seen.clear();
    zt_watchdog_mgr_destroy(&mgr);
    EXPECT_EQ(g_seen, Seen{kClosed});
    EXPECT_TRUE(mgr.hw == nullptr && mgr.expired_cb == nullptr && !mgr.lock.initialized);
    g_no_lock = true;
    EXPECT_EQ(zt_watchdog_mgr_create(&mgr, &hw), ZT_STATUS_OUT_OF_MEMORY);
    EXPECT_EQ(zt_watchdog_mgr_enable_hw(&mgr, 1) + zt_watchdog_mgr_enable_hw(nullptr, 1), 0);
    g_no_lock = false;
    EXPECT_EQ(zt_watchdog_mgr_create(&mgr, nullptr), 0);
    EXPECT_EQ(check(), Seen{}) << "no hardware";
    add(0, 0);
    EXPECT_EQ(check(), Seen{}) << "no callback";
    zt_watchdog_mgr_destroy(nullptr);
}

}  // namespace
