// The MD5 block function.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_MD5_BLOCK_HPP
#define ZT_SRC_FORMAT_MD5_BLOCK_HPP

#include <cstddef>
#include <cstdint>

namespace zt::detail {

// Runs whole blocks of 64 bytes through the chaining values. Each step waits for the one before, so
// there is nothing for wider registers to do.
void md5_blocks(uint32_t state[4], const uint8_t *data, size_t blocks);

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_MD5_BLOCK_HPP
