// The constants of CRCs by carry-less multiplication, derived from the polynomials at compile time.
// The technique: V. Gopal et al., "Fast CRC Computation for Generic Polynomials Using PCLMULQDQ
// Instruction", Intel, 2009. What is multiplied by x^n mod P moves n bits towards the message's
// start; the end reduces modulo P by Barrett's method.
//
// A message is a polynomial, its first bit the highest power. The CRC-32s take each byte's lowest
// bit first ("reflected"), so that a word holds its powers in reverse and a product of two reflected
// words comes out one place too low: their constants are x^(n - 1).
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_SIMD_CRC_CONSTANTS_HPP
#define ZT_SRC_FORMAT_SIMD_CRC_CONSTANTS_HPP

#include <cstdint>

namespace zt::detail {

// x^power modulo x^32 + the polynomial's lower part.
constexpr uint32_t power_modulo(uint32_t power, uint32_t polynomial) {
    uint32_t remainder = 1;
    for (; power > 0; --power) {
        remainder = remainder << 1 ^ ((remainder >> 31) != 0 ? polynomial : 0);
    }
    return remainder;
}

// The lower 64 coefficients of x^power divided by x^32 + the polynomial's lower part.
constexpr uint64_t power_quotient(uint32_t power, uint32_t polynomial) {
    uint64_t quotient = 0;
    uint32_t remainder = 0;
    for (uint32_t bit = 0; bit <= power; ++bit) {
        const bool carry = (remainder >> 31) != 0;
        remainder = (remainder << 1 | (bit == 0 ? 1 : 0)) ^ (carry ? polynomial : 0);
        quotient = quotient << 1 | (carry ? 1 : 0);
    }
    return quotient;
}

constexpr uint64_t reverse_bits(uint64_t word) {
    uint64_t reversed = 0;
    for (int bit = 0; bit < 64; ++bit) reversed |= (word >> bit & 1) << (63 - bit);
    return reversed;
}

// The two 64-bit factors for the halves of a 16-byte vector.
struct CrcFactors {
    uint64_t low, high;
};

// CRC-32: polynomial 0x04C11DB7, reflected. The low half comes first in the message.
struct Crc32Constants {
    static constexpr bool kReflected = true;
    static constexpr uint32_t kPolynomial = 0x04C11DB7;

    static consteval uint64_t factor(uint32_t power) {
        return reverse_bits(power_modulo(power - 1, kPolynomial));
    }
    // To move a vector by this many bits.
    static consteval CrcFactors fold(uint32_t bits) { return {factor(bits + 64), factor(bits)}; }
    static constexpr uint64_t kQuotient = reverse_bits(power_quotient(95, kPolynomial));
    static constexpr uint64_t kModulus = reverse_bits(kPolynomial) >> 31 | 1;
};
static_assert(Crc32Constants::kModulus == 0x1DB710641);

// CRC-16/CCITT: polynomial 0x1021, run in the upper half of a 32-bit register, which multiplies
// the polynomial by x^16 and leaves the remainder in the upper half. The high half comes first.
struct Crc16Constants {
    static constexpr bool kReflected = false;
    static constexpr uint32_t kPolynomial = 0x10210000;

    static consteval uint64_t factor(uint32_t power) { return power_modulo(power, kPolynomial); }
    static consteval CrcFactors fold(uint32_t bits) { return {factor(bits), factor(bits + 64)}; }
    static constexpr uint64_t kQuotient = power_quotient(96, kPolynomial);  // and x^64
    static constexpr uint64_t kModulus = kPolynomial;
};

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_SIMD_CRC_CONSTANTS_HPP
