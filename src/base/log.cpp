// The plain logger: one threshold, standard output or the system log.
// SPDX-License-Identifier: MIT
#include "zt/log.h"

#include <syslog.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace {

constinit std::atomic<uint32_t> g_threshold{0};

}  // namespace

void zt_log(int to_syslog, uint32_t level, const char *format, ...) {
    // Filtered messages cost one load.
    if (level > g_threshold.load(std::memory_order_relaxed)) return;
    va_list arguments;
    va_start(arguments, format);
    if (to_syslog != 0) {
        vsyslog(LOG_USER | LOG_INFO, format, arguments);
    } else {
        std::vfprintf(stdout, format, arguments);
        std::fflush(stdout);
    }
    va_end(arguments);
}

void zt_log_set_level(uint32_t threshold) {
    g_threshold.store(threshold, std::memory_order_relaxed);
}
