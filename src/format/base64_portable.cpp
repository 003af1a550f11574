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

void base64_decode_portable(uint8_t *bytes, const char *text, size_t groups) {
    for (; groups > 0; --groups, text += 4) {
        uint32_t word = 0;
        for (int i = 0; i < 4; ++i) word = word << 6 | value_of(text[i]);
        for (int shift = 16; shift >= 0; shift -= 8) *bytes++ = static_cast<uint8_t>(word >> shift);
    }
}

size_t base64_span_portable(const char *text, size_t length) {
    size_t span = 0;
    while (span < length && value_of(text[span]) < kPadding) ++span;
    return span;
}

}  // namespace zt::detail
