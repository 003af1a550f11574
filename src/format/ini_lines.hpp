// What the INI reader keeps of a text, and finding a value in it.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_INI_LINES_HPP
#define ZT_SRC_FORMAT_INI_LINES_HPP

#include <cstdint>
#include <string_view>

#include "zt/ini.h"

constexpr int32_t kIniMaxLines = 1024;

struct zt_ini_reader_t {
    int32_t line_count;
    char *lines[kIniMaxLines];  // in the text copy, in its order, each ending with a NUL
    char *text;
};

namespace zt::detail {

// Cuts the reader's text, a terminated copy, into lines. False when it has none, blank ones included.
bool ini_split(zt_ini_reader_t *reader);

// The value of a key without its quotes; its data is null when there is no such entry.
std::string_view ini_find(const zt_ini_reader_t *reader, const char *section, const char *key);

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_INI_LINES_HPP
