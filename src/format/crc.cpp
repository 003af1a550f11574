// The CRCs and the choice of their kernels.
// SPDX-License-Identifier: MIT
#include "zt/crc.h"

#include "format/crc_kernels.hpp"
#include "format/simd/cpu.hpp"

using namespace zt::detail;

namespace {

constexpr Kernel<Crc16Kernel> kCrc16Kernels[] = {
#if defined(__x86_64__)
    {"avx512", cpu_has_avx512_vpclmulqdq, crc16_avx512},
#endif
#if defined(__x86_64__) || defined(__aarch64__)
    {"clmul", cpu_has_clmul, crc16_clmul},
#endif
    {"portable", nullptr, crc16_portable},
};

constexpr Kernel<Crc32Kernel> kCrc32Kernels[] = {
#if defined(__x86_64__)
    {"avx512", cpu_has_avx512_vpclmulqdq, crc32_avx512},
#endif
#if defined(__x86_64__) || defined(__aarch64__)
    {"clmul", cpu_has_clmul, crc32_clmul},
#endif
    {"portable", nullptr, crc32_portable},
};

}  // namespace

constinit Dispatch<Crc16Kernel> zt::detail::g_crc16{kCrc16Kernels};
constinit Dispatch<Crc32Kernel> zt::detail::g_crc32{kCrc32Kernels};

uint16_t zt_crc16_ccitt(uint16_t crc, const void *data, uint32_t length) {
    return g_crc16.get()(crc, static_cast<const uint8_t *>(data), length);
}

uint32_t zt_crc32(uint32_t crc, const void *data, uint32_t length) {
    return g_crc32.get()(crc, static_cast<const uint8_t *>(data), length, UINT32_MAX);
}

uint32_t zt_fpga_crc32(uint32_t crc, const void *data, uint32_t length) {
    return g_crc32.get()(crc, static_cast<const uint8_t *>(data), length, 0);
}
