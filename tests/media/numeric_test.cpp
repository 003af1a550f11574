// Sines against the C library's, divisors against a search, flash ranges against their bytes.
// SPDX-License-Identifier: MIT
#include "zt/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>

#include "zt/flash.h"

namespace {

TEST(Numeric, SinesOfAllAngles) {
    for (int angle = INT16_MIN; angle <= INT16_MAX; ++angle) {
        const auto degrees = static_cast<int16_t>(angle);
        const double radians = angle * M_PI / 180;
        const auto sine = static_cast<int32_t>(std::lround(10000 * std::sin(radians)));
        const auto cosine = static_cast<int32_t>(std::lround(10000 * std::cos(radians)));
        ASSERT_EQ(zt_sin_fixed(degrees), sine) << angle;
        ASSERT_EQ(zt_cos_fixed(degrees), cosine) << angle;
        ASSERT_EQ(zt_sin(degrees), static_cast<float>(sine / 10000.0)) << angle;
        ASSERT_EQ(zt_cos(degrees), static_cast<float>(cosine / 10000.0)) << angle;
        // A zero is negative only where a quarter that is negative ends in it.
        ASSERT_EQ(std::signbit(zt_sin(degrees)), sine < 0) << angle;
        const bool at_270 = (angle % 360 + 360) % 360 == 270;
        ASSERT_EQ(std::signbit(zt_cos(degrees)), cosine < 0 || at_270) << angle;
    }
}

TEST(Numeric, GreatestCommonDivisor) {
    const struct {
        int32_t a, b, want;
    } rows[] = {
        {12, 18, 6},         {-4, 6, 2},
        {4, -6, -2},         {-12, -18, -6},
        {-5, 0, -5},         {0, -5, -5},
        {0, 0, 0},           {INT32_MIN, -1, -1},
        {-1, INT32_MIN, -1}, {INT32_MIN, INT32_MIN, INT32_MIN},
        {INT32_MIN, 6, -2},
    };
    for (const auto &row : rows) EXPECT_EQ(zt_gcd(row.a, row.b), row.want) << row.a << "," << row.b;
    std::mt19937 random(3);
    for (int i = 0; i < 100'000; ++i) {
        const auto a = static_cast<int32_t>(random() >> random() % 32);
        const auto b = static_cast<int32_t>(random() >> random() % 32);
        ASSERT_EQ(std::abs(int64_t{zt_gcd(a, b)}), std::gcd(int64_t{a}, int64_t{b}))
            << a << "," << b;
    }
}

TEST(Flash, RangesAsTheTableSays) {
    constexpr uint64_t kSize = 8388608;
    const struct {
        const char *name;
        uint64_t size;
        uint32_t erase_size, rw_size;
        zt_flash_range_t range;
        bool erase, rw;
    } rows[] = {
        {"a block's start", kSize, 65536, 256, {65536, 4096}, true, true},
        {"a page's start", kSize, 65536, 256, {4096, 1}, false, true},
        {"off the units", kSize, 65536, 256, {65537, 256}, false, false},
        {"empty", kSize, 65536, 256, {65536, 0}, false, false},
        {"the whole device", kSize, 65536, 256, {0, kSize}, true, true},
        {"longer than the device", kSize, 65536, 256, {0, kSize + 1}, false, false},
        {"up to the end", kSize, 65536, 256, {kSize - 65536, 65536}, true, true},
        {"past the end by a byte", kSize, 65536, 256, {kSize - 65536, 65537}, false, false},
        {"behind the end", kSize, 65536, 256, {kSize, 1}, false, false},
        {"a sum that wraps 32 bits", kSize, 65536, 256, {0xFFFF0000, 0x20000}, false, false},
        {"a device beyond 32 bits", 1ull << 33, 65536, 256, {0xFFFF0000, 0xFFFFFFFF}, true, true},
        {"no unit, offset 0", kSize, 0, 0, {0, 1}, true, true},
        {"no unit, no offset 0", kSize, 0, 0, {65536, 1}, false, false},
        {"units of one byte and of two", kSize, 1, 2, {3, 1}, true, false},
    };
    for (const auto &row : rows) {
        const zt_flash_info_t info = {{}, row.size, row.erase_size, row.rw_size};
        EXPECT_EQ(zt_flash_erase_is_valid(&info, &row.range), row.erase) << row.name;
        EXPECT_EQ(zt_flash_rw_is_valid(&info, &row.range), row.rw) << row.name;
    }
}

}  // namespace
