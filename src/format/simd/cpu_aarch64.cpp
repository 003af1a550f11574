// Feature detection on 64-bit Arm: the kernel's auxiliary vector.
// SPDX-License-Identifier: MIT
#include <asm/hwcap.h>
#include <sys/auxv.h>

#include "format/simd/cpu.hpp"

namespace zt::detail {
namespace {

bool has(unsigned long wanted) { return (getauxval(AT_HWCAP) & wanted) == wanted; }

}  // namespace

bool cpu_has_clmul() { return has(HWCAP_PMULL); }
bool cpu_has_sha() { return has(HWCAP_SHA2); }

}  // namespace zt::detail
