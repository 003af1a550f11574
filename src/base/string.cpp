// The C library's string functions under the library's own names, and small relatives of them.
// SPDX-License-Identifier: MIT
#include "zt/string.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "base/compare_text.hpp"

namespace {

// The case tables of the C library reach down to -128: bytes above 127 index them as they are.
template <typename Map>
char *map_bytes(char *string, Map map) {
    if (string == nullptr) return string;
    for (char *p = string; *p != '\0'; ++p) {
        *p = static_cast<char>(map(int{static_cast<signed char>(*p)}));
    }
    return string;
}

}  // namespace

size_t zt_strlen(const char *string) { return std::strlen(string); }

int zt_strncmp(const char *first, const char *second, uint32_t count) {
    return std::strncmp(first, second, count);
}

int zt_strncasecmp(const char *first, const char *second, uint32_t count) {
    return strncasecmp(first, second, count);
}

char *zt_strchr(const char *string, int character) {
    return const_cast<char *>(std::strchr(string, character));
}

char *zt_strrchr(const char *string, int character) {
    return const_cast<char *>(std::strrchr(string, character));
}

char *zt_strstr(const char *haystack, const char *needle) {
    return const_cast<char *>(std::strstr(haystack, needle));
}

char *zt_strtok_r(char *string, const char *delimiters, char **save) {
    return strtok_r(string, delimiters, save);
}

int64_t zt_strtoll(const char *string, char **end, int base) {
    return std::strtoll(string, end, base);
}

uint64_t zt_strtoull(const char *string, char **end, int base) {
    return std::strtoull(string, end, base);
}

// A long has 64 bits here: the parser's own limits lie beyond the ones below.
int32_t zt_strtol(const char *string, char **end, int base) {
    using Limits = std::numeric_limits<int32_t>;
    const long value = std::strtol(string, end, base);
    if (value < Limits::min()) return Limits::min();
    if (value > Limits::max()) return Limits::max();
    return static_cast<int32_t>(value);
}

uint32_t zt_strtoul(const char *string, char **end, int base) {
    const unsigned long value = std::strtoul(string, end, base);
    return value > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(value);
}

zt_status_t zt_strncpy(char *destination, const char *source, uint32_t size) {
    if (destination == nullptr || size == 0) return ZT_STATUS_INVALID_ARGUMENT;
    // strncpy for its padding: nobody finds the buffer's old bytes behind the text.
    std::strncpy(destination, source, size);
    destination[size - 1] = '\0';
    return ZT_STATUS_SUCCESS;
}

char *zt_strlwr(char *string) {
    return map_bytes(string, [](int byte) { return std::tolower(byte); });
}

char *zt_strupr(char *string) {
    return map_bytes(string, [](int byte) { return std::toupper(byte); });
}

bool zt_str_beginwith(const char *string, const char *prefix) {
    return zt_strstr(string, prefix) == string;
}

bool zt_str_endwith(const char *string, const char *suffix) {
    // Full width, unlike the counts: the difference is right for any text.
    const size_t length = zt_strlen(string);
    const size_t suffix_length = zt_strlen(suffix);
    if (length < suffix_length) return false;
    return zt::detail::compare_text(string + (length - suffix_length), suffix) == 0;
}
