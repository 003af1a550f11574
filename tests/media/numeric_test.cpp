// Sines and divisors against the C and C++ libraries', flash ranges in wider numbers.
// SPDX-License-Identifier: MIT
#include "zt/numeric.h"

#include <cmath>

#include "zt/flash.h"

#include "support/test.hpp"

TEST(Numeric, SinesOfAllAngles) {
    for (int angle = INT16_MIN; angle <= INT16_MAX; ++angle) {
        const auto degrees = static_cast<int16_t>(angle);
        const double sine = std::round(10000 * std::sin(angle * M_PI / 180));
        const double cosine = std::round(10000 * std::cos(angle * M_PI / 180));
        ASSERT_EQ(zt_sin_fixed(degrees), sine) << angle;
        ASSERT_EQ(zt_cos_fixed(degrees), cosine) << angle;
        ASSERT_EQ(zt_sin(degrees), static_cast<float>(sine / 10000)) << angle;
        ASSERT_EQ(zt_cos(degrees), static_cast<float>(cosine / 10000)) << angle;
        ASSERT_EQ(std::signbit(zt_sin(degrees)), sine < 0) << angle;
        ASSERT_EQ(std::signbit(zt_cos(degrees)), cosine < 0 || (angle + 36090) % 360 == 0) << angle;
    }
}

TEST(Numeric, GreatestCommonDivisor) {
    const int32_t rows[][3] = {{-4, 6, 2},  {4, -6, -2}, {-12, -18, -6},      {-5, 0, -5},
                               {0, -5, -5}, {0, 0, 0},   {INT32_MIN, -1, -1}, {-1, INT32_MIN, -1}};
    for (const auto &[a, b, divisor] : rows) EXPECT_EQ(zt_gcd(a, b), divisor) << a << " " << b;
    std::mt19937 random(3);
    for (int64_t i = 0, a, b; i < 100'000; ++i) {
        a = static_cast<int32_t>(random() >> random() % 32), b = static_cast<int32_t>(random());
        ASSERT_EQ(std::abs(int64_t{zt_gcd(a, b)}), std::gcd(a, b)) << a << " " << b;
    }
}

TEST(Flash, AccessesInWiderNumbers) {
    for (const uint64_t size : {uint64_t{8388608}, uint64_t{1} << 33})
        for (const uint32_t unit : {0u, 1u, 256u, 65536u})
            for (const uint32_t offset : {0u, 1u, 4096u, 65536u, 8323072u, 8388608u, 0xFFFF0000u})
                for (const uint32_t length : {0u, 1u, 65536u, 65537u, 8388608u, 0xFFFFFFFFu}) {
                    const bool aligned = unit == 0 ? offset == 0 : offset % unit == 0;
                    const bool want = aligned && length > 0 && offset + 1.0 * length <= 1.0 * size;
                    const zt_flash_range_t range = {offset, length};
                    const zt_flash_info_t infos[] = {{{}, size, unit, 0}, {{}, size, 0, unit}};
                    EXPECT_EQ(zt_flash_erase_is_valid(&infos[0], &range), want) << offset;
                    EXPECT_EQ(zt_flash_rw_is_valid(&infos[1], &range), want) << offset;
                }
}
