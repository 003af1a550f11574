// The SHA-256 block function by the SHA-2 instructions of 64-bit Arm: four rounds a pair of
// instructions.
// SPDX-License-Identifier: MIT
#include <arm_neon.h>

#include "format/sha256_kernels.hpp"

#if defined(__clang__)
#define ZT_SHA_TARGET gnu::target("sha2")
#else
#define ZT_SHA_TARGET gnu::target("+crypto")
#endif

namespace zt::detail {

[[ZT_SHA_TARGET]] void sha256_aarch64(uint32_t words[8], const uint8_t *data, size_t blocks) {
    uint32x4_t abcd = vld1q_u32(words);
    uint32x4_t efgh = vld1q_u32(words + 4);
    for (; blocks > 0; --blocks, data += 64) {
        const uint32x4_t abcd_before = abcd;
        const uint32x4_t efgh_before = efgh;
        uint32x4_t w[4];
        for (int i = 0; i < 4; ++i) {
            w[i] = vreinterpretq_u32_u8(vrev32q_u8(vld1q_u8(data + 16 * i)));
        }
        for (int quad = 0; quad < 16; ++quad) {
            const uint32x4_t sums = vaddq_u32(w[quad % 4], vld1q_u32(kSha256Roots + 4 * quad));
            const uint32x4_t abcd_in = abcd;
            abcd = vsha256hq_u32(abcd, efgh, sums);
            efgh = vsha256h2q_u32(efgh, abcd_in, sums);
            if (quad >= 12) continue;
            const uint32x4_t part = vsha256su0q_u32(w[quad % 4], w[(quad + 1) % 4]);
            w[quad % 4] = vsha256su1q_u32(part, w[(quad + 2) % 4], w[(quad + 3) % 4]);
        }
        abcd = vaddq_u32(abcd, abcd_before);
        efgh = vaddq_u32(efgh, efgh_before);
    }
    vst1q_u32(words, abcd);
    vst1q_u32(words + 4, efgh);
}

}  // namespace zt::detail
