// SPDX-License-Identifier: MIT
#include "zt/event.h"

#include <poll.h>

#include "zt/time.h"

#include "support/test.hpp"

// The time-outs that a wait gives to poll. All but the last poll are interrupted, when what the
// next one gets is left. No time passes otherwise.
static std::vector<int> g_polls;
static uint64_t g_now_ms = UINT32_MAX - 50;  // the low half is about to wrap

uint64_t zt_time_get_ms() { return g_now_ms; }

int poll(pollfd *fds, nfds_t count, int timeout) {
    const timespec at_once = {};
    EXPECT_TRUE(g_polls.empty() || timeout == g_polls[0]) << timeout;
    if (g_polls.size() < 2) return ppoll(fds, count, &at_once, nullptr);
    g_now_ms += static_cast<uint64_t>(timeout < 0 ? 9 : timeout - g_polls[1]);
    g_polls.erase(g_polls.begin());
    return errno = EINTR, -1;
}

// Any number of sets comes out as a count, unless an interruption lasts until the time is up.
TEST(Event, WaitsAsTheModelDoes) {
    close(0);  // the event would be descriptor 0, which stands for none
    zt_event_t event;
    EXPECT_TRUE(zt_event_init(&event) == 0 && fcntl(event.fd, F_GETFD) == FD_CLOEXEC);
    const std::vector<int> waits[] = {{-1}, {0}, {9, 7, 7, 2}, {9, 7, 0}, {9, 7, -60}, {-1, -1}};
    for (const uint64_t sets : {0UL, 1UL, 3UL, 1UL << 31, 1UL << 32, (1UL << 32) + 5})
        for (const auto &polls : waits) {
            write(event.fd, &sets, sizeof sets);
            EXPECT_EQ(zt_event_is_set(&event), sets > 0);
            const int cut = static_cast<int>(sets), count = cut > 0 || sets == 0 ? cut : INT32_MAX;
            const bool late = polls[0] > 0 && polls.back() <= 0;
            g_polls = polls;
            EXPECT_EQ(zt_event_wait(&event, polls[0]), late ? -1 : count);
            EXPECT_EQ(std::exchange(g_polls, {}).size(), 1U);
            EXPECT_TRUE(zt_event_try_wait(&event) == (late && sets) && zt_event_clear(&event) < 0);
        }
    for (const int lowest_free : {0, event.fd}) EXPECT_EQ((zt_event_deinit(&event), dup(1) + event.fd), lowest_free);
}

// Events are found set, not consumed; too many of them; set in spite of a cancellation.
TEST(Event, WaitsForMultiple) {
    zt_event_t events[20], *all[20];
    for (int i = 0; i < 20; ++i) EXPECT_EQ(zt_event_init(all[i] = &events[i]), 0);
    zt_event_set(all[7]);
    std::thread([&] { pthread_cancel(pthread_self()), zt_event_set(all[19]); }).join();
    for (auto [count, want] : {std::pair(20, 2), {16, 1}, {1 << 29, 8}, {20, 2}, {-9, 0}})
        EXPECT_EQ(zt_event_wait_for_multiple(all, count, 1), want);
    int *const ends = &events[0].fd;
    EXPECT_EQ(pipe(ends) + write(ends[1], "", 1) + close(ends[1]), 1);
    EXPECT_FALSE(zt_event_is_set(all[0])) << "readable, but hung up";
}
