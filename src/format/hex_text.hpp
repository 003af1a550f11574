// A digest as lower-case hexadecimal text.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_HEX_TEXT_HPP
#define ZT_SRC_FORMAT_HEX_TEXT_HPP

#include <cstdint>
#include <span>

namespace zt::detail {

// Two characters a byte, high nibble first, no NUL.
inline void write_hex(std::span<const uint8_t> bytes, char *text) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (const uint8_t byte : bytes) {
        *text++ = kDigits[byte >> 4];
        *text++ = kDigits[byte & 15];
    }
}

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_HEX_TEXT_HPP
