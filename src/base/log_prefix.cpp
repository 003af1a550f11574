// What stands in front of a category's message: time, thread id, and the switches for them.
// SPDX-License-Identifier: MIT
#include <sys/time.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <ctime>

#include "zt/ids.h"
#include "zt/log.h"

// The macros of the public header read it as a plain object.
constinit bool zt__g_logc_enable_category = false;

namespace {

constinit std::atomic<bool> g_time_enabled{false};
constinit std::atomic<bool> g_tid_enabled{false};

// The length of what was written: 0 for a date that no calendar holds.
size_t print_local_time(char *buffer, size_t size) {
    timeval now{};
    gettimeofday(&now, nullptr);
    // Only localtime, which is not for threads, promises to notice a new time zone by itself.
    tzset();
    tm local{};
    if (localtime_r(&now.tv_sec, &local) == nullptr) return 0;
    const int length =
        std::snprintf(buffer, size, "%04d-%02d-%02d %02d:%02d:%02d:%03d ", local.tm_year + 1900,
                      local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                      static_cast<int>(now.tv_usec / 1000));
    return length < 0 ? 0 : static_cast<size_t>(length);
}

}  // namespace

void zt_logc_enable_prefix_time(bool enable) {
    g_time_enabled.store(enable, std::memory_order_relaxed);
}

void zt_logc_enable_prefix_tid(bool enable) {
    g_tid_enabled.store(enable, std::memory_order_relaxed);
}

void zt_logc_enable_prefix_category(bool enable) {
    std::atomic_ref(zt__g_logc_enable_category).store(enable, std::memory_order_relaxed);
}

void zt_log_prepare_time_and_tid(char *buffer) {
    // The message's arguments are evaluated after this: strerror(errno) must mean what it says.
    const int saved_errno = errno;
    size_t length = 0;
    buffer[0] = '\0';
    if (g_time_enabled.load(std::memory_order_relaxed)) {
        length = print_local_time(buffer, ZT_LOG_PREFIX_SIZE);
    }
    if (g_tid_enabled.load(std::memory_order_relaxed)) {
        std::snprintf(buffer + length, ZT_LOG_PREFIX_SIZE - length, "(tid:%ld) ",
                      static_cast<long>(zt_gettid()));
    }
    errno = saved_errno;
}
