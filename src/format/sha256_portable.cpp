// The SHA-256 block function in plain C++.
// SPDX-License-Identifier: MIT
#include <bit>

#include "format/byte_order.hpp"
#include "format/sha256_kernels.hpp"

namespace zt::detail {

alignas(16) const uint32_t kSha256Roots[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2,
};

namespace {

constexpr uint32_t small_sigma(uint32_t x, int rotate1, int rotate2, int shift) {
    return std::rotr(x, rotate1) ^ std::rotr(x, rotate2) ^ x >> shift;
}

constexpr uint32_t big_sigma(uint32_t x, int rotate1, int rotate2, int rotate3) {
    return std::rotr(x, rotate1) ^ std::rotr(x, rotate2) ^ std::rotr(x, rotate3);
}

void transform(uint32_t state[8], const uint8_t *block) {
    uint32_t w[64];
    for (size_t t = 0; t < 16; ++t) w[t] = load32<std::endian::big>(block + 4 * t);
    for (uint32_t t = 16; t < 64; ++t) {
        w[t] = small_sigma(w[t - 2], 17, 19, 10) + w[t - 7] + small_sigma(w[t - 15], 7, 18, 3) +
               w[t - 16];
    }
    uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    uint32_t e = state[4], f = state[5], g = state[6], h = state[7];
    for (uint32_t t = 0; t < 64; ++t) {
        const uint32_t choice = (e & f) ^ (~e & g);
        const uint32_t majority = (a & b) ^ (a & c) ^ (b & c);
        const uint32_t t1 = h + big_sigma(e, 6, 11, 25) + choice + kSha256Roots[t] + w[t];
        const uint32_t t2 = big_sigma(a, 2, 13, 22) + majority;
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const uint32_t worked[8] = {a, b, c, d, e, f, g, h};
    for (uint32_t i = 0; i < 8; ++i) state[i] += worked[i];
}

}  // namespace

void sha256_portable(uint32_t state[8], const uint8_t *data, size_t blocks) {
    for (; blocks > 0; --blocks, data += 64) transform(state, data);
}

}  // namespace zt::detail
