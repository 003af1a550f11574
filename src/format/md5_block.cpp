// The 64 steps of MD5.
// SPDX-License-Identifier: MIT
#include "format/md5_block.hpp"

#include <bit>

#include "format/byte_order.hpp"

namespace zt::detail {
namespace {

// The integer part of 2^32 times |sin(i + 1)|.
constexpr uint32_t kSines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};
constexpr int kRotations[4][4] = {
    {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// The word of the block that a step takes.
constexpr size_t word_index(uint32_t step) {
    constexpr uint32_t kFactor[4] = {1, 5, 3, 7};
    constexpr uint32_t kOffset[4] = {0, 1, 5, 0};
    return (kFactor[step / 16] * step + kOffset[step / 16]) % 16;
}

// Has the compiler add up what there is before it adds what comes last.
[[gnu::always_inline]] inline void sum_up(uint32_t &sum) { __asm__("" : "+r"(sum)); }

// One step of the four rounds. The newest value, b, arrives last: each sum is arranged so that few
// operations wait for it.
template <uint32_t kStep>
[[gnu::always_inline]] inline void step(uint32_t &a, uint32_t b, uint32_t c, uint32_t d,
                                        const uint8_t *block) {
    a += kSines[kStep] + load32<std::endian::little>(block + 4 * word_index(kStep));
    if constexpr (kStep >= 16 && kStep < 32) a += c & ~d;
    sum_up(a);
    if constexpr (kStep < 16) {
        a += d ^ (b & (c ^ d));
    } else if constexpr (kStep < 32) {
        a += b & d;  // apart from c & ~d in every bit
    } else if constexpr (kStep < 48) {
        a += b ^ (c ^ d);
    } else {
        a += c ^ (b | ~d);
    }
    a = b + std::rotl(a, kRotations[kStep / 16][kStep % 4]);
}

template <uint32_t kStep>
[[gnu::always_inline]] inline void four_steps(uint32_t &a, uint32_t &b, uint32_t &c, uint32_t &d,
                                              const uint8_t *block) {
    step<kStep>(a, b, c, d, block);
    step<kStep + 1>(d, a, b, c, block);
    step<kStep + 2>(c, d, a, b, block);
    step<kStep + 3>(b, c, d, a, block);
}

template <uint32_t kStep>
[[gnu::always_inline]] inline void sixteen_steps(uint32_t &a, uint32_t &b, uint32_t &c, uint32_t &d,
                                                 const uint8_t *block) {
    four_steps<kStep>(a, b, c, d, block);
    four_steps<kStep + 4>(a, b, c, d, block);
    four_steps<kStep + 8>(a, b, c, d, block);
    four_steps<kStep + 12>(a, b, c, d, block);
}

}  // namespace

void md5_blocks(uint32_t state[4], const uint8_t *data, size_t blocks) {
    uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    for (; blocks > 0; --blocks, data += 64) {
        const uint32_t a0 = a, b0 = b, c0 = c, d0 = d;
        sixteen_steps<0>(a, b, c, d, data);
        sixteen_steps<16>(a, b, c, d, data);
        sixteen_steps<32>(a, b, c, d, data);
        sixteen_steps<48>(a, b, c, d, data);
        a += a0;
        b += b0;
        c += c0;
        d += d0;
    }
    state[0] = a;
    state[1] = b;
    state[2] = c;
    state[3] = d;
}

}  // namespace zt::detail
