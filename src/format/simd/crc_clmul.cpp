// The CRC kernels on 16-byte vectors, four of them at a time to hide the multiplier's latency.
// SPDX-License-Identifier: MIT
#include "format/simd/crc_clmul.hpp"

#include "format/crc_kernels.hpp"

namespace zt::detail {
namespace {

constexpr size_t kVector = 16;
constexpr size_t kStride = 4 * kVector;

// The remainder of a message of at least 16 bytes in whole vectors behind the head.
template <typename Crc>
ZT_CLMUL uint32_t remainder_of(uint32_t start, const uint8_t *data, size_t length) {
    const size_t head = length % kVector;
    Vector128 x = fold_head<Crc>(from_halves(start, 0), data, head);
    data += head;
    length -= head;
    if (length < kStride) {
        return reduce<Crc>(fold_vectors<Crc>(x, data + kVector, length / kVector - 1));
    }
    Vector128 x1 = in_order<Crc>(load16(data + 16));
    Vector128 x2 = in_order<Crc>(load16(data + 32));
    Vector128 x3 = in_order<Crc>(load16(data + 48));
    for (data += kStride, length -= kStride; length >= kStride;
         data += kStride, length -= kStride) {
        x = fold_onto<Crc, 8 * kStride>(in_order<Crc>(load16(data)), x);
        x1 = fold_onto<Crc, 8 * kStride>(in_order<Crc>(load16(data + 16)), x1);
        x2 = fold_onto<Crc, 8 * kStride>(in_order<Crc>(load16(data + 32)), x2);
        x3 = fold_onto<Crc, 8 * kStride>(in_order<Crc>(load16(data + 48)), x3);
    }
    x3 = fold_onto<Crc, 128>(x3, x2);
    x3 = fold_onto<Crc, 256>(x3, x1);
    x3 = fold_onto<Crc, 384>(x3, x);
    return reduce<Crc>(fold_vectors<Crc>(x3, data, length / kVector));
}

}  // namespace

[[ZT_CLMUL_TARGET]] uint32_t crc32_clmul(uint32_t crc, const uint8_t *data, size_t length,
                                         uint32_t inversion) {
    if (length < kVector) return crc32_portable(crc, data, length, inversion);
    return remainder_of<Crc32Constants>(crc ^ inversion, data, length) ^ inversion;
}

[[ZT_CLMUL_TARGET]] uint16_t crc16_clmul(uint16_t crc, const uint8_t *data, size_t length) {
    if (length < kVector) return crc16_portable(crc, data, length);
    const uint32_t start = __builtin_bswap16(crc);
    return static_cast<uint16_t>(remainder_of<Crc16Constants>(start, data, length) >> 16);
}

}  // namespace zt::detail
