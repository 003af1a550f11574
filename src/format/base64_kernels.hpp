// The kernels of base64, for the long regular stretches of a text.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_BASE64_KERNELS_HPP
#define ZT_SRC_FORMAT_BASE64_KERNELS_HPP

#include <array>
#include <cstddef>
#include <cstdint>

namespace zt::detail {

inline constexpr char kAlphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

inline constexpr uint8_t kPadding = 64;
inline constexpr uint8_t kInvalid = 127;

// The value of a character, kPadding or kInvalid.
inline constexpr auto kValues = [] {
    std::array<uint8_t, 256> values{};
    values.fill(kInvalid);
    for (uint8_t value = 0; value < 64; ++value) {
        values[static_cast<uint8_t>(kAlphabet[value])] = value;
    }
    values['='] = kPadding;
    return values;
}();

// Writes groups of three bytes as four characters each.
using Base64EncodeKernel = void(char *text, const uint8_t *bytes, size_t groups);

// Writes groups of four characters, all of them in the alphabet, as three bytes each.
using Base64DecodeKernel = void(uint8_t *bytes, const char *text, size_t groups);

// The number of characters from the start of the text that are in the alphabet.
using Base64SpanKernel = size_t(const char *text, size_t length);

Base64EncodeKernel base64_encode_portable;
Base64DecodeKernel base64_decode_portable;
Base64SpanKernel base64_span_portable;

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_BASE64_KERNELS_HPP
