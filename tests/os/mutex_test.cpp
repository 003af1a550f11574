// Mutexes, and what is as small as they are: clocks and ids.
// SPDX-License-Identifier: MIT
#include "zt/mutex.h"

#include <sys/syscall.h>

#include "zt/ids.h"
#include "zt/time.h"

#include "support/test.hpp"

// Stand in for the C library's.
bool g_no_type = false;
int g_attributes_destroyed = 0;
int pthread_mutexattr_settype(pthread_mutexattr_t *attributes, int type) noexcept {
    return g_no_type ? ENOMEM : (attributes->__align = type, 0);
}
int pthread_mutexattr_destroy(pthread_mutexattr_t *) noexcept { return ++g_attributes_destroyed, 0; }

namespace {

zt_status_t elsewhere(zt_status_t (*operation)(zt_mutex_t *), zt_mutex_t *mutex) {
    zt_status_t status = -1;
    std::thread([&] { status = operation(mutex); }).join();
    return status;
}

TEST(Mutex, LocksAsItsKindSays) {
    for (const auto &[recursive, dummy] : {std::pair{true, false}, {false, false}, {true, true}}) {
        SCOPED_TRACE(testing::Message() << "recursive " << recursive << ", dummy " << dummy);
        const zt_status_t again = recursive ? 0 : ZT_STATUS_DEVICE_BUSY;
        const zt_status_t busy = dummy ? 0 : ZT_STATUS_DEVICE_BUSY;
        zt_mutex_t m;
        std::fill_n(reinterpret_cast<unsigned char *>(&m), sizeof m, 0xFF);
        EXPECT_EQ(zt_mutex_init_ex(&m, recursive, dummy), 0);
        EXPECT_TRUE(m.initialized && m.dummy == dummy);
        EXPECT_EQ(zt_mutex_lock(&m), 0);
        EXPECT_EQ(zt_mutex_trylock(&m), again);
        EXPECT_EQ(again == 0 ? zt_mutex_unlock(&m) : 0, 0);
        EXPECT_EQ(elsewhere(zt_mutex_trylock, &m), busy);
        EXPECT_EQ(zt_mutex_unlock(&m), 0);
        EXPECT_EQ(elsewhere(zt_mutex_trylock, &m), 0);
        const zt_status_t not_held = dummy ? 0 : ZT_STATUS_NOT_PERMITTED;
        EXPECT_EQ(recursive ? zt_mutex_unlock(&m) : not_held, not_held);
        EXPECT_EQ(zt_mutex_destroy(&m), busy);
        EXPECT_FALSE(m.initialized || m.dummy);
        EXPECT_EQ(zt_mutex_destroy(&m), 0);
        g_no_type = true;
        EXPECT_EQ(zt_mutex_init(&m), ZT_STATUS_OUT_OF_MEMORY);
        g_no_type = m.initialized;
    }
    EXPECT_FALSE(g_no_type);
    EXPECT_EQ(g_attributes_destroyed, 4);
}

TEST(ClockAndIds, AreTheKernels) {
    timespec raw{};
    ASSERT_EQ(clock_gettime(CLOCK_MONOTONIC_RAW, &raw), 0);
    const auto before = static_cast<uint64_t>(raw.tv_sec * 1'000'000'000 + raw.tv_nsec);
    const uint64_t ns = zt_time_get_ns(), us = zt_time_get_us(), ms = zt_time_get_ms();
    const uint64_t after = zt_time_get_ns();
    EXPECT_TRUE(before <= ns && ns / 1'000 <= us && us / 1'000 <= ms && ms <= after / 1'000'000);
    EXPECT_EQ(zt_getpid(), getpid());
    std::thread([] { EXPECT_EQ(zt_gettid(), syscall(SYS_gettid)); }).join();
}

}  // namespace
