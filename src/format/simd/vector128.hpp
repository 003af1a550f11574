// The few operations on 16-byte vectors that the CRC kernels are written in, on both architectures.
// Halves are 64 bits; "low" and "up" mean a word's bits, as if the vector were one of 128.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_SIMD_VECTOR128_HPP
#define ZT_SRC_FORMAT_SIMD_VECTOR128_HPP

#include <cstdint>

#if defined(__x86_64__)

#include <immintrin.h>

#define ZT_CLMUL_TARGET gnu::target("pclmul,sse4.1")
#define ZT_CLMUL        [[ZT_CLMUL_TARGET, gnu::always_inline]] inline

namespace zt::detail {

using Vector128 = __m128i;

ZT_CLMUL Vector128 load16(const void *bytes) {
    return _mm_loadu_si128(static_cast<const __m128i *>(bytes));
}
ZT_CLMUL Vector128 from_halves(uint64_t low, uint64_t high) {
    return _mm_set_epi64x(static_cast<int64_t>(high), static_cast<int64_t>(low));
}
ZT_CLMUL Vector128 exclusive_or(Vector128 a, Vector128 b) { return _mm_xor_si128(a, b); }

// Carry-less products of the low halves and of the high halves.
ZT_CLMUL Vector128 multiply_low(Vector128 a, Vector128 b) {
    return _mm_clmulepi64_si128(a, b, 0x00);
}
ZT_CLMUL Vector128 multiply_high(Vector128 a, Vector128 b) {
    return _mm_clmulepi64_si128(a, b, 0x11);
}

// The bytes that the indices name; zero where an index is negative.
ZT_CLMUL Vector128 shuffle(Vector128 bytes, Vector128 indices) {
    return _mm_shuffle_epi8(bytes, indices);
}
template <int kBytes>
ZT_CLMUL Vector128 shift_up(Vector128 x) {
    return _mm_slli_si128(x, kBytes);
}
template <int kBytes>
ZT_CLMUL Vector128 shift_down(Vector128 x) {
    return _mm_srli_si128(x, kBytes);
}
template <int kIndex>
ZT_CLMUL uint32_t word32(Vector128 x) {
    return static_cast<uint32_t>(_mm_extract_epi32(x, kIndex));
}

}  // namespace zt::detail

#elif defined(__aarch64__)

#include <arm_neon.h>

#if defined(__clang__)
#define ZT_CLMUL_TARGET gnu::target("aes")
#else
#define ZT_CLMUL_TARGET gnu::target("+crypto")
#endif
#define ZT_CLMUL [[ZT_CLMUL_TARGET, gnu::always_inline]] inline

namespace zt::detail {

using Vector128 = uint8x16_t;

ZT_CLMUL Vector128 load16(const void *bytes) {
    return vld1q_u8(static_cast<const uint8_t *>(bytes));
}
ZT_CLMUL Vector128 from_halves(uint64_t low, uint64_t high) {
    return vreinterpretq_u8_u64(vcombine_u64(vcreate_u64(low), vcreate_u64(high)));
}
ZT_CLMUL Vector128 exclusive_or(Vector128 a, Vector128 b) { return veorq_u8(a, b); }

ZT_CLMUL Vector128 multiply_low(Vector128 a, Vector128 b) {
    return vreinterpretq_u8_p128(vmull_p64(vgetq_lane_p64(vreinterpretq_p64_u8(a), 0),
                                           vgetq_lane_p64(vreinterpretq_p64_u8(b), 0)));
}
ZT_CLMUL Vector128 multiply_high(Vector128 a, Vector128 b) {
    return vreinterpretq_u8_p128(vmull_high_p64(vreinterpretq_p64_u8(a), vreinterpretq_p64_u8(b)));
}

ZT_CLMUL Vector128 shuffle(Vector128 bytes, Vector128 indices) {
    return vqtbl1q_u8(bytes, indices);
}
template <int kBytes>
ZT_CLMUL Vector128 shift_up(Vector128 x) {
    return vextq_u8(vdupq_n_u8(0), x, 16 - kBytes);
}
template <int kBytes>
ZT_CLMUL Vector128 shift_down(Vector128 x) {
    return vextq_u8(x, vdupq_n_u8(0), kBytes);
}
template <int kIndex>
ZT_CLMUL uint32_t word32(Vector128 x) {
    return vgetq_lane_u32(vreinterpretq_u32_u8(x), kIndex);
}

}  // namespace zt::detail

#endif

#endif  // ZT_SRC_FORMAT_SIMD_VECTOR128_HPP
