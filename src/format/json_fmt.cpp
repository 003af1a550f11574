// The JSON writer: which format a value takes, and the pieces that go out.
// SPDX-License-Identifier: MIT
#include "zt/json_fmt.h"

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "zt/base64.h"
#include "zt/list.h"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_json_fmt_t> && sizeof(zt_json_fmt_t) == 176);
static_assert(offsetof(zt_json_fmt_t, items) == 32 && offsetof(zt_json_fmt_t, depth) == 160);
static_assert(offsetof(zt_json_fmt_t, print) == 168);
static_assert(offsetof(zt_json_fmt_file_t, fmt) == sizeof(FILE *));

namespace {

constexpr int32_t kMaxDepth = 31;
constexpr size_t kNumberSize = 128;
constexpr size_t kShortName = 63;
constexpr uint64_t kChunkSize = 384;  // a multiple of 3: the chunks' texts join into one
constexpr size_t kChunkText = 512;

// A value's printf format as the first of its container and behind another, with a name and without.
struct Forms {
    const char *first_named;
    const char *first;
    const char *later_named;
    const char *later;
};
constexpr Forms kInt32 = {"%s\"%s\": %d", "%s%d", ",\n%s\"%s\": %d", ",\n%s%d"};
constexpr Forms kInt64 = {"%s\"%s\": %lld", "%s%lld", ",\n%s\"%s\": %lld", ",\n%s%lld"};
constexpr Forms kUint32 = {"%s\"%s\": %u", "%s%u", ",\n%s\"%s\": %u", ",\n%s%u"};
constexpr Forms kUint64 = {"%s\"%s\": %llu", "%s%llu", ",\n%s\"%s\": %llu", ",\n%s%llu"};
constexpr Forms kWord = {"%s\"%s\": %s", "%s%s", ",\n%s\"%s\": %s", ",\n%s%s"};
constexpr Forms kString = {"%s\"%s\": \"%s\"", "%s\"%s\"", ",\n%s\"%s\": \"%s\"", ",\n%s\"%s\""};
constexpr Forms kBlobStart = {"%s\"%s\": \"%s", "%s\"%s", ",\n%s\"%s\": \"%s", ",\n%s\"%s"};
constexpr Forms kObject = {"%s\"%s\": {\n", "%s{\n", ",\n%s\"%s\": {\n", ",\n%s{\n"};
constexpr Forms kArray = {"%s\"%s\": [\n", "%s[\n", ",\n%s\"%s\": [\n", ",\n%s[\n"};

std::FILE *file_of(zt_json_fmt_t *fmt) { return ZT_CONTAINER_OF(fmt, zt_json_fmt_file_t, fmt)->fp; }

int print_to_file(zt_json_fmt_t *fmt, const char *format, va_list arguments) {
    std::FILE *fp = file_of(fmt);
    return fp != nullptr ? std::vfprintf(fp, format, arguments) : 0;
}

void emit(zt_json_fmt_t *fmt, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    fmt->print(fmt, format, arguments);
    va_end(arguments);
}

void format_number(char (&text)[kNumberSize], const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (std::vsnprintf(text, sizeof text, format, arguments) < 0) text[0] = '\0';
    va_end(arguments);
}

// Inside containers that are left out nothing is written.
bool left_out(const zt_json_fmt_t *fmt) { return fmt->depth > kMaxDepth; }

// The start of a value; Value is empty for a container.
template <typename... Value>
void emit_value(zt_json_fmt_t *fmt, const Forms &forms, const char *name, Value... value) {
    const bool later = fmt->items[fmt->depth] != 0;
    if (name != nullptr) {
        emit(fmt, later ? forms.later_named : forms.first_named, fmt->indent, name, value...);
    } else {
        emit(fmt, later ? forms.later : forms.first, fmt->indent, value...);
    }
}

template <typename Value>
void add(zt_json_fmt_t *fmt, const Forms &forms, const char *name, Value value) {
    if (left_out(fmt)) return;
    emit_value(fmt, forms, name, value);
    ++fmt->items[fmt->depth];
}

// Puts text in front of what starts at end.
char *prepend(char *end, const char *text, size_t length) {
    char *start = end - length;
    for (size_t i = 0; i < length; ++i) start[i] = text[i];
    return start;
}

// Most of what goes to files is integers. Composed here, from the last digit to the separator, they
// take about half of the time that printf takes for the same text. False when the name is too long.
bool integer_to_file(zt_json_fmt_t *fmt, const char *name, bool negative, uint64_t magnitude) {
    const size_t name_length = name != nullptr ? strnlen(name, kShortName + 1) : 0;
    if (name_length > kShortName) return false;
    char text[2 + sizeof fmt->indent + kShortName + 24 + 4];
    char *start = text + sizeof text;
    do {
        *--start = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (negative) *--start = '-';
    if (name != nullptr) {
        start = prepend(start, "\": ", 3);
        start = prepend(start, name, name_length);
        *--start = '"';
    }
    start = prepend(start, fmt->indent, static_cast<size_t>(fmt->depth));
    if (fmt->items[fmt->depth] != 0) start = prepend(start, ",\n", 2);
    std::FILE *fp = file_of(fmt);
    const auto length = static_cast<size_t>(text + sizeof text - start);
    if (fp != nullptr) std::fwrite(start, 1, length, fp);
    return true;
}

template <typename Value>
void add_integer(zt_json_fmt_t *fmt, const Forms &forms, const char *name, Value value) {
    if (left_out(fmt)) return;
    const bool negative = value < 0;
    const auto bits = static_cast<uint64_t>(value);
    if (fmt->print != print_to_file ||
        !integer_to_file(fmt, name, negative, negative ? 0 - bits : bits)) {
        emit_value(fmt, forms, name, value);
    }
    ++fmt->items[fmt->depth];
}

void open(zt_json_fmt_t *fmt, const Forms &forms, const char *name) {
    if (fmt->depth >= kMaxDepth) {
        if (fmt->depth < INT32_MAX) ++fmt->depth;  // counted, so that its close finds it
        return;
    }
    emit_value(fmt, forms, name);
    fmt->indent[fmt->depth] = '\t';
    ++fmt->depth;
    fmt->items[fmt->depth] = 0;
}

void close(zt_json_fmt_t *fmt, const char *format_when_empty, const char *format) {
    if (fmt->depth <= 0) return;
    const bool inside_left_out = left_out(fmt);
    --fmt->depth;
    if (inside_left_out) return;
    const bool empty = fmt->items[fmt->depth + 1] == 0;
    fmt->indent[fmt->depth] = '\0';
    emit(fmt, empty ? format_when_empty : format, fmt->indent);
    ++fmt->items[fmt->depth];
}

}  // namespace

zt_status_t zt_json_fmt_open_file(zt_json_fmt_file_t *file, const char *path) {
    std::FILE *fp = path != nullptr ? std::fopen(path, "w") : nullptr;
    if (fp == nullptr) return ZT_STATUS_IO_ERROR;
    zt_memset(file, 0, sizeof *file);
    file->fp = fp;
    file->fmt.print = print_to_file;
    return ZT_STATUS_SUCCESS;
}

void zt_json_fmt_close_file(zt_json_fmt_file_t *file) {
    if (file->fp == nullptr) return;
    std::fclose(file->fp);
    file->fp = nullptr;
}

void zt_json_fmt_open_object(zt_json_fmt_t *fmt, const char *name) { open(fmt, kObject, name); }

void zt_json_fmt_close_object(zt_json_fmt_t *fmt) { close(fmt, "%s}", "\n%s}"); }

void zt_json_fmt_open_array(zt_json_fmt_t *fmt, const char *name) { open(fmt, kArray, name); }

void zt_json_fmt_close_array(zt_json_fmt_t *fmt) { close(fmt, "%s]", "\n%s]"); }

void zt_json_fmt_add_int32(zt_json_fmt_t *fmt, const char *name, int32_t value) {
    add_integer(fmt, kInt32, name, value);
}

void zt_json_fmt_add_int64(zt_json_fmt_t *fmt, const char *name, int64_t value) {
    add_integer(fmt, kInt64, name, static_cast<long long>(value));
}

void zt_json_fmt_add_uint32(zt_json_fmt_t *fmt, const char *name, uint32_t value) {
    add_integer(fmt, kUint32, name, value);
}

void zt_json_fmt_add_uint64(zt_json_fmt_t *fmt, const char *name, uint64_t value) {
    add_integer(fmt, kUint64, name, static_cast<unsigned long long>(value));
}

void zt_json_fmt_add_bool(zt_json_fmt_t *fmt, const char *name, bool value) {
    add(fmt, kWord, name, value ? "true" : "false");
}

void zt_json_fmt_add_string(zt_json_fmt_t *fmt, const char *name, const char *value) {
    add(fmt, kString, name, value != nullptr ? value : "");
}

void zt_json_fmt_add_float(zt_json_fmt_t *fmt, const char *name, const char *number_format,
                           float value) {
    zt_json_fmt_add_double(fmt, name, number_format, static_cast<double>(value));
}

void zt_json_fmt_add_double(zt_json_fmt_t *fmt, const char *name, const char *number_format,
                            double value) {
    char text[kNumberSize];
    format_number(text, number_format, value);
    add(fmt, kWord, name, static_cast<const char *>(text));
}

void zt_json_fmt_add_blob_b64(zt_json_fmt_t *fmt, const char *name, const void *data,
                              uint64_t size) {
    if (size == 0) return zt_json_fmt_add_string(fmt, name, "");
    if (left_out(fmt)) return;
    const auto *bytes = static_cast<const uint8_t *>(data);
    for (uint64_t done = 0; done < size; done += kChunkSize) {
        const uint64_t left = size - done;
        char text[kChunkText + 2];  // a quote and a NUL may follow
        uint64_t length = 0;
        zt_base64_encode(text, sizeof text, &length, bytes + done,
                         left < kChunkSize ? left : kChunkSize);
        if (left <= kChunkSize) {
            text[length] = '"';
            text[length + 1] = '\0';
        }
        if (done == 0) {
            emit_value(fmt, kBlobStart, name, static_cast<const char *>(text));
        } else {
            emit(fmt, "%s", text);
        }
    }
    ++fmt->items[fmt->depth];
}
