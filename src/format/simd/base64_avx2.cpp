// Base64 by the byte shuffles of AVX2: 24 bytes to or from 32 characters a step.
// The technique: W. Mula, D. Lemire, "Faster Base64 Encoding and Decoding Using AVX2 Instructions",
// ACM Transactions on the Web, 2018.
// SPDX-License-Identifier: MIT
#include <immintrin.h>

#include "format/base64_kernels.hpp"

#define ZT_AVX2_TARGET gnu::target("avx2")
#define ZT_AVX2        [[ZT_AVX2_TARGET, gnu::always_inline]] inline

namespace zt::detail {
namespace {

constexpr size_t kVector = 32;
constexpr size_t kGroups = kVector / 4;  // of characters, in a vector

// The same 16 bytes in both halves, which shuffles treat alike.
ZT_AVX2 __m256i both(const char (&bytes)[17]) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)));
}

ZT_AVX2 __m256i load32(const void *bytes) {
    return _mm256_loadu_si256(static_cast<const __m256i *>(bytes));
}

// The characters of twelve bytes at the start of each half.
ZT_AVX2 __m256i characters_of(__m256i bytes) {
    // Bytes 1 0 2 1 of each group, so that multiplications can shift the four values into place.
    const __m256i spread = _mm256_shuffle_epi8(
        bytes, both("\x01\x00\x02\x01\x04\x03\x05\x04\x07\x06\x08\x07\x0a\x09\x0b\x0a"));
    const __m256i odd = _mm256_mulhi_epu16(_mm256_and_si256(spread, _mm256_set1_epi32(0x0fc0fc00)),
                                           _mm256_set1_epi32(0x04000040));
    const __m256i even = _mm256_mullo_epi16(_mm256_and_si256(spread, _mm256_set1_epi32(0x003f03f0)),
                                            _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(odd, even);
    // The class of a value: 13 for capitals, 0 small letters, 1 to 10 digits, 11 and 12 the signs.
    // The table holds what takes a class to its characters.
    const __m256i capitals = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
    const __m256i classes = _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                            _mm256_and_si256(capitals, _mm256_set1_epi8(13)));
    const __m256i offsets = _mm256_shuffle_epi8(
        both("\x47\xfc\xfc\xfc\xfc\xfc\xfc\xfc\xfc\xfc\xfc\xed\xf0\x41\x00\x00"), classes);
    return _mm256_add_epi8(values, offsets);
}

// Replaces characters by their values; false when one of them is not in the alphabet.
ZT_AVX2 bool values_of(__m256i *text) {
    const __m256i mask = _mm256_set1_epi8(0x2f);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(*text, 4), mask);
    const __m256i low = _mm256_and_si256(*text, mask);
    // Each bit is a set of characters; where both nibbles name the same, the character is none.
    const __m256i high_sets = _mm256_shuffle_epi8(
        both("\x10\x10\x01\x02\x04\x08\x04\x08\x10\x10\x10\x10\x10\x10\x10\x10"), high);
    const __m256i low_sets = _mm256_shuffle_epi8(
        both("\x15\x11\x11\x11\x11\x11\x11\x11\x11\x11\x13\x1a\x1b\x1b\x1b\x1a"), low);
    const __m256i slashes = _mm256_cmpeq_epi8(*text, mask);
    const __m256i offsets = _mm256_shuffle_epi8(
        both("\x00\x10\x13\x04\xbf\xbf\xb9\xb9\x00\x00\x00\x00\x00\x00\x00\x00"),
        _mm256_add_epi8(slashes, high));
    *text = _mm256_add_epi8(*text, offsets);
    return _mm256_testz_si256(high_sets, low_sets) != 0;
}

// The bytes that values stand for, in the lower 24 bytes.
ZT_AVX2 __m256i pack(__m256i values) {
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i words = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i bytes = _mm256_shuffle_epi8(
        words, both("\x02\x01\x00\x06\x05\x04\x0a\x09\x08\x0e\x0d\x0c\x80\x80\x80\x80"));
    return _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
}

}  // namespace

[[ZT_AVX2_TARGET]] void base64_encode_avx2(char *text, const uint8_t *bytes, size_t groups) {
    for (; 3 * groups >= 12 + 16; groups -= kGroups) {  // two loads of 16 bytes, 12 bytes apart
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + 12));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(text),
                            characters_of(_mm256_set_m128i(high, low)));
        text += 4 * kGroups;
        bytes += 3 * kGroups;
    }
    base64_encode_portable(text, bytes, groups);
}

[[ZT_AVX2_TARGET]] size_t base64_decode_avx2(uint8_t *bytes, size_t room, const char *text,
                                             size_t length) {
    size_t done = 0;
    // Whole vectors are stored as long as there is room: what comes next is written over their ends.
    for (; length - done >= kVector && room >= kVector; done += kVector) {
        __m256i values = load32(text + done);
        if (!values_of(&values)) break;
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(bytes), pack(values));
        bytes += 3 * kGroups;
        room -= 3 * kGroups;
    }
    return done + base64_decode_portable(bytes, room, text + done, length - done);
}

[[ZT_AVX2_TARGET]] size_t base64_count_avx2(const char *text, size_t length, uint64_t *count) {
    size_t done = 0;
    for (; length - done >= kVector; done += kVector) {
        __m256i values = load32(text + done);
        if (!values_of(&values)) break;
    }
    *count += done;
    return done + base64_count_portable(text + done, length - done, count);
}

}  // namespace zt::detail
