// The SHA-256 block function by the SHA extensions of x86-64: one instruction makes two rounds, on a
// state kept as the words A B E F and C D G H.
// SPDX-License-Identifier: MIT
#include <immintrin.h>

#include "format/sha256_kernels.hpp"

#define ZT_SHA_TARGET gnu::target("sha,sse4.1")
#define ZT_SHA        [[ZT_SHA_TARGET, gnu::always_inline]] inline

namespace zt::detail {
namespace {

struct State {
    __m128i abef, cdgh;
};

// Four rounds with four words of the message schedule.
template <size_t kQuad>
ZT_SHA void rounds(State *state, __m128i words) {
    const auto *roots = reinterpret_cast<const __m128i *>(kSha256Roots);
    const __m128i sums = _mm_add_epi32(words, _mm_load_si128(roots + kQuad));
    state->cdgh = _mm_sha256rnds2_epu32(state->cdgh, state->abef, sums);
    state->abef = _mm_sha256rnds2_epu32(state->abef, state->cdgh, _mm_shuffle_epi32(sums, 0x0E));
}

// Replaces the oldest four of sixteen words, w0, by the next four of the schedule.
ZT_SHA void extend(__m128i *w0, __m128i w1, __m128i w2, __m128i w3) {
    const __m128i sums = _mm_add_epi32(_mm_sha256msg1_epu32(*w0, w1), _mm_alignr_epi8(w3, w2, 4));
    *w0 = _mm_sha256msg2_epu32(sums, w3);
}

// Sixteen rounds, which also make the words of the sixteen after them.
template <size_t kQuad>
ZT_SHA void rounds_and_extend(State *state, __m128i w[4]) {
    rounds<kQuad>(state, w[0]);
    extend(&w[0], w[1], w[2], w[3]);
    rounds<kQuad + 1>(state, w[1]);
    extend(&w[1], w[2], w[3], w[0]);
    rounds<kQuad + 2>(state, w[2]);
    extend(&w[2], w[3], w[0], w[1]);
    rounds<kQuad + 3>(state, w[3]);
    extend(&w[3], w[0], w[1], w[2]);
}

ZT_SHA __m128i load_words(const uint8_t *bytes) {
    const __m128i big_endian = _mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3);
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)), big_endian);
}

}  // namespace

[[ZT_SHA_TARGET]] void sha256_x86(uint32_t words[8], const uint8_t *data, size_t blocks) {
    auto *low = reinterpret_cast<__m128i *>(words);
    const __m128i cdab = _mm_shuffle_epi32(_mm_loadu_si128(low), 0xB1);
    const __m128i efgh = _mm_shuffle_epi32(_mm_loadu_si128(low + 1), 0x1B);
    State state = {_mm_alignr_epi8(cdab, efgh, 8), _mm_blend_epi16(efgh, cdab, 0xF0)};
    for (; blocks > 0; --blocks, data += 64) {
        const State before = state;
        __m128i w[4] = {load_words(data), load_words(data + 16), load_words(data + 32),
                        load_words(data + 48)};
        rounds_and_extend<0>(&state, w);
        rounds_and_extend<4>(&state, w);
        rounds_and_extend<8>(&state, w);
        rounds<12>(&state, w[0]);
        rounds<13>(&state, w[1]);
        rounds<14>(&state, w[2]);
        rounds<15>(&state, w[3]);
        state.abef = _mm_add_epi32(state.abef, before.abef);
        state.cdgh = _mm_add_epi32(state.cdgh, before.cdgh);
    }
    const __m128i feba = _mm_shuffle_epi32(state.abef, 0x1B);
    const __m128i dchg = _mm_shuffle_epi32(state.cdgh, 0xB1);
    _mm_storeu_si128(low, _mm_blend_epi16(feba, dchg, 0xF0));
    _mm_storeu_si128(low + 1, _mm_alignr_epi8(dchg, feba, 8));
}

}  // namespace zt::detail
