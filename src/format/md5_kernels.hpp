// The kernels of MD5.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_MD5_KERNELS_HPP
#define ZT_SRC_FORMAT_MD5_KERNELS_HPP

#include <cstddef>
#include <cstdint>

namespace zt::detail {

// Runs whole blocks of 64 bytes through the chaining values.
using Md5Kernel = void(uint32_t state[4], const uint8_t *data, size_t blocks);

Md5Kernel md5_portable;

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_MD5_KERNELS_HPP
