// The kernels of SHA-256.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_SHA256_KERNELS_HPP
#define ZT_SRC_FORMAT_SHA256_KERNELS_HPP

#include <cstddef>
#include <cstdint>

namespace zt::detail {

// Runs whole blocks of 64 bytes through the hash value.
using Sha256Kernel = void(uint32_t state[8], const uint8_t *data, size_t blocks);

Sha256Kernel sha256_portable;

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_SHA256_KERNELS_HPP
