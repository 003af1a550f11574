// SPDX-License-Identifier: MIT
#include "zt/event.h"

#include <poll.h>
#include <sys/eventfd.h>

#include "zt/time.h"

#include "support/test.hpp"

static std::vector<int> g_interrupts;  // that many polls are interrupted, after so long each
static std::vector<int> g_polled;      // time-outs given to poll, which never lets one pass
static uint64_t g_now_ms = 1000;

uint64_t zt_time_get_ms() { return g_now_ms; }

int poll(pollfd *fds, nfds_t count, int timeout) {
    g_polled.push_back(timeout);
    const timespec at_once = {};
    if (g_polled.size() > g_interrupts.size()) return ppoll(fds, count, &at_once, nullptr);
    g_now_ms += static_cast<uint64_t>(g_interrupts[g_polled.size() - 1]);
    errno = EINTR;
    return -1;
}

// Sets beforehand, result, time-out; how long each interrupted poll took, and the time-outs given to
// poll: cut counts never read as time-outs, the remainder is exact.
TEST(Event, WaitsAsTheTableSays) {
    const struct {
        uint64_t sets;
        int want, timeout_ms;
        std::vector<int> interrupts, polled;
    } rows[] = {{3, 3, 50, {}, {50}},
                {0x80000000, INT32_MAX, -1, {}, {-1}},
                {uint64_t{1} << 32, INT32_MAX, 0, {}, {0}},
                {(uint64_t{1} << 32) + 5, 5, 0, {}, {0}},
                {0, 0, 100, {30, 0, 50}, {100, 70, 70, 20}},
                {1, -1, 100, {30, 700}, {100, 70}},
                {1, -1, 100, {30, 70}, {100, 70}},
                {1, 1, -1, {9, 9}, {-1, -1, -1}}};
    const int input = dup(0);
    close(0);  // each event would be descriptor 0
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        zt_event_t event;
        ASSERT_EQ(zt_event_init(&event), ZT_STATUS_SUCCESS);
        EXPECT_EQ(fcntl(event.fd, F_GETFD), FD_CLOEXEC);
        EXPECT_EQ(fcntl(0, F_GETFD), -1) << "used, or leaked";
        eventfd_write(event.fd, row.sets);
        EXPECT_EQ(zt_event_is_set(&event), row.sets > 0);
        g_interrupts = row.interrupts;
        g_polled.clear();
        EXPECT_EQ(zt_event_wait(&event, row.timeout_ms), row.want);
        EXPECT_EQ(g_polled, row.polled);
        g_interrupts.clear();
        EXPECT_EQ(zt_event_try_wait(&event), row.want < 0) << "a failed wait consumes nothing";
        EXPECT_EQ(zt_event_clear(&event), -1);
        zt_event_deinit(&event);
        EXPECT_EQ(event.fd, 0);
        dup2(input, 0);
        zt_event_deinit(&event);
        EXPECT_EQ(close(0), 0) << "closed by the second deinit";
    }
    dup2(input, 0);
    close(input);
}

TEST(Event, WaitsForMultiple) {
    zt_event_t events[20];
    zt_event_t *all[20];
    for (int i = 0; i < 20; ++i) ASSERT_EQ(zt_event_init(all[i] = &events[i]), ZT_STATUS_SUCCESS);
    zt_event_set(all[7]);
    std::thread([&] { pthread_cancel(pthread_self()), zt_event_set(all[19]); }).join();
    for (int i = 0; i < 2; ++i) EXPECT_EQ(zt_event_wait_for_multiple(all, 20, -1), 2);
    alloc_faults::fail_at(1, alloc_faults::Mode::kFromThenOn);
    EXPECT_EQ(zt_event_wait_for_multiple(all, 16, 0), 1);
    EXPECT_EQ(zt_event_wait_for_multiple(all, 17, 0), 8);
    alloc_faults::disarm();
    EXPECT_EQ(zt_event_wait_for_multiple(all, 0x20000000, 0), 8) << "2^32 bytes";
    EXPECT_EQ(zt_event_wait_for_multiple(nullptr, INT32_MIN, 1), 0);
    for (zt_event_t *event : all) zt_event_deinit(event);
    int ends[2];
    ASSERT_TRUE(pipe(ends) == 0 && write(ends[1], "", 1) == 1 && close(ends[1]) == 0);
    events[0].fd = ends[0];
    EXPECT_FALSE(zt_event_is_set(all[0])) << "readable, but hung up";
    zt_event_deinit(all[0]);
    EXPECT_EQ(alloc_faults::live(), 0);
}
