// SPDX-License-Identifier: MIT
#include "support/alloc_faults.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "zt/memory.h"

namespace {

std::atomic<int64_t> g_countdown{INT64_MAX};  // the allocation that brings it from 1 to 0 fails
std::atomic<bool> g_from_then_on{false};
std::atomic<int64_t> g_live{0};

bool fails_now() {
    const int64_t left = g_countdown.fetch_sub(1);
    return g_from_then_on ? left <= 1 : left == 1;
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
    g_from_then_on = mode == Mode::kFromThenOn;
    g_countdown = n > 0 ? static_cast<int64_t>(n) : INT64_MAX;
}

bool disarm() { return g_countdown.exchange(INT64_MAX) < 1; }

int64_t live() { return g_live; }

uint64_t fail_each(void (*body)()) {
    uint64_t injected = 0;
    for (const Mode mode : {Mode::kOnce, Mode::kFromThenOn}) {
        for (uint64_t n = 1;; ++n) {
            SCOPED_TRACE(testing::Message() << "allocation " << n << ", mode " << int(mode));
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
