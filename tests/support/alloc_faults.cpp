// SPDX-License-Identifier: MIT
#include "support/alloc_faults.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "zt/memory.h"

namespace {

std::atomic<uint64_t> g_countdown{0};  // 0: not armed
std::atomic<bool> g_from_then_on{false};
std::atomic<bool> g_failed{false};
std::atomic<int64_t> g_live{0};

bool fails_now() {
    uint64_t left = g_countdown.load();
    while (left > 1) {
        if (g_countdown.compare_exchange_weak(left, left - 1)) return false;
    }
    if (left == 0) return false;
    if (!g_from_then_on) g_countdown = 0;
    g_failed = true;
    return true;
}

void *counted(void *ptr) {
    if (ptr != nullptr) ++g_live;
    return ptr;
}

}  // namespace

void *zt_malloc(uint32_t size) { return fails_now() ? nullptr : counted(std::malloc(size)); }

void *zt_zalloc(uint32_t size) { return fails_now() ? nullptr : counted(std::calloc(1, size)); }

void zt_free(void *ptr) {
    if (ptr != nullptr) --g_live;
    std::free(ptr);
}

namespace alloc_faults {

void fail_at(uint64_t n, Mode mode) {
    g_failed = false;
    g_from_then_on = mode == Mode::kFromThenOn;
    g_countdown = n;
}

bool disarm() {
    g_countdown = 0;
    return g_failed;
}

int64_t live() { return g_live; }

uint64_t fail_each(void (*body)()) {
    uint64_t injected = 0;
    for (const Mode mode : {Mode::kOnce, Mode::kFromThenOn}) {
        for (uint64_t n = 1;; ++n) {
            SCOPED_TRACE(testing::Message() << "allocation " << n << " fails, from then on: "
                                            << (mode == Mode::kFromThenOn));
            const int64_t before = live();
            fail_at(n, mode);
            body();
            const bool failed = disarm();
            EXPECT_EQ(live(), before) << "leak";
            if (!failed) break;
            ++injected;
        }
    }
    return injected;
}

}  // namespace alloc_faults
