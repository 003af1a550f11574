// Worker threads: start, supervision, end.
// SPDX-License-Identifier: MIT
#include "zt/thread.h"

#include <semaphore.h>
#include <sys/resource.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <type_traits>

#include "base/list_ops.hpp"
#include "os/alt_stack.hpp"
#include "zt/ids.h"
#include "zt/memory.h"
#include "zt/string.h"

struct zt_thread_record_t {
    pthread_t handle;
    int32_t priority;
    zt_thread_func_t func;
    void *arg;
    char name[16];
    zt_watchdog_mgr_t *watchdog_mgr;
    zt_watchdog_t watchdog;
    bool ended;  // the thread has left, or is leaving, its watchdog manager for good
};

static_assert(std::is_standard_layout_v<zt_thread_record_t>);
static_assert(offsetof(zt_thread_record_t, handle) == 0);
static_assert(offsetof(zt_thread_record_t, priority) == 8);
static_assert(offsetof(zt_thread_record_t, func) == 16);
static_assert(offsetof(zt_thread_record_t, arg) == 24);
static_assert(offsetof(zt_thread_record_t, name) == 32);
static_assert(offsetof(zt_thread_record_t, watchdog_mgr) == 48);
static_assert(offsetof(zt_thread_record_t, watchdog) == 56);

namespace {

using zt::detail::alt_stack_install;
using zt::detail::alt_stack_remove;
using zt::detail::list_init;

constinit zt_thread_hook_t g_hook = nullptr;
constinit void *g_hook_context = nullptr;

// On the creator's stack: gone once started is posted.
struct Launch {
    zt_thread_t *thread;
    sem_t started;
};

// What a thread has to give back at its end.
struct Running {
    zt_thread_t record;
    void *alt_stack;
};

void set_priority(int32_t priority) {
    constexpr std::array kNice = {0, 19, 10, 0, -10, -20};
    const auto index = static_cast<uint32_t>(priority);
    const int nice = index < kNice.size() ? kNice[index] : 0;
    setpriority(PRIO_PROCESS, static_cast<id_t>(zt_gettid()), nice);
}

// The end of a thread and zt_thread_enable_watchdog on another one may meet. Each first says what
// it does (ended; manager) and then looks at what the other said, in one order that all threads
// agree upon: at least one of them sees the other and takes the entry out.
std::atomic_ref<zt_watchdog_mgr_t *> manager_of(zt_thread_t record) {
    return std::atomic_ref<zt_watchdog_mgr_t *>(record->watchdog_mgr);
}

std::atomic_ref<bool> ended(zt_thread_t record) { return std::atomic_ref<bool>(record->ended); }

// Runs on every way out: return, pthread_exit and cancellation.
void leave(void *argument) {
    const auto *running = static_cast<Running *>(argument);
    ended(running->record) = true;
    zt_watchdog_mgr_t *mgr = manager_of(running->record);
    if (mgr != nullptr) zt_watchdog_unregister(mgr, &running->record->watchdog);
    alt_stack_remove(running->alt_stack);
}

int32_t run_user_code(zt_thread_t *thread) {
    zt_thread_t record = *thread;
    if (g_hook != nullptr) g_hook(thread, record->arg, record->name, g_hook_context);
    return record->func != nullptr ? record->func(thread, record->arg) : 0;
}

// Everything that the creator waits for happens before started is posted: nobody else writes the
// record afterwards, so a thread may even be joined before its creator has come back.
void *start(void *argument) {
    auto *launch = static_cast<Launch *>(argument);
    zt_thread_t *const thread = launch->thread;
    Running running{*thread, nullptr};
    running.record->handle = pthread_self();
    const char *name = running.record->name;
    if (name[0] != '\0') pthread_setname_np(pthread_self(), name);
    sem_post(&launch->started);

    running.alt_stack = alt_stack_install();
    set_priority(running.record->priority);
    intptr_t result = 0;
    pthread_cleanup_push(leave, &running);
    result = run_user_code(thread);
    pthread_cleanup_pop(1);
    return std::bit_cast<void *>(result);
}

// No cancellation point: the new thread still needs the semaphore.
void wait_until_started(sem_t *started) {
    int state = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    while (sem_wait(started) != 0) {
        // interrupted by a signal
    }
    pthread_setcancelstate(state, nullptr);
}

int start_thread(zt_thread_t *thread) {
    Launch launch{thread, {}};
    sem_init(&launch.started, 0, 0);
    pthread_t handle{};
    const int error = pthread_create(&handle, nullptr, start, &launch);
    if (error == 0) wait_until_started(&launch.started);
    sem_destroy(&launch.started);
    return error;
}

}  // namespace

zt_status_t zt_thread_create_and_run(zt_thread_t *thread, int32_t priority, zt_thread_func_t func,
                                     void *arg, const char *name) {
    if (thread == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    auto *record = static_cast<zt_thread_t>(zt_zalloc(sizeof(zt_thread_record_t)));
    *thread = record;
    if (record == nullptr) return ZT_STATUS_OUT_OF_MEMORY;
    record->priority = priority;
    record->func = func;
    record->arg = arg;
    if (name != nullptr) zt_strncpy(record->name, name, sizeof record->name);
    list_init(&record->watchdog.link);
    record->watchdog.name = record->name;

    const int error = start_thread(thread);
    if (error == 0) return ZT_STATUS_SUCCESS;
    *thread = nullptr;
    zt_free(record);
    return zt_get_status_by_errno(error);
}

zt_status_t zt_thread_wait_and_destory(zt_thread_t *thread, int32_t *result) {
    if (thread == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    zt_thread_t record = *thread;
    if (record == nullptr || record->handle == 0) return ZT_STATUS_NOT_INITIALIZED;
    void *exit_value = nullptr;
    const int error = pthread_join(record->handle, &exit_value);
    if (error != 0) return zt_get_status_by_errno(error);

    if (result != nullptr) *result = static_cast<int32_t>(std::bit_cast<intptr_t>(exit_value));
    *thread = nullptr;
    zt_free(record);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_thread_set_global_hook(zt_thread_hook_t hook, void *context) {
    g_hook = hook;
    g_hook_context = context;
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_thread_enable_watchdog(zt_thread_t *thread, zt_watchdog_mgr_t *mgr,
                                      int32_t timeout_ms) {
    if (thread == nullptr || mgr == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    zt_thread_t record = *thread;
    if (record == nullptr) return ZT_STATUS_NOT_INITIALIZED;

    if (ended(record)) return ZT_STATUS_SUCCESS;
    zt_watchdog_t *entry = &record->watchdog;
    zt_watchdog_mgr_t *previous = manager_of(record).exchange(mgr);
    if (previous != nullptr) zt_watchdog_unregister(previous, entry);
    const zt_status_t status =
        zt_watchdog_register(mgr, entry, static_cast<uintptr_t>(zt_gettid()), timeout_ms);
    if (ended(record)) zt_watchdog_unregister(mgr, entry);
    return status;
}

void zt_thread_keep_alive(zt_thread_t *thread) {
    if (thread == nullptr || *thread == nullptr) return;
    zt_watchdog_keep_alive(&(*thread)->watchdog);
}

pthread_t zt_get_curr_pthread_id() { return pthread_self(); }

pthread_t zt_get_pthread_id(zt_thread_t thread) { return thread != nullptr ? thread->handle : 0; }
