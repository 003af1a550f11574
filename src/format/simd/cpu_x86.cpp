// Feature detection on x86-64: CPUID, and XGETBV for what the operating system keeps.
// The compiler's own __builtin_cpu_supports would bring a load-time constructor along.
// SPDX-License-Identifier: MIT
#include <cpuid.h>

#include <cstdint>

#include "format/simd/cpu.hpp"

namespace zt::detail {
namespace {

// A bit of CPUID's answer: leaf 1 or 7, and the register's place among EAX, EBX, ECX, EDX.
struct Feature {
    uint8_t leaf, reg, bit;
};

constexpr uint8_t kEbx = 1, kEcx = 2;
constexpr Feature kPclmulqdq = {1, kEcx, 1}, kSsse3 = {1, kEcx, 9}, kSse41 = {1, kEcx, 19},
                  kPopcnt = {1, kEcx, 23}, kOsxsave = {1, kEcx, 27}, kBmi1 = {7, kEbx, 3},
                  kBmi2 = {7, kEbx, 8}, kAvx2 = {7, kEbx, 5}, kSha = {7, kEbx, 29},
                  kAvx512f = {7, kEbx, 16}, kAvx512dq = {7, kEbx, 17}, kAvx512bw = {7, kEbx, 30},
                  kAvx512vl = {7, kEbx, 31}, kVbmi = {7, kEcx, 1}, kVpclmulqdq = {7, kEcx, 10};

// The register state that the operating system saves, as XCR0 tells.
constexpr uint32_t kStateAvx = 0x06;
constexpr uint32_t kStateAvx512 = 0xE6;

bool has(Feature feature) {
    uint32_t regs[4] = {};
    if (__get_cpuid_count(feature.leaf, 0, &regs[0], &regs[1], &regs[2], &regs[3]) == 0) {
        return false;
    }
    return (regs[feature.reg] >> feature.bit & 1) != 0;
}

template <uint32_t kCount>
bool has_all(const Feature (&features)[kCount]) {
    for (const Feature feature : features) {
        if (!has(feature)) return false;
    }
    return true;
}

bool keeps(uint32_t state) {
    if (!has(kOsxsave)) return false;
    uint32_t low = 0, high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (low & state) == state;
}

bool has_avx512() {
    return keeps(kStateAvx512) && has_all({kAvx512f, kAvx512dq, kAvx512bw, kAvx512vl});
}

}  // namespace

bool cpu_has_clmul() { return has_all({kPclmulqdq, kSsse3, kSse41}); }
bool cpu_has_sha() { return has_all({kSha, kSsse3, kSse41}); }
bool cpu_has_avx2() { return keeps(kStateAvx) && has(kAvx2); }
bool cpu_has_avx512_vpclmulqdq() { return has_avx512() && has_all({kPclmulqdq, kVpclmulqdq}); }
bool cpu_has_avx512_vbmi() { return has_avx512() && has_all({kVbmi, kBmi1, kBmi2, kPopcnt}); }

}  // namespace zt::detail
