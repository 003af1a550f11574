// SHA-256 of a message in memory.
// SPDX-License-Identifier: MIT
#include "zt/sha.h"

#include <bit>

#include "format/byte_order.hpp"
#include "format/hex_text.hpp"
#include "format/sha256_kernels.hpp"
#include "format/simd/cpu.hpp"
#include "zt/memory.h"

using namespace zt::detail;

namespace {

constexpr size_t kBlock = 64;
constexpr size_t kCountAt = 56;  // where the bit count stands in the last block

constexpr Kernel<Sha256Kernel> kSha256Kernels[] = {
#if defined(__x86_64__)
    {"x86", cpu_has_sha, sha256_x86},
#elif defined(__aarch64__)
    {"aarch64", cpu_has_sha, sha256_aarch64},
#endif
    {"portable", nullptr, sha256_portable},
};

}  // namespace

constinit Dispatch<Sha256Kernel> zt::detail::g_sha256{kSha256Kernels};

void zt_sha256_mac(const void *data, int32_t length, uint8_t digest[32]) {
    const auto *bytes = static_cast<const uint8_t *>(data);
    const auto total = static_cast<uint32_t>(length > 0 ? length : 0);
    uint32_t state[8] = {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                         0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};
    Sha256Kernel *transform = g_sha256.get();
    const size_t whole = total / kBlock;
    const auto rest = static_cast<uint32_t>(total % kBlock);
    if (whole > 0) transform(state, bytes, whole);

    uint8_t last[2 * kBlock] = {};
    if (rest > 0) zt_memcpy(last, bytes + whole * kBlock, rest);
    last[rest] = 0x80;
    const size_t blocks = rest < kCountAt ? 1 : 2;
    uint8_t *count = last + (blocks - 1) * kBlock + kCountAt;
    store32<std::endian::big>(count, total >> 29);
    store32<std::endian::big>(count + 4, total << 3);
    transform(state, last, blocks);
    for (size_t i = 0; i < 8; ++i) store32<std::endian::big>(digest + 4 * i, state[i]);
}

void zt_sha256_mac_to_hex_string(const void *data, int32_t length, char text[64]) {
    uint8_t digest[32];
    zt_sha256_mac(data, length, digest);
    write_hex(digest, text);
}
