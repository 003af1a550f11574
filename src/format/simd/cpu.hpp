// What the processor that the library runs on can do, as far as the kernels ask.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_SIMD_CPU_HPP
#define ZT_SRC_FORMAT_SIMD_CPU_HPP

namespace zt::detail {

#if defined(__x86_64__)

bool cpu_has_clmul();              // with SSE4.1
bool cpu_has_sha();                // with SSE4.1
bool cpu_has_avx2();               // and an operating system that keeps the wide registers
bool cpu_has_avx512_vpclmulqdq();  // with AVX-512 F, BW, VL and DQ
bool cpu_has_avx512_vbmi();        // likewise, and BMI1, BMI2, POPCNT

#elif defined(__aarch64__)

bool cpu_has_clmul();
bool cpu_has_sha();

#endif

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_SIMD_CPU_HPP
