// Sines from a table of one quarter of the circle; Euclid's algorithm.
// SPDX-License-Identifier: MIT
#include "zt/numeric.h"

#include <array>
#include <cstddef>

namespace {

template <typename T>
using Quarter = std::array<T, 91>;  // the sines of 0 to 90 degrees

// In units of 1/10000.
constexpr Quarter<int32_t> kFixed = {
    0,     175,  349,  523,  698,  872,  1045, 1219, 1392, 1564,  //
    1736,  1908, 2079, 2250, 2419, 2588, 2756, 2924, 3090, 3256,  //
    3420,  3584, 3746, 3907, 4067, 4226, 4384, 4540, 4695, 4848,  //
    5000,  5150, 5299, 5446, 5592, 5736, 5878, 6018, 6157, 6293,  //
    6428,  6561, 6691, 6820, 6947, 7071, 7193, 7314, 7431, 7547,  //
    7660,  7771, 7880, 7986, 8090, 8192, 8290, 8387, 8480, 8572,  //
    8660,  8746, 8829, 8910, 8988, 9063, 9135, 9205, 9272, 9336,  //
    9397,  9455, 9511, 9563, 9613, 9659, 9703, 9744, 9781, 9816,  //
    9848,  9877, 9903, 9925, 9945, 9962, 9976, 9986, 9994, 9998,  //
    10000,
};

// Dividend and divisor are exact, so each quotient is rounded once.
constexpr Quarter<float> kFloat = [] {
    Quarter<float> table{};
    for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<float>(kFixed[i]) / 10000.0F;
    return table;
}();

// 0 to 359.
uint32_t on_circle(int16_t angle) {
    const int rest = angle % 360;
    return static_cast<uint32_t>(rest < 0 ? rest + 360 : rest);
}

// Written as selections, not as a way through four quadrants: angles come in any order.
template <typename T>
T sine(const Quarter<T> &table, int16_t angle) {
    const uint32_t r = on_circle(angle);
    const bool lower = r > 180;
    const uint32_t half = lower ? r - 180 : r;
    const T value = table[half > 90 ? 180 - half : half];
    return lower ? -value : value;
}

// Not the sine of r + 90: a floating zero is negative at 270 degrees and not at 90.
template <typename T>
T cosine(const Quarter<T> &table, int16_t angle) {
    const uint32_t r = on_circle(angle);
    const uint32_t half = r > 180 ? 360 - r : r;
    const T value = table[half > 90 ? half - 90 : 90 - half];
    return r > 90 && r <= 270 ? -value : value;
}

}  // namespace

int32_t zt_sin_fixed(int16_t angle) { return sine(kFixed, angle); }

int32_t zt_cos_fixed(int16_t angle) { return cosine(kFixed, angle); }

float zt_sin(int16_t angle) { return sine(kFloat, angle); }

float zt_cos(int16_t angle) { return cosine(kFloat, angle); }

int32_t zt_gcd(int32_t a, int32_t b) {
    while (b != 0) {
        // Nothing is left over by -1, and the processor must not be asked: the quotient of the
        // smallest number does not fit.
        const int32_t rest = b == -1 ? 0 : a % b;
        a = b;
        b = rest;
    }
    return a;
}
