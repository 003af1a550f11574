// CRCs by table look-ups, four bytes a step: table k holds the remainders of a byte that k more bytes
// follow. The tables are computed from the polynomials at compile time.
// SPDX-License-Identifier: MIT
#include <array>

#include "format/byte_order.hpp"
#include "format/crc_kernels.hpp"

namespace zt::detail {
namespace {

constexpr uint16_t kPolynomial16 = 0x1021;
constexpr uint32_t kPolynomial32 = 0xEDB88320;  // 0x04C11DB7 with its bits reversed

template <typename Crc>
using Tables = std::array<std::array<Crc, 256>, 4>;

constexpr auto kTables16 = [] {
    Tables<uint16_t> tables{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t crc = i << 8;
        for (auto &table : tables) {
            for (int bit = 0; bit < 8; ++bit) {
                crc = (crc << 1 ^ ((crc & 0x8000) != 0 ? kPolynomial16 : 0)) & 0xFFFF;
            }
            table[i] = static_cast<uint16_t>(crc);
        }
    }
    return tables;
}();
static_assert(kTables16[0][1] == 0x1021);

constexpr auto kTables32 = [] {
    Tables<uint32_t> tables{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t crc = i;
        for (auto &table : tables) {
            for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? kPolynomial32 : 0);
            table[i] = crc;
        }
    }
    return tables;
}();
static_assert(kTables32[0][1] == 0x77073096);

// The remainder of four bytes, the first of them in the word's lowest bits.
template <typename Crc>
Crc look_up(const Tables<Crc> &tables, uint32_t word) {
    return static_cast<Crc>(tables[3][word & 0xFF] ^ tables[2][word >> 8 & 0xFF] ^
                            tables[1][word >> 16 & 0xFF] ^ tables[0][word >> 24]);
}

}  // namespace

uint16_t crc16_portable(uint16_t crc, const uint8_t *data, size_t length) {
    for (; length >= 4; data += 4, length -= 4) {
        crc = look_up(kTables16, load32<std::endian::little>(data) ^ __builtin_bswap16(crc));
    }
    for (; length > 0; --length) {
        crc = static_cast<uint16_t>(crc << 8 ^ kTables16[0][crc >> 8 ^ *data++]);
    }
    return crc;
}

uint32_t crc32_portable(uint32_t crc, const uint8_t *data, size_t length, uint32_t inversion) {
    crc ^= inversion;
    for (; length >= 4; data += 4, length -= 4) {
        crc = look_up(kTables32, load32<std::endian::little>(data) ^ crc);
    }
    for (; length > 0; --length) crc = crc >> 8 ^ kTables32[0][(crc ^ *data++) & 0xFF];
    return crc ^ inversion;
}

}  // namespace zt::detail
