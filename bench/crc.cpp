// CRC-32 and CRC-16 against ISA-L, libdeflate and zlib.
#include <isa-l/crc.h>
#include <libdeflate.h>
#include <zlib.h>

#include <array>

#include "support.hpp"
#include "zt/crc.h"

namespace bench {
namespace {

// What a service would write by hand: one table of 256 entries, a byte at a time.
constexpr std::array<uint16_t, 256> make_table() {
    std::array<uint16_t, 256> table{};
    for (unsigned i = 0; i < 256; ++i) {
        unsigned crc = i << 8;
        for (int bit = 0; bit < 8; ++bit) crc = (crc << 1) ^ ((crc & 0x8000) != 0 ? 0x1021U : 0U);
        table[i] = static_cast<uint16_t>(crc);
    }
    return table;
}
constexpr std::array<uint16_t, 256> kTable = make_table();

uint16_t crc16_by_table(uint16_t crc, const uint8_t *data, size_t size) {
    for (size_t i = 0; i < size; ++i) {
        crc = static_cast<uint16_t>((crc << 8) ^ kTable[(crc >> 8) ^ data[i]]);
    }
    return crc;
}

template <class Crc>
void add_one(const char *test, const Piece &piece, const char *who, Crc crc) {
    const uint8_t *data = random_bytes(piece);
    const size_t size = piece.size;
    add(name(test, piece, who), 1, [=] { benchmark::DoNotOptimize(crc(data, size)); });
}

void check(const Piece &piece) {
    const uint8_t *data = random_bytes(piece);
    const auto size = static_cast<uint32_t>(piece.size);
    const uint32_t want = libdeflate_crc32(0, data, size);
    require(zt_crc32(0, data, size) == want && crc32_gzip_refl(0, data, size) == want,
            "the CRC-32s differ");
    require(zt_fpga_crc32(~0U, data, size) == ~want, "the CRC-32 without inversions differs");
    require(zt_crc16_ccitt(0xffff, data, size) == crc16_by_table(0xffff, data, size),
            "the CRC-16s differ");
}

}  // namespace

void add_crc() {
    for (const Piece &piece : kPieces) {
        check(piece);
        const auto isal = [](auto *data, auto size) { return crc32_gzip_refl(0, data, size); };
        const auto deflate = [](auto *data, auto size) { return libdeflate_crc32(0, data, size); };
        const auto z = [](auto *data, auto size) {
            return crc32(0, data, static_cast<uInt>(size));
        };
        for (const char *test : {"crc32", "fpga_crc32"}) {
            add_one(test, piece, "isal", isal);
            add_one(test, piece, "libdeflate", deflate);
            add_one(test, piece, "zlib", z);
        }
        add_one("crc32", piece, "zt", [](auto *data, auto size) {
            return zt_crc32(0, data, static_cast<uint32_t>(size));
        });
        add_one("fpga_crc32", piece, "zt", [](auto *data, auto size) {
            return zt_fpga_crc32(~0U, data, static_cast<uint32_t>(size));
        });
        add_one("crc16_ccitt", piece, "zt", [](auto *data, auto size) {
            return zt_crc16_ccitt(0xffff, data, static_cast<uint32_t>(size));
        });
        add_one("crc16_ccitt", piece, "isal",
                [](auto *data, auto size) { return crc16_t10dif(0xffff, data, size); });
        add_one("crc16_ccitt", piece, "table",
                [](auto *data, auto size) { return crc16_by_table(0xffff, data, size); });
    }
}

}  // namespace bench
