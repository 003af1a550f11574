// CRCs by carry-less multiplication: the start, the steps and the end of a message in 16-byte
// vectors, in which the first byte of the message stands for the highest powers.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_SIMD_CRC_CLMUL_HPP
#define ZT_SRC_FORMAT_SIMD_CRC_CLMUL_HPP

#include <cstddef>
#include <cstdint>

#include "format/simd/crc_constants.hpp"
#include "format/simd/vector128.hpp"

namespace zt::detail {

// Indices for a shuffle: from kShift + n on it moves bytes up by 16 - n, from kShift + 16 + n on
// down by n, and fills with zeros.
inline constexpr int8_t kShift[48] = {
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,  //
    0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,  //
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
inline constexpr int8_t kReverse[16] = {15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};

ZT_CLMUL Vector128 factors(CrcFactors factor) { return from_halves(factor.low, factor.high); }

// Both halves times their factors.
ZT_CLMUL Vector128 fold(Vector128 x, Vector128 factor) {
    return exclusive_or(multiply_low(x, factor), multiply_high(x, factor));
}

// Moves x by a number of bits onto y.
template <typename Crc, uint32_t kBits>
ZT_CLMUL Vector128 fold_onto(Vector128 y, Vector128 x) {
    return exclusive_or(y, fold(x, factors(Crc::fold(kBits))));
}

// From the order of memory to that of the polynomial's powers.
template <typename Crc>
ZT_CLMUL Vector128 in_order(Vector128 bytes) {
    return Crc::kReflected ? bytes : shuffle(bytes, load16(kReverse));
}

// Takes the first `head` bytes, under 16, as the end of a vector that zeros begin, so that whole
// vectors are left: returns the first of those with head and register folded in. At least one whole
// vector must follow the head. `start` holds the register as the message's first bytes.
template <typename Crc>
ZT_CLMUL Vector128 fold_head(Vector128 start, const uint8_t *data, size_t head) {
    const Vector128 first = exclusive_or(load16(data), start);
    if (head == 0) return in_order<Crc>(first);
    // A head of under 4 bytes leaves a part of the register to the bytes that follow it.
    const Vector128 rest = shuffle(start, load16(kShift + 16 + head));
    return fold_onto<Crc, 128>(in_order<Crc>(exclusive_or(load16(data + head), rest)),
                               in_order<Crc>(shuffle(first, load16(kShift + head))));
}

template <typename Crc>
ZT_CLMUL Vector128 fold_vectors(Vector128 x, const uint8_t *data, size_t count) {
    for (; count > 0; --count, data += 16) {
        x = fold_onto<Crc, 128>(in_order<Crc>(load16(data)), x);
    }
    return x;
}

// The vector times x^32 modulo the polynomial: first below x^96, then by Barrett's method.
template <typename Crc>
ZT_CLMUL uint32_t reduce(Vector128 x) {
    const Vector128 factor = factors({Crc::factor(96), Crc::factor(96)});
    const Vector128 quotient = factors({Crc::kQuotient, 0});
    const Vector128 modulus = factors({Crc::kModulus, 0});
    if (Crc::kReflected) {
        const Vector128 y = exclusive_or(multiply_low(x, factor), shift_up<4>(shift_down<8>(x)));
        const Vector128 q = multiply_low(shift_down<4>(y), quotient);
        return word32<3>(y) ^ word32<2>(multiply_low(q, modulus));
    }
    const Vector128 y = exclusive_or(multiply_high(x, factor), shift_down<4>(shift_up<8>(x)));
    const Vector128 top = shift_down<4>(y);
    const Vector128 q = exclusive_or(shift_down<8>(multiply_low(top, quotient)), top);
    return word32<0>(exclusive_or(y, multiply_low(q, modulus)));
}

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_SIMD_CRC_CLMUL_HPP
