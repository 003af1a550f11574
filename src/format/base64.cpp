// Base64 on the caller's buffers: sizes, padding, validation, and the choice of kernels.
// SPDX-License-Identifier: MIT
#include "zt/base64.h"

#include "format/base64_kernels.hpp"
#include "format/simd/cpu.hpp"

using namespace zt::detail;

namespace {

constexpr Kernel<Base64EncodeKernel> kEncodeKernels[] = {
#if defined(__x86_64__)
    {"avx512", cpu_has_avx512_vbmi, base64_encode_avx512},
    {"avx2", cpu_has_avx2, base64_encode_avx2},
#elif defined(__aarch64__)
    {"neon", nullptr, base64_encode_neon},
#endif
    {"portable", nullptr, base64_encode_portable},
};
constexpr Kernel<Base64DecodeKernel> kDecodeKernels[] = {
#if defined(__x86_64__)
    {"avx512", cpu_has_avx512_vbmi, base64_decode_avx512},
    {"avx2", cpu_has_avx2, base64_decode_avx2},
#elif defined(__aarch64__)
    {"neon", nullptr, base64_decode_neon},
#endif
    {"portable", nullptr, base64_decode_portable},
};
constexpr Kernel<Base64CountKernel> kCountKernels[] = {
#if defined(__x86_64__)
    {"avx512", cpu_has_avx512_vbmi, base64_count_avx512},
    {"avx2", cpu_has_avx2, base64_count_avx2},
#elif defined(__aarch64__)
    {"neon", nullptr, base64_count_neon},
#endif
    {"portable", nullptr, base64_count_portable},
};

constexpr uint64_t kMostGroups = 0x3FFFFFFFFFFFFFFF;  // whose text and NUL have a 64-bit size

// What a text holds, and the size of the bytes it stands for.
struct TextCount {
    uint64_t characters;  // padding included
    uint32_t padding;

    uint64_t size() const {
        return 6 * (characters / 8) + (6 * (characters % 8) + 7) / 8 - padding;
    }
};

// The blanks and the line end at the start of a text. False: blanks that no line end follows.
bool skip_line_end(const char *text, uint64_t length, uint64_t *skipped) {
    uint64_t at = 0;
    while (at < length && text[at] == ' ') ++at;
    const bool blanks = at > 0;
    *skipped = at;
    if (at == length) return true;
    if (text[at] == '\r' && length - at >= 2 && text[at + 1] == '\n') ++at;
    if (text[at] != '\n') return !blanks;
    *skipped = at + 1;
    return true;
}

// Counts and checks the whole text; false when it is no base64.
bool count_text(const char *text, uint64_t length, TextCount *count) {
    Base64CountKernel *count_characters = g_base64_count.get();
    for (uint64_t at = 0; at < length;) {
        if (count->padding == 0) {
            at += count_characters(text + at, length - at, &count->characters);
        }
        if (at < length && text[at] == '=') {
            if (++count->padding > 2) return false;
            ++count->characters;
            ++at;
            continue;
        }
        uint64_t skipped = 0;
        if (!skip_line_end(text + at, length - at, &skipped)) return false;
        if (skipped == 0 && at < length) return false;  // data after padding, or no base64 at all
        at += skipped;
    }
    return true;
}

// Writes a text's last group, when it is whole and padded: how most texts end. Returns how many bytes
// it gave, 0 when the four characters are something else.
uint32_t decode_padded(uint8_t *bytes, const char *text) {
    const uint32_t value0 = kValues[static_cast<uint8_t>(text[0])];
    const uint32_t value1 = kValues[static_cast<uint8_t>(text[1])];
    const uint32_t value2 = kValues[static_cast<uint8_t>(text[2])];
    if (text[3] != '=' || (value0 | value1) >= kPadding || value2 > kPadding) return 0;
    bytes[0] = static_cast<uint8_t>(value0 << 2 | value1 >> 4);
    if (value2 == kPadding) return 1;
    bytes[1] = static_cast<uint8_t>(value1 << 4 | value2 >> 2);
    return 2;
}

// Gathers characters across line ends into groups of four; returns how many bytes were written.
uint64_t decode_text(uint8_t *bytes, uint64_t size, const char *text, uint64_t length) {
    uint8_t *out = bytes;
    uint32_t word = 0;
    uint32_t gathered = 0;
    int group_bits = 24;  // that a group gives: padding takes 8 each
    Base64DecodeKernel *decode_groups = g_base64_decode.get();
    for (uint64_t at = 0; at < length;) {
        if (gathered == 0) {
            const uint64_t room = size - static_cast<uint64_t>(out - bytes);
            const size_t run = decode_groups(out, room, text + at, length - at);
            out += run / 4 * 3;
            at += run;
            if (at == length) break;
            if (length - at == 4) {
                const uint32_t last = decode_padded(out, text + at);
                out += last;
                if (last > 0) break;
            }
        }
        const uint8_t value = kValues[static_cast<uint8_t>(text[at++])];
        if (value == kInvalid) continue;  // blanks and line ends: the text has been checked
        if (value == kPadding) group_bits -= 8;
        word = word << 6 | (value & 63);
        if (++gathered < 4) continue;
        for (int bits = 16; bits > 16 - group_bits; bits -= 8) {
            *out++ = static_cast<uint8_t>(word >> bits);
        }
        gathered = 0;
    }
    return static_cast<uint64_t>(out - bytes);
}

}  // namespace

constinit Dispatch<Base64EncodeKernel> zt::detail::g_base64_encode{kEncodeKernels};
constinit Dispatch<Base64DecodeKernel> zt::detail::g_base64_decode{kDecodeKernels};
constinit Dispatch<Base64CountKernel> zt::detail::g_base64_count{kCountKernels};

zt_status_t zt_base64_encode(char *destination, uint64_t size, uint64_t *out_length,
                             const void *source, uint64_t length) {
    if (length == 0) {
        *out_length = 0;
        return ZT_STATUS_SUCCESS;
    }
    const uint64_t whole = length / 3;
    const uint64_t rest = length % 3;
    const uint64_t groups = whole + (rest != 0 ? 1 : 0);
    const uint64_t needed = groups > kMostGroups ? UINT64_MAX : 4 * groups + 1;
    if (destination == nullptr || size < needed || groups > kMostGroups) {
        *out_length = needed;
        return ZT_STATUS_OUT_OF_MEMORY;
    }
    const auto *bytes = static_cast<const uint8_t *>(source);
    g_base64_encode.get()(destination, bytes, whole);
    if (rest != 0) {
        const uint8_t last[3] = {bytes[3 * whole], rest == 2 ? bytes[3 * whole + 1] : uint8_t{0},
                                 0};
        char *text = destination + 4 * whole;
        base64_encode_portable(text, last, 1);
        text[3] = '=';
        if (rest == 1) text[2] = '=';
    }
    destination[4 * groups] = '\0';
    *out_length = 4 * groups;
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_base64_decode(void *destination, uint64_t size, uint64_t *out_length,
                             const char *source, uint64_t length) {
    TextCount count = {0, 0};
    if (!count_text(source, length, &count)) return ZT_STATUS_INVALID_ARGUMENT;
    if (count.characters == 0) {
        *out_length = 0;
        return ZT_STATUS_SUCCESS;
    }
    const uint64_t needed = count.size();
    if (destination == nullptr || size < needed) {
        *out_length = needed;
        return ZT_STATUS_OUT_OF_MEMORY;
    }
    *out_length = decode_text(static_cast<uint8_t *>(destination), needed, source, length);
    return ZT_STATUS_SUCCESS;
}
