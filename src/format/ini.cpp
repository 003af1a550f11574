// Creating INI readers and looking values up.
// SPDX-License-Identifier: MIT
#include "zt/ini.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "format/ini_lines.hpp"
#include "zt/memory.h"
#include "zt/string.h"

static_assert(offsetof(zt_ini_reader_t, lines) == 8);
static_assert(offsetof(zt_ini_reader_t, text) == 8 + 8 * kIniMaxLines);

using namespace zt::detail;

namespace {

// A terminated copy of the text, or null.
char *copy_of(const char *text, uint32_t length) {
    if (length == UINT32_MAX) return nullptr;  // no room for the NUL in 32 bits
    auto *copy = static_cast<char *>(zt_malloc(length + 1));
    if (copy == nullptr) return nullptr;
    zt_memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}

// The size of an open file, which is left at its start; a status when it cannot be read into memory.
zt_status_t size_of(std::FILE *file, uint32_t *size) {
    if (std::fseek(file, 0, SEEK_END) != 0) return zt_get_status_by_errno(errno);
    const long end = std::ftell(file);
    if (end < 0) return zt_get_status_by_errno(errno);
    if (end > static_cast<long>(UINT32_MAX)) return ZT_STATUS_TOO_LARGE;
    std::rewind(file);
    *size = static_cast<uint32_t>(end);
    return end > 0 ? ZT_STATUS_SUCCESS : ZT_STATUS_INVALID_ARGUMENT;
}

zt_status_t create_from_open_file(zt_ini_reader_t **reader, std::FILE *file) {
    uint32_t size = 0;
    const zt_status_t status = size_of(file, &size);
    if (status != ZT_STATUS_SUCCESS) return status;
    auto *text = static_cast<char *>(zt_malloc(size));
    if (text == nullptr) return ZT_STATUS_OUT_OF_MEMORY;
    const bool complete = std::fread(text, 1, size, file) == size;
    const zt_status_t created =
        complete ? zt_ini_reader_create(reader, text, size) : ZT_STATUS_OUT_OF_MEMORY;
    zt_free(text);
    return created;
}

// Looks a number up into result, which may be null, through one of the parsers.
template <typename Number, typename Parse>
zt_status_t get_number(const zt_ini_reader_t *reader, const char *section, const char *key,
                       Number *result, Parse parse) {
    char text[128];
    const zt_status_t status = zt_ini_reader_get_string(reader, section, key, text, sizeof text);
    if (status == ZT_STATUS_SUCCESS && result != nullptr) *result = parse(text, nullptr, 0);
    return status;
}

// The getter's result, or the default when it fails.
template <typename Value, typename Get>
Value value_or(const zt_ini_reader_t *reader, const char *section, const char *key,
               Value default_value, Get get) {
    Value value = default_value;
    return get(reader, section, key, &value) == ZT_STATUS_SUCCESS ? value : default_value;
}

}  // namespace

zt_status_t zt_ini_reader_create(zt_ini_reader_t **reader, const char *text, uint32_t length) {
    if (reader == nullptr || text == nullptr || length == 0) return ZT_STATUS_INVALID_ARGUMENT;
    char *copy = copy_of(text, length);
    if (copy == nullptr) return ZT_STATUS_OUT_OF_MEMORY;
    auto *created = static_cast<zt_ini_reader_t *>(zt_malloc(sizeof(zt_ini_reader_t)));
    if (created == nullptr) {
        zt_free(copy);
        *reader = nullptr;
        return ZT_STATUS_OUT_OF_MEMORY;
    }
    created->text = copy;
    if (!ini_split(created)) {
        zt_ini_read_destroy(created);
        return ZT_STATUS_INVALID_ARGUMENT;
    }
    *reader = created;
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ini_reader_create_from_file(zt_ini_reader_t **reader, const char *path) {
    if (reader == nullptr || path == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    std::FILE *file = std::fopen(path, "r");
    if (file == nullptr) return zt_get_status_by_errno(errno);
    const zt_status_t status = create_from_open_file(reader, file);
    std::fclose(file);
    return status;
}

void zt_ini_read_destroy(zt_ini_reader_t *reader) {
    if (reader == nullptr) return;
    zt_free(reader->text);
    zt_free(reader);
}

zt_status_t zt_ini_reader_get_string(const zt_ini_reader_t *reader, const char *section,
                                     const char *key, char *value, int32_t size) {
    const std::string_view found = ini_find(reader, section, key);
    if (found.data() == nullptr) return ZT_STATUS_NOT_EXIST;
    if (size <= 0 || found.size() >= static_cast<uint32_t>(size)) return ZT_STATUS_NO_SPACE;
    if (value == nullptr) return ZT_STATUS_SUCCESS;
    // Not zt_strncpy: the value may end before a quote that stays in the line.
    const auto length = static_cast<uint32_t>(found.size());
    zt_memcpy(value, found.data(), length);
    zt_memset(value + length, 0, static_cast<uint32_t>(size) - length);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ini_reader_get_string_default(const zt_ini_reader_t *reader, const char *section,
                                             const char *key, const char *default_value,
                                             char *value, int32_t size) {
    const zt_status_t status = zt_ini_reader_get_string(reader, section, key, value, size);
    if (status == ZT_STATUS_SUCCESS || default_value == nullptr || value == nullptr || size <= 0 ||
        zt_strlen(default_value) >= static_cast<uint32_t>(size)) {
        return status;
    }
    return zt_strncpy(value, default_value, static_cast<uint32_t>(size));
}

zt_status_t zt_ini_reader_get_boolean(const zt_ini_reader_t *reader, const char *section,
                                      const char *key, bool *result) {
    char text[8];
    const zt_status_t status = zt_ini_reader_get_string(reader, section, key, text, sizeof text);
    if (status == ZT_STATUS_SUCCESS) *result = zt_strncmp(text, "true", sizeof "true") == 0;
    return status;
}

bool zt_ini_reader_get_boolean_default(const zt_ini_reader_t *reader, const char *section,
                                       const char *key, bool default_value) {
    return value_or(reader, section, key, default_value, zt_ini_reader_get_boolean);
}

zt_status_t zt_ini_reader_get_int(const zt_ini_reader_t *reader, const char *section,
                                  const char *key, int32_t *result) {
    return get_number(reader, section, key, result, zt_strtol);
}

zt_status_t zt_ini_reader_get_uint(const zt_ini_reader_t *reader, const char *section,
                                   const char *key, uint32_t *result) {
    return get_number(reader, section, key, result, zt_strtoul);
}

zt_status_t zt_ini_reader_get_int64(const zt_ini_reader_t *reader, const char *section,
                                    const char *key, int64_t *result) {
    return get_number(reader, section, key, result, zt_strtoll);
}

zt_status_t zt_ini_reader_get_uint64(const zt_ini_reader_t *reader, const char *section,
                                     const char *key, uint64_t *result) {
    return get_number(reader, section, key, result, zt_strtoull);
}

int32_t zt_ini_reader_get_int_default(const zt_ini_reader_t *reader, const char *section,
                                      const char *key, int32_t default_value) {
    return value_or(reader, section, key, default_value, zt_ini_reader_get_int);
}

uint32_t zt_ini_reader_get_uint_default(const zt_ini_reader_t *reader, const char *section,
                                        const char *key, uint32_t default_value) {
    return value_or(reader, section, key, default_value, zt_ini_reader_get_uint);
}

int64_t zt_ini_reader_get_int64_default(const zt_ini_reader_t *reader, const char *section,
                                        const char *key, int64_t default_value) {
    return value_or(reader, section, key, default_value, zt_ini_reader_get_int64);
}

uint64_t zt_ini_reader_get_uint64_default(const zt_ini_reader_t *reader, const char *section,
                                          const char *key, uint64_t default_value) {
    return value_or(reader, section, key, default_value, zt_ini_reader_get_uint64);
}
