// The CRCs and the choice of their kernels.
// SPDX-License-Identifier: MIT
#include "zt/crc.h"

#include "format/crc_kernels.hpp"
#include "format/kernel.hpp"

namespace {

using namespace zt::detail;

constexpr Kernel<Crc16Kernel> kCrc16Kernels[] = {{"portable", nullptr, crc16_portable}};
constexpr Kernel<Crc32Kernel> kCrc32Kernels[] = {{"portable", nullptr, crc32_portable}};
constinit Dispatch<Crc16Kernel> g_crc16{kCrc16Kernels};
constinit Dispatch<Crc32Kernel> g_crc32{kCrc32Kernels};

}  // namespace

uint16_t zt_crc16_ccitt(uint16_t crc, const void *data, uint32_t length) {
    return g_crc16.get()(crc, static_cast<const uint8_t *>(data), length);
}

uint32_t zt_crc32(uint32_t crc, const void *data, uint32_t length) {
    return ~g_crc32.get()(~crc, static_cast<const uint8_t *>(data), length);
}

uint32_t zt_fpga_crc32(uint32_t crc, const void *data, uint32_t length) {
    return g_crc32.get()(crc, static_cast<const uint8_t *>(data), length);
}
