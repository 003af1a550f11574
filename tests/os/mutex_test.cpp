// Mutexes, and what is as small as they are: clocks and ids.
// SPDX-License-Identifier: MIT
#include "zt/mutex.h"

#include <sys/syscall.h>

#include <future>

#include "zt/ids.h"
#include "zt/time.h"

#include "support/test.hpp"

// Plain and recursive, real and dummy, on this thread and on another.
TEST(Mutex, LocksAsItsKindSays) {
    zt_mutex_t m;
    const auto other = [&] { return std::async(std::launch::async, zt_mutex_trylock, &m).get(); };
    for (const int kind : {0, 1, 2, 3}) {
        const bool recursive = kind % 2, dummy = kind / 2;
        const zt_status_t busy = dummy ? 0 : ZT_STATUS_DEVICE_BUSY, again = recursive ? 0 : busy;
        std::fill_n(reinterpret_cast<unsigned char *>(&m), sizeof m, 0xFF);
        EXPECT_EQ(zt_mutex_init_ex(&m, recursive, dummy) + zt_mutex_lock(&m), 0);
        EXPECT_TRUE(m.initialized && m.dummy == dummy && zt_mutex_trylock(&m) == again);
        EXPECT_EQ(again == 0 ? zt_mutex_unlock(&m) : 0, 0);
        EXPECT_EQ(other(), busy);
        EXPECT_TRUE(zt_mutex_unlock(&m) == 0 && other() == 0);
        if (kind == 1) EXPECT_EQ(zt_mutex_unlock(&m), ZT_STATUS_NOT_PERMITTED);
        EXPECT_EQ(zt_mutex_destroy(&m), busy);
        EXPECT_TRUE(!m.initialized && !m.dummy && zt_mutex_destroy(&m) == 0);
    }
}

TEST(ClockAndIds, AreTheKernels) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_RAW, &now);
    const auto raw = static_cast<uint64_t>(now.tv_sec * 1'000'000'000 + now.tv_nsec);
    const uint64_t ns = zt_time_get_ns(), us = zt_time_get_us(), ms = zt_time_get_ms();
    EXPECT_TRUE(raw <= ns && ns / 1000 <= us && us / 1000 <= ms && ms < raw / 1000000 + 60000);
    EXPECT_EQ(zt_getpid(), getpid());
    std::thread([] { EXPECT_EQ(zt_gettid(), syscall(SYS_gettid)); }).join();
}
