// Base64 in plain C++.
// SPDX-License-Identifier: MIT
#include "format/base64_kernels.hpp"

namespace zt::detail {
namespace {

uint8_t value_of(char character) { return kValues[static_cast<uint8_t>(character)]; }

}  // namespace

void base64_encode_portable(char *text, const uint8_t *bytes, size_t groups) {
    for (; groups > 0; --groups, bytes += 3) {
        const uint32_t word = uint32_t{bytes[0]} << 16 | uint32_t{bytes[1]} << 8 | bytes[2];
        for (int shift = 18; shift >= 0; shift -= 6) *text++ = kAlphabet[word >> shift & 63];
    }
}

size_t base64_decode_portable(uint8_t *bytes, size_t, const char *text, size_t length) {
    size_t done = 0;
    for (; length - done >= 4; done += 4) {
        uint32_t word = 0;
        uint32_t seen = 0;  // any value above 63 shows in it
        for (size_t i = 0; i < 4; ++i) {
            const uint8_t value = value_of(text[done + i]);
            word = word << 6 | value;
            seen |= value;
        }
        if (seen > 63) break;
        for (int shift = 16; shift >= 0; shift -= 8) *bytes++ = static_cast<uint8_t>(word >> shift);
    }
    return done;
}

size_t base64_count_portable(const char *text, size_t length, uint64_t *count) {
    size_t run = 0;
    while (run < length && value_of(text[run]) < kPadding) ++run;
    *count += run;
    return run;
}

}  // namespace zt::detail
