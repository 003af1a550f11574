// Readings of the raw monotonic clock.
// SPDX-License-Identifier: MIT
#include "zt/time.h"

#include <ctime>

namespace {

// Cannot fail: the clock exists on every kernel and the pointer is valid.
timespec now() {
    timespec reading{};
    clock_gettime(CLOCK_MONOTONIC_RAW, &reading);
    return reading;
}

// The reading in units of which a second holds per_second.
uint64_t now_in(uint64_t per_second) {
    const timespec reading = now();
    const uint64_t ns_per_unit = 1'000'000'000 / per_second;
    return static_cast<uint64_t>(reading.tv_sec) * per_second +
           static_cast<uint64_t>(reading.tv_nsec) / ns_per_unit;
}

}  // namespace

uint64_t zt_time_get_ms() { return now_in(1'000); }

uint64_t zt_time_get_us() { return now_in(1'000'000); }

uint64_t zt_time_get_ns() { return now_in(1'000'000'000); }
