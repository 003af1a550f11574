// The kernels of base64, for the long regular stretches of a text.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_BASE64_KERNELS_HPP
#define ZT_SRC_FORMAT_BASE64_KERNELS_HPP

#include <array>
#include <cstddef>
#include <cstdint>

#include "format/kernel.hpp"

namespace zt::detail {

alignas(64) inline constexpr char kAlphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

inline constexpr uint8_t kPadding = 64;
inline constexpr uint8_t kInvalid = 127;

// The value of a character, kPadding or kInvalid.
alignas(64) inline constexpr auto kValues = [] {
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

// Writes the groups of four characters at the start of the text, as three bytes each, up to the first
// character that is not in the alphabet; returns how many characters those were. There is room for
// all that the text stands for; what is in the room and not yet decoded may be written over.
using Base64DecodeKernel = size_t(uint8_t *bytes, size_t room, const char *text, size_t length);

// Counts the characters of the alphabet up to the first other that is not part of a line end; a kernel
// may as well stop before any line end. Returns where it stopped.
using Base64CountKernel = size_t(const char *text, size_t length, uint64_t *count);

Base64EncodeKernel base64_encode_portable, base64_encode_avx2, base64_encode_avx512,
    base64_encode_neon;
Base64DecodeKernel base64_decode_portable, base64_decode_avx2, base64_decode_avx512,
    base64_decode_neon;
Base64CountKernel base64_count_portable, base64_count_avx2, base64_count_avx512, base64_count_neon;

extern Dispatch<Base64EncodeKernel> g_base64_encode;
extern Dispatch<Base64DecodeKernel> g_base64_decode;
extern Dispatch<Base64CountKernel> g_base64_count;

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_BASE64_KERNELS_HPP
