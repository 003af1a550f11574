// Base64 by the byte permutations of AVX-512 VBMI: 48 bytes to or from 64 characters a step.
// The technique: W. Mula, D. Lemire, "Base64 encoding and decoding at almost the speed of a memory
// copy", Software: Practice and Experience, 2020. Masked loads and stores take the ends.
// SPDX-License-Identifier: MIT
#include <immintrin.h>

#include <algorithm>

#include "format/base64_kernels.hpp"

#define ZT_VBMI_TARGET gnu::target("avx512f,avx512dq,avx512bw,avx512vl,avx512vbmi,bmi,bmi2,popcnt")
#define ZT_VBMI        [[ZT_VBMI_TARGET, gnu::always_inline]] inline

namespace zt::detail {
namespace {

constexpr size_t kVector = 64;
constexpr size_t kGroups = kVector / 4;  // of characters, in a vector
constexpr size_t kManyGroups = 16 * kGroups;

// The table of 64 bytes that a constant expression fills.
template <typename Fill>
consteval std::array<uint8_t, 64> table(Fill fill) {
    std::array<uint8_t, 64> bytes{};
    for (uint32_t i = 0; i < 64; ++i) bytes[i] = static_cast<uint8_t>(fill(i));
    return bytes;
}

// Each word of four takes the bytes 1 0 2 1 of a group, from which four shifts make the characters.
alignas(64) constexpr auto kSpread = table([](uint32_t i) {
    return 3 * (i / 4) + (0x01020001 >> 8 * (i % 4) & 3);
});
// Each word of four, with its value in the lower three bytes, gives these, the highest first.
alignas(64) constexpr auto kGather = table([](uint32_t i) {
    return i < 48 ? 4 * (i / 3) + 2 - i % 3 : 0;
});

ZT_VBMI __m512i load64(const void *bytes) { return _mm512_loadu_si512(bytes); }

// The lowest bits, up to 64 of them.
ZT_VBMI __mmask64 lowest(size_t count) {
    return _bzhi_u64(~uint64_t{0}, std::min(count, size_t{64}));
}

// What the table of all characters gives; it looks at the lower seven bits of each only.
ZT_VBMI __m512i values_of(__m512i text) {
    return _mm512_permutex2var_epi8(load64(kValues.data()), text, load64(kValues.data() + 64));
}

// The characters that are not in the alphabet: not ASCII, or a value above 63.
ZT_VBMI __mmask64 not_in_alphabet(__m512i text, __m512i values) {
    return _mm512_movepi8_mask(_mm512_or_si512(text, _mm512_add_epi8(values, values)));
}

// The bytes that values stand for, in the lower 48 bytes.
ZT_VBMI __m512i pack(__m512i values) {
    const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
    const __m512i words = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
    return _mm512_permutexvar_epi8(load64(kGather.data()), words);
}

ZT_VBMI __m512i characters_of(__m512i bytes) {
    const __m512i shifts = _mm512_set1_epi64(0x3036242a1016040a);
    const __m512i spread = _mm512_permutexvar_epi8(load64(kSpread.data()), bytes);
    return _mm512_permutexvar_epi8(_mm512_multishift_epi64_epi8(shifts, spread), load64(kAlphabet));
}

// Up to a vector's groups.
ZT_VBMI void encode_some(char *text, const uint8_t *bytes, size_t groups) {
    const __m512i in = _mm512_maskz_loadu_epi8(lowest(3 * groups), bytes);
    _mm512_mask_storeu_epi8(text, lowest(4 * groups), characters_of(in));
}

}  // namespace

[[ZT_VBMI_TARGET]] void base64_encode_avx512(char *text, const uint8_t *bytes, size_t groups) {
    if (groups >= kManyGroups) {  // then it pays to store along cache lines
        const size_t head = -reinterpret_cast<uintptr_t>(text) % kVector / 4;
        encode_some(text, bytes, head);
        text += 4 * head;
        bytes += 3 * head;
        groups -= head;
    }
    for (; 3 * groups >= kVector; groups -= kGroups) {
        _mm512_storeu_si512(text, characters_of(load64(bytes)));
        text += 4 * kGroups;
        bytes += 3 * kGroups;
    }
    for (; groups > kGroups; groups -= kGroups) {
        encode_some(text, bytes, kGroups);
        text += 4 * kGroups;
        bytes += 3 * kGroups;
    }
    encode_some(text, bytes, groups);
}

[[ZT_VBMI_TARGET]] size_t base64_decode_avx512(uint8_t *bytes, size_t room, const char *text,
                                               size_t length) {
    size_t done = 0;
    // Whole vectors are stored as long as there is room: what comes next is written over their ends.
    for (; length - done >= kVector && room >= kVector; done += kVector) {
        const __m512i in = load64(text + done);
        const __m512i values = values_of(in);
        if (not_in_alphabet(in, values) != 0) break;
        _mm512_storeu_si512(bytes, pack(values));
        bytes += 3 * kGroups;
        room -= 3 * kGroups;
    }
    while (length - done >= 4) {
        const __m512i in = _mm512_maskz_loadu_epi8(lowest(length - done), text + done);
        const __m512i values = values_of(in);
        const size_t groups = static_cast<size_t>(_tzcnt_u64(not_in_alphabet(in, values))) / 4;
        _mm512_mask_storeu_epi8(bytes, lowest(3 * groups), pack(values));
        bytes += 3 * groups;
        done += 4 * groups;
        if (groups < kGroups) break;
    }
    return done;
}

[[ZT_VBMI_TARGET]] size_t base64_count_avx512(const char *text, size_t length, uint64_t *count) {
    uint64_t line_ends = 0;
    size_t done = 0;
    uint64_t others = 0;
    for (; length - done >= kVector; done += kVector) {
        const __m512i in = load64(text + done);
        others = not_in_alphabet(in, values_of(in));
        if (others == 0) continue;
        const __mmask64 feeds = _mm512_cmpeq_epi8_mask(in, _mm512_set1_epi8('\n'));
        const __mmask64 returns = _mm512_cmpeq_epi8_mask(in, _mm512_set1_epi8('\r'));
        // A return must have its feed within the vector.
        if ((others & ~(feeds | (returns & feeds >> 1))) != 0) break;
        line_ends += static_cast<uint64_t>(_mm_popcnt_u64(others));
    }
    if (length - done < kVector) {
        const __m512i in = _mm512_maskz_loadu_epi8(lowest(length - done), text + done);
        others = not_in_alphabet(in, values_of(in));
    }
    const uint64_t run = _tzcnt_u64(others);
    *count += done + run - line_ends;
    return done + run;
}

}  // namespace zt::detail
