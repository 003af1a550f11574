// The code of one block: SHA-1's compression function without its final addition.
// SPDX-License-Identifier: MIT
#include <bit>

#include "format/byte_order.hpp"
#include "zt/sha.h"

using namespace zt::detail;

namespace {

// The round function and constant of a step.
uint32_t mix(uint32_t t, uint32_t b, uint32_t c, uint32_t d) {
    if (t < 20) return ((b & c) ^ (~b & d)) + 0x5A827999;
    if (t < 40) return (b ^ c ^ d) + 0x6ED9EBA1;
    if (t < 60) return ((b & c) ^ (b & d) ^ (c & d)) + 0x8F1BBCDC;
    return (b ^ c ^ d) + 0xCA62C1D6;
}

}  // namespace

void sha1_mac(const uint8_t block[64], uint8_t code[20]) {
    uint32_t w[80];
    for (size_t t = 0; t < 16; ++t) w[t] = load32<std::endian::big>(block + 4 * t);
    for (uint32_t t = 16; t < 80; ++t) {
        w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    }
    uint32_t a = 0x67452301, b = 0xEFCDAB89, c = 0x98BADCFE, d = 0x10325476, e = 0xC3D2E1F0;
    for (uint32_t t = 0; t < 80; ++t) {
        const uint32_t sum = std::rotl(a, 5) + mix(t, b, c, d) + e + w[t];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = sum;
    }
    const uint32_t worked[5] = {e, d, c, b, a};
    for (size_t i = 0; i < 5; ++i) store32<std::endian::little>(code + 4 * i, worked[i]);
}
