// Words in a stated byte order, at any address.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_BYTE_ORDER_HPP
#define ZT_SRC_FORMAT_BYTE_ORDER_HPP

#include <bit>
#include <cstdint>
#include <cstring>

namespace zt::detail {

template <std::endian kOrder>
uint32_t load32(const uint8_t *bytes) {
    uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return kOrder == std::endian::native ? word : __builtin_bswap32(word);
}

template <std::endian kOrder>
void store32(uint8_t *bytes, uint32_t word) {
    if (kOrder != std::endian::native) word = __builtin_bswap32(word);
    std::memcpy(bytes, &word, sizeof word);
}

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_BYTE_ORDER_HPP
