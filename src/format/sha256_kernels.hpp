// The kernels of SHA-256.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_SHA256_KERNELS_HPP
#define ZT_SRC_FORMAT_SHA256_KERNELS_HPP

#include <cstddef>
#include <cstdint>

#include "format/kernel.hpp"

namespace zt::detail {

// Runs whole blocks of 64 bytes through the hash value.
using Sha256Kernel = void(uint32_t state[8], const uint8_t *data, size_t blocks);

Sha256Kernel sha256_portable, sha256_x86, sha256_aarch64;

extern Dispatch<Sha256Kernel> g_sha256;

// The first 32 bits of the fractional parts of the cube roots of the first 64 primes.
extern const uint32_t kSha256Roots[64];

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_SHA256_KERNELS_HPP
