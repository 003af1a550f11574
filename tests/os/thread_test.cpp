// SPDX-License-Identifier: MIT
#include "zt/thread.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <latch>
#include <thread>

#include "support/alloc_faults.hpp"
#include "zt/ids.h"

namespace {

std::string name_of(pthread_t thread) {
    char name[16] = "";
    return pthread_getname_np(thread, name, sizeof name) == 0 ? name : "unreadable";
}

// What the hook saw: its name argument, the thread's name and nice value, and whether the handle at
// the right address is its own.
std::string g_seen;
void look(zt_thread_t *thread, void *, const char *name, void *context) {
    const int nice = getpriority(PRIO_PROCESS, static_cast<id_t>(zt_gettid()));
    g_seen =
        std::string(name) + ", " + name_of(pthread_self()) + ", " + std::to_string(nice) +
        (thread == context && zt_get_pthread_id(*thread) == zt_get_curr_pthread_id() ? " own" : "");
}

TEST(Thread, StartsNamedWithItsPriorityAfterTheHook) {
    bool may_raise = false;
    std::thread([&] { may_raise = setpriority(PRIO_PROCESS, gettid(), -20) == 0; }).join();
    rlimit descriptors{};
    getrlimit(RLIMIT_NOFILE, &descriptors);
    const rlimit none{0, descriptors.rlim_max};
    for (const int32_t priority : {0, 1, 2, 3, 4, 5, 6, INT32_MIN}) {
        zt_thread_t thread = nullptr;
        std::latch may_end{1};  // a thread that has ended has no name to read
        const auto body = [](zt_thread_t *self, void *latch) {
            static_cast<std::latch *>(latch)->wait();
            return zt_get_pthread_id(*self) == pthread_self() ? INT32_MIN + 42 : 0;
        };
        const char *name = priority % 2 == 0 ? nullptr : "a_name_of_20_letters";
        zt_thread_set_global_hook(look, &thread);
        setrlimit(RLIMIT_NOFILE, &none);  // naming needs no descriptor
        EXPECT_EQ(zt_thread_create_and_run(&thread, priority, body, &may_end, name), 0);
        setrlimit(RLIMIT_NOFILE, &descriptors);
        const std::string want = name != nullptr ? "a_name_of_20_le" : name_of(pthread_self());
        EXPECT_EQ(name_of(zt_get_pthread_id(thread)), want);
        may_end.count_down();
        int32_t result = 0;
        EXPECT_EQ(zt_thread_wait_and_destory(&thread, &result), 0);
        EXPECT_EQ(result, INT32_MIN + 42);
        EXPECT_EQ(zt_thread_wait_and_destory(&thread, &result), ZT_STATUS_NOT_INITIALIZED);
        const int nice =
            priority < 1 || priority > 5 ? 0 : std::array{19, 10, 0, -10, -20}[priority - 1];
        EXPECT_EQ(g_seen, (name ? want : "") + ", " + want + ", " +
                              std::to_string(may_raise ? nice : std::max(nice, 0)) + " own");
    }
    zt_thread_set_global_hook(nullptr, nullptr);
}

struct Watched : testing::Test {
    zt_watchdog_mgr_t mgr = ZT_WATCHDOG_MGR_INIT(mgr, nullptr),
                      other = ZT_WATCHDOG_MGR_INIT(other, nullptr);
    void *signal_stack = nullptr;
    int32_t (*end)(zt_thread_t *) = nullptr;
    Watched() {
        EXPECT_EQ(zt_watchdog_mgr_create(&mgr, nullptr) + zt_watchdog_mgr_create(&other, nullptr),
                  0);
    }
    bool has_no_clients() const { return mgr.clients.next == &mgr.clients; }
};

// Enters one manager, moves to the other with two time-outs, and ends.
int32_t be_watched(zt_thread_t *self, void *arg) {
    auto *const test = static_cast<Watched *>(arg);
    stack_t stack{};
    EXPECT_TRUE(sigaltstack(nullptr, &stack) == 0 && stack.ss_size >= 0x8000);
    test->signal_stack = stack.ss_sp;
    EXPECT_EQ(zt_thread_enable_watchdog(self, &test->other, 1000), 0);
    EXPECT_EQ(zt_thread_enable_watchdog(self, &test->mgr, 1000), 0);
    EXPECT_EQ(zt_thread_enable_watchdog(self, &test->mgr, 600'000), 0);
    EXPECT_EQ(test->other.clients.next, &test->other.clients);
    auto *const entry = ZT_CONTAINER_OF(test->mgr.clients.next, zt_watchdog_t, link);
    EXPECT_EQ(entry->link.next, &test->mgr.clients);
    EXPECT_STREQ(entry->name, "watched");
    EXPECT_TRUE(entry->timeout_ms == 600'000 && entry->user == static_cast<uintptr_t>(zt_gettid()));
    return test->end(self);
}

TEST_F(Watched, LeavesItsManagerHoweverItEnds) {
    const struct {
        int32_t want;
        int32_t (*end)(zt_thread_t *);
    } endings[] = {
        {42, [](zt_thread_t *) { return 42; }},
        {7,
         [](zt_thread_t *) -> int32_t { pthread_exit(reinterpret_cast<void *>(0x5'0000'0007)); }},
        {-1, [](zt_thread_t *) { return pthread_cancel(pthread_self()), pthread_testcancel(), 0; }},
        {ZT_STATUS_UNKNOWN_ERROR,
         [](zt_thread_t *self) { return zt_thread_wait_and_destory(self, nullptr); }},
    };
    for (const auto &row : endings) {
        SCOPED_TRACE(row.want);
        zt_thread_t thread = nullptr;
        int32_t result = 0;
        end = row.end;
        EXPECT_EQ(zt_thread_create_and_run(&thread, 3, be_watched, this, "watched"), 0);
        EXPECT_EQ(zt_thread_wait_and_destory(&thread, &result), 0);
        EXPECT_EQ(result, row.want);
        EXPECT_TRUE(has_no_clients());
        unsigned char in_core = 0;
        EXPECT_NE(mincore(signal_stack, 1, &in_core), 0) << "the signal stack is still there";
    }
}

// One thread keeps alive and ends while its creator enables the watchdog and checks. Another is
// joined by a reaper, perhaps before its creation has returned.
TEST_F(Watched, MayEndAndBeJoinedAtAnyTime) {
    std::atomic<zt_thread_t *> ending{nullptr};
    std::atomic<int> joined{0};
    const auto report = [](zt_thread_t *self, void *to) {
        static_cast<std::atomic<zt_thread_t *> *>(to)->store(self);
        return static_cast<std::atomic<zt_thread_t *> *>(to)->notify_one(), 0;
    };
    const auto keep_alive = [](zt_thread_t *self, void *) {
        for (int n = 0; n < 200; ++n) zt_thread_keep_alive(self);
        return 0;
    };
    std::thread reaper([&] {
        for (; joined < 400; ++joined) {
            ending.wait(nullptr);
            EXPECT_EQ(zt_thread_wait_and_destory(ending.exchange(nullptr), nullptr), 0);
        }
    });
    for (int i = 0; i < 400; ++i) {
        zt_thread_t reaped = nullptr, alive = nullptr;
        EXPECT_EQ(zt_thread_create_and_run(&reaped, 3, report, &ending, "reaped"), 0);
        EXPECT_EQ(zt_thread_create_and_run(&alive, 3, keep_alive, nullptr, nullptr), 0);
        while (i % 2 == 0 && joined == i) std::this_thread::yield();
        EXPECT_EQ(zt_thread_enable_watchdog(&alive, &mgr, 600'000), 0);
        zt_watchdog_mgr_check(&mgr);
        EXPECT_EQ(zt_thread_wait_and_destory(&alive, nullptr), 0);
        EXPECT_TRUE(has_no_clients());
        while (joined == i) std::this_thread::yield();
    }
    reaper.join();
}

void create() {
    zt_thread_t thread = nullptr;
    const zt_status_t status = zt_thread_create_and_run(&thread, 3, nullptr, nullptr, "x");
    EXPECT_EQ(thread != nullptr, status == ZT_STATUS_SUCCESS);
    zt_thread_wait_and_destory(&thread, nullptr);
}

TEST(Thread, FailuresLeaveNothingBehind) {
    EXPECT_EQ(alloc_faults::fail_each(create), 2U);
    pthread_attr_t attributes;
    pthread_getattr_default_np(&attributes);
    pthread_attr_setstacksize(&attributes, size_t{1} << 50);
    pthread_setattr_default_np(&attributes);  // no thread can be created any more
    EXPECT_EQ(alloc_faults::fail_each(create), 2U);
    uint64_t never_started[32] = {};
    auto thread = reinterpret_cast<zt_thread_t>(never_started);
    EXPECT_EQ(zt_thread_wait_and_destory(&thread, nullptr), ZT_STATUS_NOT_INITIALIZED);
    EXPECT_EQ(zt_thread_create_and_run(&thread, 3, nullptr, nullptr, ""), ZT_STATUS_TRY_AGAIN);
    pthread_attr_setstacksize(&attributes, size_t{1} << 23);
    pthread_setattr_default_np(&attributes);
}

}  // namespace
