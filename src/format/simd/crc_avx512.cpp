// The CRC kernels on 64-byte vectors, four of them at a time.
// SPDX-License-Identifier: MIT
#include "format/crc_kernels.hpp"
#include "format/simd/crc_clmul.hpp"

#define ZT_AVX512_TARGET gnu::target("avx512f,avx512dq,avx512bw,avx512vl,vpclmulqdq,pclmul,sse4.1")
#define ZT_AVX512        [[ZT_AVX512_TARGET, gnu::always_inline]] inline

namespace zt::detail {
namespace {

constexpr size_t kVector = 64;
constexpr size_t kStride = 4 * kVector;

template <typename Crc>
ZT_AVX512 __m512i load64(const uint8_t *data) {
    const __m512i bytes = _mm512_loadu_si512(data);
    if (Crc::kReflected) return bytes;
    return _mm512_shuffle_epi8(bytes, _mm512_broadcast_i32x4(load16(kReverse)));
}

// Moves each part of x by a number of bits onto that of y.
template <typename Crc, uint32_t kBits>
ZT_AVX512 __m512i fold_onto(__m512i y, __m512i x) {
    const __m512i factor = _mm512_broadcast_i32x4(factors(Crc::fold(kBits)));
    const __m512i low = _mm512_clmulepi64_epi128(x, factor, 0x00);
    return _mm512_ternarylogic_epi64(y, low, _mm512_clmulepi64_epi128(x, factor, 0x11), 0x96);
}

// The vector's four parts, each moved onto the last.
template <typename Crc>
ZT_AVX512 __m128i fold_parts(__m512i x) {
    const __m128i x0 = fold(_mm512_castsi512_si128(x), factors(Crc::fold(384)));
    const __m128i x1 = fold(_mm512_extracti32x4_epi32(x, 1), factors(Crc::fold(256)));
    const __m128i x2 = fold(_mm512_extracti32x4_epi32(x, 2), factors(Crc::fold(128)));
    const __m128i x3 = _mm512_extracti32x4_epi32(x, 3);
    return _mm_xor_si128(_mm_xor_si128(x0, x1), _mm_xor_si128(x2, x3));
}

// As the 16-byte kernel does it; from 64 whole bytes on by wide vectors.
template <typename Crc>
ZT_AVX512 uint32_t remainder_of(uint32_t start, const uint8_t *data, size_t length) {
    const size_t head = length % 16;
    const __m128i first = fold_head<Crc>(from_halves(start, 0), data, head);
    data += head;
    length -= head;
    if (length < kVector) {
        return reduce<Crc>(fold_vectors<Crc>(first, data + 16, length / 16 - 1));
    }
    __m512i x = _mm512_inserti32x4(load64<Crc>(data), first, 0);
    if (length >= kStride) {
        __m512i x1 = load64<Crc>(data + 64);
        __m512i x2 = load64<Crc>(data + 128);
        __m512i x3 = load64<Crc>(data + 192);
        for (data += kStride, length -= kStride; length >= kStride;
             data += kStride, length -= kStride) {
            x = fold_onto<Crc, 8 * kStride>(load64<Crc>(data), x);
            x1 = fold_onto<Crc, 8 * kStride>(load64<Crc>(data + 64), x1);
            x2 = fold_onto<Crc, 8 * kStride>(load64<Crc>(data + 128), x2);
            x3 = fold_onto<Crc, 8 * kStride>(load64<Crc>(data + 192), x3);
        }
        x3 = fold_onto<Crc, 512>(x3, x2);
        x3 = fold_onto<Crc, 1024>(x3, x1);
        x = fold_onto<Crc, 1536>(x3, x);
    } else {
        data += kVector;
        length -= kVector;
    }
    for (; length >= kVector; data += kVector, length -= kVector) {
        x = fold_onto<Crc, 8 * kVector>(load64<Crc>(data), x);
    }
    return reduce<Crc>(fold_vectors<Crc>(fold_parts<Crc>(x), data, length / 16));
}

}  // namespace

[[ZT_AVX512_TARGET]] uint32_t crc32_avx512(uint32_t crc, const uint8_t *data, size_t length,
                                           uint32_t inversion) {
    if (length < 16) return crc32_portable(crc, data, length, inversion);
    return remainder_of<Crc32Constants>(crc ^ inversion, data, length) ^ inversion;
}

[[ZT_AVX512_TARGET]] uint16_t crc16_avx512(uint16_t crc, const uint8_t *data, size_t length) {
    if (length < 16) return crc16_portable(crc, data, length);
    const uint32_t start = __builtin_bswap16(crc);
    return static_cast<uint16_t>(remainder_of<Crc16Constants>(start, data, length) >> 16);
}

}  // namespace zt::detail
