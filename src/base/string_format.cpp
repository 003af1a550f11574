// Replacing a piece of text in place, and what is formatted before it is used.
// SPDX-License-Identifier: MIT
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "zt/memory.h"
#include "zt/string.h"

namespace {

constexpr size_t kReplacementSize = 256;
constexpr size_t kCommandSize = 4096;

}  // namespace

zt_status_t zt_str_replace(char *string, uint32_t size, const char *old_text,
                           const char *new_text) {
    char *match = zt_strstr(string, old_text);
    if (match == nullptr) return ZT_STATUS_MISMATCH;

    const size_t old_length = zt_strlen(old_text);
    const size_t new_length = zt_strlen(new_text);
    const size_t tail_length = zt_strlen(match) - old_length;
    const size_t result_length = static_cast<size_t>(match - string) + new_length + tail_length;
    if (result_length >= size) return ZT_STATUS_NO_SPACE;

    // The result fits size, so each of its pieces fits the 32-bit counts. The tail goes first: the
    // new text may be longer than the old one.
    if (tail_length != 0) {
        zt_memmove(match + new_length, match + old_length, static_cast<uint32_t>(tail_length));
    }
    zt_memcpy(match, new_text, static_cast<uint32_t>(new_length));
    string[result_length] = '\0';
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_str_replace_fmt(char *string, uint32_t size, const char *old_text,
                               const char *format, ...) {
    char new_text[kReplacementSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(new_text, sizeof new_text, format, arguments);
    va_end(arguments);
    if (length < 0) return ZT_STATUS_UNKNOWN_ERROR;
    if (static_cast<size_t>(length) >= sizeof new_text) return ZT_STATUS_NO_SPACE;
    return zt_str_replace(string, size, old_text, new_text);
}

zt_status_t zt_system(const char *format, ...) {
    char command[kCommandSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(command, sizeof command, format, arguments);
    va_end(arguments);
    // What a failed call leaves in the buffer is the beginning of a command that nobody meant.
    if (length < 0) return ZT_STATUS_UNKNOWN_ERROR;
    if (std::system(command) < 0) return zt_get_status_by_errno(errno);
    return ZT_STATUS_SUCCESS;
}
