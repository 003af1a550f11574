// Cutting an INI text into lines, and the scan through them. The lines are never changed once they are
// cut: what a line is and what its value is cannot depend on what has been read before.
// SPDX-License-Identifier: MIT
#include "format/ini_lines.hpp"

#include "zt/string.h"

namespace zt::detail {
namespace {

// Overwrites trailing blanks with NULs; false when nothing is left.
bool trim_end(char *line) {
    char *end = line + zt_strlen(line);
    while (end > line && (end[-1] == ' ' || end[-1] == '\t')) *--end = '\0';
    return end > line;
}

bool is_comment(const char *line) { return *line == '#' || *line == '/' || *line == ';'; }

// What an entry holds for this key, or null.
const char *value_of(const char *line, const char *key, uint32_t key_length) {
    // Equal over its whole length, the key ends before the line's NUL at the latest.
    if (zt_strncmp(line, key, key_length) != 0 || line[key_length] != '=') return nullptr;
    return zt_strchr(line, '=') + 1;
}

std::string_view without_quotes(std::string_view value) {
    if (!value.empty() && value.front() == '"') value.remove_prefix(1);
    if (!value.empty() && value.back() == '"') value.remove_suffix(1);
    return value;
}

}  // namespace

bool ini_split(zt_ini_reader_t *reader) {
    constexpr char kLineEnds[] = "\r\n";
    char *rest = nullptr;
    char *line = zt_strtok_r(reader->text, kLineEnds, &rest);
    if (line == nullptr) return false;
    reader->line_count = 0;
    for (; line != nullptr && reader->line_count < kIniMaxLines;
         line = zt_strtok_r(nullptr, kLineEnds, &rest)) {
        if (trim_end(line)) reader->lines[reader->line_count++] = line;
    }
    return true;
}

std::string_view ini_find(const zt_ini_reader_t *reader, const char *section, const char *key) {
    const std::string_view wanted = section != nullptr ? section : "";
    const auto key_length = static_cast<uint32_t>(zt_strlen(key));
    bool inside = section == nullptr;
    for (int32_t i = 0; i < reader->line_count; ++i) {
        const char *line = reader->lines[i];
        if (is_comment(line)) continue;
        if (*line == '[') {
            const std::string_view whole(line, zt_strlen(line));
            if (whole.back() == ']') {  // others are entries
                if (inside) break;
                inside = std::string_view(line + 1, whole.size() - 2) == wanted;
                continue;
            }
        }
        if (!inside) continue;
        const char *value = value_of(line, key, key_length);
        if (value != nullptr) return without_quotes({value, zt_strlen(value)});
    }
    return {};
}

}  // namespace zt::detail
