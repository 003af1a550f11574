// The kernels of the CRCs: each takes the register and returns it; those of CRC-32 invert the bits of
// `inversion` before and after.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_CRC_KERNELS_HPP
#define ZT_SRC_FORMAT_CRC_KERNELS_HPP

#include <cstddef>
#include <cstdint>

#include "format/kernel.hpp"

namespace zt::detail {

using Crc16Kernel = uint16_t(uint16_t crc, const uint8_t *data, size_t length);
using Crc32Kernel = uint32_t(uint32_t crc, const uint8_t *data, size_t length, uint32_t inversion);

Crc16Kernel crc16_portable, crc16_clmul, crc16_avx512;
Crc32Kernel crc32_portable, crc32_clmul, crc32_avx512;

extern Dispatch<Crc16Kernel> g_crc16;
extern Dispatch<Crc32Kernel> g_crc32;

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_CRC_KERNELS_HPP
