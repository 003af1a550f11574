// Base64 on the caller's buffers: sizes, padding, validation, and the choice of kernels.
// SPDX-License-Identifier: MIT
#include "zt/base64.h"

#include "format/base64_kernels.hpp"
#include "format/kernel.hpp"
#include "zt/memory.h"

using namespace zt::detail;

namespace {

constexpr Kernel<Base64EncodeKernel> kEncodeKernels[] = {
    {"portable", nullptr, base64_encode_portable}};
constexpr Kernel<Base64DecodeKernel> kDecodeKernels[] = {
    {"portable", nullptr, base64_decode_portable}};
constexpr Kernel<Base64SpanKernel> kSpanKernels[] = {{"portable", nullptr, base64_span_portable}};
constinit Dispatch<Base64EncodeKernel> g_encode{kEncodeKernels};
constinit Dispatch<Base64DecodeKernel> g_decode{kDecodeKernels};
constinit Dispatch<Base64SpanKernel> g_span{kSpanKernels};

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
    Base64SpanKernel *span = g_span.get();
    for (uint64_t at = 0; at < length;) {
        if (count->padding == 0) {
            const size_t run = span(text + at, length - at);
            count->characters += run;
            at += run;
        }
        uint64_t skipped = 0;
        if (!skip_line_end(text + at, length - at, &skipped)) return false;
        at += skipped;
        if (skipped > 0 || at == length) continue;
        // Neither data nor a line end: padding, or nothing that belongs here.
        if (text[at] != '=' || ++count->padding > 2) return false;
        ++count->characters;
        ++at;
    }
    return true;
}

// Gathers characters across line ends into groups of four; returns how many bytes were written.
uint64_t decode_text(uint8_t *bytes, const char *text, uint64_t length) {
    uint8_t *out = bytes;
    uint32_t word = 0;
    uint32_t gathered = 0;
    int group_bits = 24;  // that a group gives: padding takes 8 each
    Base64SpanKernel *span = g_span.get();
    for (uint64_t at = 0; at < length;) {
        if (gathered == 0) {
            const size_t groups = span(text + at, length - at) / 4;
            g_decode.get()(out, text + at, groups);
            out += 3 * groups;
            at += 4 * groups;
            if (at == length) break;
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
    g_encode.get()(destination, bytes, whole);
    if (rest != 0) {
        uint8_t last[3] = {};
        zt_memcpy(last, bytes + 3 * whole, static_cast<uint32_t>(rest));
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
    *out_length = decode_text(static_cast<uint8_t *>(destination), source, length);
    return ZT_STATUS_SUCCESS;
}
