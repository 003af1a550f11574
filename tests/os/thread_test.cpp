// SPDX-License-Identifier: MIT
#include "zt/thread.h"

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include "zt/ids.h"

#include "support/test.hpp"

thread_local int g_nice = 99;  // in place of the C library's, which may not do what is asked
int setpriority(__priority_which_t which, id_t who, int nice) noexcept {
    return g_nice = which == PRIO_PROCESS && zt_gettid() == who ? nice : 99, 0;
}

// A registration from outside waits until the thread that it is for, if there is one, has gone.
static std::atomic<int64_t> g_leaving{0};
static std::atomic<bool> g_late{false};
zt_status_t zt_watchdog_register(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry, uintptr_t user, int32_t ms) {
    static const auto enter = (decltype(&zt_watchdog_register))dlsym(RTLD_NEXT, "zt_watchdog_register");
    g_late = g_leaving != 0;
    while (g_late && syscall(SYS_tgkill, getpid(), g_leaving.load(), 0) == 0) sched_yield();
    return enter(mgr, entry, user, ms);
}

static zt_watchdog_mgr_t g_mgr = ZT_WATCHDOG_MGR_INIT(g_mgr, nullptr);
static zt_watchdog_mgr_t g_old = ZT_WATCHDOG_MGR_INIT(g_old, nullptr);
static bool is_empty(const zt_watchdog_mgr_t &mgr) { return mgr.clients.next == &mgr.clients; }

static stack_t g_stack;
static std::string g_seen;  // by the hook: the name it was given, the thread's, its nice value

static void look(zt_thread_t *thread, void *, const char *name, void *context) {
    EXPECT_TRUE(thread == context && zt_get_pthread_id(*thread) == zt_get_curr_pthread_id());
    char own[16] = "";
    pthread_getname_np(pthread_self(), own, sizeof own);
    g_seen = std::string(name) + "," + own + "," + std::to_string(g_nice);
}

// Enters one manager, moves to the other with two time-outs, and ends in one of four ways.
static int32_t be_watched(zt_thread_t *self, void *arg) {
    EXPECT_TRUE(sigaltstack(nullptr, &g_stack) == 0 && g_stack.ss_size >= 0x8000);
    for (auto [mgr, ms] : {std::pair(&g_old, 1), {&g_mgr, 1}, {&g_mgr, 600'000}})
        EXPECT_EQ(zt_thread_enable_watchdog(self, mgr, ms), 0);
    const auto *const entry = ZT_CONTAINER_OF(g_mgr.clients.next, zt_watchdog_t, link);
    EXPECT_TRUE(entry->next == &g_mgr.clients && g_seen.starts_with(entry->name));
    EXPECT_TRUE(entry->timeout_ms == 600'000 && entry->user == static_cast<uintptr_t>(zt_gettid()));
    const int32_t want = *static_cast<int32_t *>(arg);
    if (want == 7) pthread_exit(reinterpret_cast<void *>(0x5'0000'0007));
    if (want == -1) pthread_cancel(pthread_self()), pthread_testcancel();
    if (want == ZT_STATUS_UNKNOWN_ERROR && !kThreadSanitizer) return zt_thread_wait_and_destory(self, nullptr);
    return want;
}

// The hook and the thread find what was asked for; however the thread ends, nothing of it stays.
TEST(Thread, StartsAsAskedAndEndsClean) {
    pthread_setname_np(pthread_self(), "thread_test");  // also in an emulator
    for (auto *mgr : {&g_mgr, &g_old}) EXPECT_EQ(zt_watchdog_mgr_create(mgr, nullptr), 0);
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit no_files{0, files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &no_files);  // naming needs no descriptor
    const std::string nices[] = {"0", "0", "19", "10", "0", "-10", "-20", "0"};
    int32_t wants[] = {INT32_MIN, 7, -1, ZT_STATUS_UNKNOWN_ERROR};
    for (int32_t i = -1; i < 7; ++i) {
        const char *name = i % 2 == 0 ? nullptr : "a_name_of_20_letters";
        zt_thread_t thread = nullptr;
        zt_thread_set_global_hook(look, &thread);
        EXPECT_EQ(zt_thread_create_and_run(&thread, i, be_watched, &wants[i & 3], name), 0);
        int32_t result = 0;
        EXPECT_EQ(zt_thread_wait_and_destory(&thread, &result), 0);
        EXPECT_EQ(zt_thread_wait_and_destory(&thread, &result), ZT_STATUS_NOT_INITIALIZED);
        EXPECT_EQ(result, wants[i & 3]);
        EXPECT_EQ(g_seen, (name ? "a_name_of_20_le,a_name_of_20_le," : ",thread_test,") + nices[i + 1]);
        EXPECT_TRUE(is_empty(g_mgr) && is_empty(g_old));
        EXPECT_TRUE(kThreadSanitizer || msync(g_stack.ss_sp, 1, MS_ASYNC) != 0) << "the signal stack is left";
    }
    EXPECT_EQ(zt_thread_set_global_hook(nullptr, nullptr) + setrlimit(RLIMIT_NOFILE, &files), 0);
}

// One thread is joined by another, perhaps before its creation has returned. That one keeps alive
// and ends while its creator enables the watchdog and checks.
TEST(Thread, MayEndAndBeJoinedAtAnyTime) {
    static std::atomic<zt_thread_t *> ending{nullptr};
    const auto report = [](zt_thread_t *self, void *) { return ending = self, 0; };
    const auto reap = [](zt_thread_t *self, void *) {
        while (ending == nullptr) zt_thread_keep_alive(self);
        return zt_thread_wait_and_destory(ending.exchange(nullptr), nullptr);
    };
    for (int i = 0; i < 800; ++i) {
        zt_thread_t reaped = nullptr, reaper = nullptr;
        EXPECT_EQ(zt_thread_create_and_run(&reaper, 3, reap, nullptr, nullptr), 0);
        EXPECT_EQ(zt_thread_create_and_run(&reaped, 3, report, nullptr, "reaped"), 0);
        EXPECT_EQ(zt_thread_enable_watchdog(&reaper, &g_mgr, 600'000), 0);
        zt_watchdog_mgr_check(&g_mgr);
        EXPECT_EQ(zt_thread_wait_and_destory(&reaper, nullptr), 0);
        EXPECT_TRUE(is_empty(g_mgr));
    }
}

// A thread that ends while, or before, somebody enables its watchdog is in no manager's list.
TEST(Thread, ALateWatchdogLeavesNoEntry) {
    zt_thread_t thread = nullptr;
    const auto linger = [](zt_thread_t *, void *) {
        for (g_leaving = zt_gettid(); !g_late;) sched_yield();
        return 0;
    };
    ASSERT_EQ(zt_thread_create_and_run(&thread, 3, linger, nullptr, nullptr), 0);
    while (g_leaving == 0) sched_yield();
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(zt_thread_enable_watchdog(&thread, &g_mgr, 9) == 0 && is_empty(g_mgr));
    EXPECT_EQ(zt_thread_wait_and_destory(&thread, nullptr), 0);
}
