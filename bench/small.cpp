// What must cost next to nothing: a log call that is off, and a sine.
#include <atomic>
#include <cmath>
#include <cstdio>

#include "support.hpp"
#include "zt/log.h"
#include "zt/numeric.h"

ZT_LOGGING_CATEGORY_DEFINE(bench_off, ZT_LOG_LEVEL_INFO);

namespace bench {
namespace {

constexpr int kCalls = 1000;
constexpr int16_t kAngles = 360;
std::atomic<int32_t> g_level{2};

}  // namespace

void add_small() {
    add("log_off/1000/zt", kCalls, [] {
        for (int i = 0; i < kCalls; ++i) ZT_LOG_DEBUG(bench_off, "value %d", i);
    });
    add("log_off/1000/floor", kCalls, [] {
        for (int i = 0; i < kCalls; ++i) {
            if (g_level.load(std::memory_order_relaxed) >= 3) std::printf("value %d\n", i);
        }
    });
    // The results are not added up: the sum's way through memory from call to call would be the time.
    add("sine/360/zt", kAngles, [] {
        for (int16_t angle = 0; angle < kAngles; ++angle) {
            benchmark::DoNotOptimize(zt_sin(angle));
        }
    });
    add("sine/360/sinf", kAngles, [] {
        constexpr float kRadian = 3.14159265F / 180;
        for (int16_t angle = 0; angle < kAngles; ++angle) {
            benchmark::DoNotOptimize(std::sin(static_cast<float>(angle) * kRadian));
        }
    });
}

}  // namespace bench
