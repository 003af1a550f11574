// Hex dump of a buffer, built line by line on the stack.
// SPDX-License-Identifier: MIT
#include "zt/hex.h"

#include <syslog.h>

#include <bit>
#include <cctype>
#include <cstdio>

#include "zt/memory.h"

namespace {

constexpr uint32_t kLineBytes = 16;
constexpr uint32_t kLineSize = 131;  // the longest line takes 65 and the NUL
constexpr int kPriority = LOG_USER | LOG_INFO;

struct Line {
    const uint8_t *bytes;
    uint32_t count;   // 1 to kLineBytes
    uint32_t offset;  // of the first byte, from the start of the dump
};

// Bytes a group holds on this line.
uint32_t group_size(const Line &line, int32_t group_width) {
    if (group_width < ZT_HEX_GROUP_16BIT || group_width > ZT_HEX_GROUP_64BIT) return 1;
    const uint32_t size = 1U << group_width;
    return line.count % size == 0 ? size : 1;
}

// The digits of one group as the machine reads it as a number: the most significant byte first.
// Byte by byte, so that alignment does not matter. Returns their end.
char *put_group(char *out, const uint8_t *group, uint32_t size) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (uint32_t i = 0; i < size; ++i) {
        const bool little = std::endian::native == std::endian::little;
        const uint8_t byte = group[little ? size - 1 - i : i];
        *out++ = kDigits[byte >> 4];
        *out++ = kDigits[byte & 0xF];
    }
    return out;
}

// The groups over a ground of blanks, then the characters in their column.
void build(char (&text)[kLineSize], const Line &line, int32_t group_width) {
    const uint32_t size = group_size(line, group_width);
    const uint32_t character_column = 33 + kLineBytes / size;
    zt_memset(text, ' ', character_column);
    char *out = text;
    for (uint32_t at = 0; at < line.count; at += size) {
        out = put_group(out, line.bytes + at, size) + 1;
    }
    out = text + character_column;
    for (uint32_t at = 0; at < line.count; ++at) {
        const int byte = line.bytes[at];
        *out++ = byte < 128 && std::isprint(byte) != 0 ? static_cast<char>(byte) : '.';
    }
    *out = '\0';
}

void print(const char *text, const Line &line, int32_t prefix_type) {
    const void *address = line.bytes;
    if (prefix_type == ZT_HEX_PREFIX_ADDRESS) {
        std::printf("%p: %s\n", address, text);
    } else if (prefix_type == ZT_HEX_PREFIX_OFFSET) {
        std::printf("%.8x: %s\n", line.offset, text);
    } else {
        std::puts(text);
    }
    std::fflush(stdout);
}

void print_to_syslog(const char *text, const Line &line, int32_t prefix_type) {
    const void *address = line.bytes;
    if (prefix_type == ZT_HEX_PREFIX_ADDRESS) {
        syslog(kPriority, "%p: %s\n", address, text);
    } else if (prefix_type == ZT_HEX_PREFIX_OFFSET) {
        syslog(kPriority, "%.8x: %s\n", line.offset, text);
    } else {
        syslog(kPriority, "%s\n", text);
    }
}

}  // namespace

void zt_print_hex(int32_t to_syslog, int32_t prefix_type, int32_t group_width, const void *buffer,
                  int32_t length) {
    if (buffer == nullptr || length <= 0) return;
    const auto *bytes = static_cast<const uint8_t *>(buffer);
    const auto total = static_cast<uint32_t>(length);  // leaves room for the last step past the end
    for (uint32_t offset = 0; offset < total; offset += kLineBytes) {
        const uint32_t left = total - offset;
        const Line line = {bytes + offset, left < kLineBytes ? left : kLineBytes, offset};
        char text[kLineSize];
        build(text, line, group_width);
        if (to_syslog == 0) {
            print(text, line, prefix_type);
        } else {
            print_to_syslog(text, line, prefix_type);
        }
    }
}
