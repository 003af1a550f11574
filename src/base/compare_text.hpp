// Whole-text comparison through the library's own exported comparison.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_BASE_COMPARE_TEXT_HPP
#define ZT_SRC_BASE_COMPARE_TEXT_HPP

#include <cstdint>

#include "zt/string.h"

namespace zt::detail {

// Byte order, as unsigned characters; the count is only a bound that no text reaches.
inline int compare_text(const char *first, const char *second) {
    return zt_strncmp(first, second, UINT32_MAX);
}

}  // namespace zt::detail

#endif  // ZT_SRC_BASE_COMPARE_TEXT_HPP
