// Bounds and alignment of flash accesses.
// SPDX-License-Identifier: MIT
#include "zt/flash.h"

#include <cstddef>
#include <type_traits>

static_assert(std::is_standard_layout_v<zt_flash_info_t> && sizeof(zt_flash_info_t) == 24);
static_assert(offsetof(zt_flash_info_t, size) == 8);
static_assert(offsetof(zt_flash_info_t, erase_size) == 16);
static_assert(offsetof(zt_flash_info_t, rw_size) == 20);
static_assert(std::is_standard_layout_v<zt_flash_range_t> && sizeof(zt_flash_range_t) == 8);
static_assert(offsetof(zt_flash_range_t, offset) == 0);
static_assert(offsetof(zt_flash_range_t, length) == 4);

namespace {

bool fits(const zt_flash_range_t &range, uint64_t size, uint32_t unit) {
    const uint64_t end =
        uint64_t{range.offset} + range.length;  // 32 bits could wrap to a small end
    return range.length != 0 && end <= size && (range.offset & (unit - 1)) == 0;
}

}  // namespace

bool zt_flash_erase_is_valid(const zt_flash_info_t *info, const zt_flash_range_t *range) {
    return fits(*range, info->size, info->erase_size);
}

bool zt_flash_rw_is_valid(const zt_flash_info_t *info, const zt_flash_range_t *range) {
    return fits(*range, info->size, info->rw_size);
}
