// CRCs by one table look-up a byte; the tables are computed from the polynomials at compile time.
// SPDX-License-Identifier: MIT
#include <array>

#include "format/crc_kernels.hpp"

namespace zt::detail {
namespace {

constexpr uint16_t kPolynomial16 = 0x1021;
constexpr uint32_t kPolynomial32 = 0xEDB88320;  // 0x04C11DB7 with its bits reversed

constexpr auto kTable16 = [] {
    std::array<uint16_t, 256> table{};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t crc = i << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc << 1 ^ ((crc & 0x8000) != 0 ? kPolynomial16 : 0);
        table[i] = static_cast<uint16_t>(crc);
    }
    return table;
}();
static_assert(kTable16[1] == 0x1021);

constexpr auto kTable32 = [] {
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t crc = i;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? kPolynomial32 : 0);
        table[i] = crc;
    }
    return table;
}();
static_assert(kTable32[1] == 0x77073096);

}  // namespace

uint16_t crc16_portable(uint16_t crc, const uint8_t *data, size_t length) {
    for (; length > 0; --length) {
        crc = static_cast<uint16_t>(crc << 8 ^ kTable16[crc >> 8 ^ *data++]);
    }
    return crc;
}

uint32_t crc32_portable(uint32_t crc, const uint8_t *data, size_t length) {
    for (; length > 0; --length) crc = crc >> 8 ^ kTable32[(crc ^ *data++) & 0xFF];
    return crc;
}

}  // namespace zt::detail
