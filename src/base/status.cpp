// Look-ups in the built-in status table and in the rows that the application registered.
// SPDX-License-Identifier: MIT
#include "zt/status.h"

#include <cstddef>
#include <cstdio>
#include <type_traits>

#include "base/compare_text.hpp"
#include "base/status_table.hpp"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_status_entry_t> && sizeof(zt_status_entry_t) == 24);
static_assert(offsetof(zt_status_entry_t, status) == 0);
static_assert(offsetof(zt_status_entry_t, code) == 8);
static_assert(offsetof(zt_status_entry_t, description) == 16);

namespace {

using zt::detail::compare_text;
using zt::detail::kErrnoCount;
using zt::detail::kRowsByCode;
using zt::detail::kStatusByErrno;
using zt::detail::kStatusRows;

// The application's rows, in byte order of their code names. Grown by replacement, never freed.
constinit zt_status_entry_t *g_extra = nullptr;
constinit uint32_t g_extra_count = 0;

// Built-in numbers cannot be registered again, so the order of the two searches shows nowhere.
const zt_status_entry_t *find_by_status(zt_status_t status) {
    if (status >= 0 && static_cast<size_t>(status) < kStatusRows.size()) {
        return &kStatusRows[static_cast<size_t>(status)];
    }
    for (uint32_t i = 0; i < g_extra_count; ++i) {
        if (g_extra[i].status == status) return &g_extra[i];
    }
    return nullptr;
}

// Binary search among count rows in code-name order; row_at(i) gives the i-th of them.
template <typename RowAt>
const zt_status_entry_t *search_by_code(const char *code, uint32_t count, RowAt row_at) {
    uint32_t low = 0;
    uint32_t high = count;
    while (low < high) {
        const uint32_t middle = low + (high - low) / 2;
        const int order = compare_text(code, row_at(middle)->code);
        if (order == 0) return row_at(middle);
        if (order < 0) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return nullptr;
}

const zt_status_entry_t *find_by_code(const char *code) {
    const auto *row = search_by_code(code, static_cast<uint32_t>(kRowsByCode.size()),
                                     [](uint32_t i) { return &kStatusRows[kRowsByCode[i]]; });
    if (row != nullptr) return row;
    return search_by_code(code, g_extra_count, [](uint32_t i) { return &g_extra[i]; });
}

bool clashes(const zt_status_entry_t &row) {
    return find_by_status(row.status) != nullptr || find_by_code(row.code) != nullptr;
}

// Keeps rows[0..count] in code-name order; equal names keep their order of arrival.
void insert_by_code(zt_status_entry_t *rows, uint32_t count, const zt_status_entry_t &row) {
    uint32_t place = count;
    for (; place > 0 && compare_text(row.code, rows[place - 1].code) < 0; --place) {
        rows[place] = rows[place - 1];
    }
    rows[place] = row;
}

}  // namespace

const char *zt_get_status_string(zt_status_t status) {
    const zt_status_entry_t *row = find_by_status(status);
    return row != nullptr ? row->description : "Unknown status code";
}

const char *zt_get_status_code(zt_status_t status) {
    const zt_status_entry_t *row = find_by_status(status);
    return row != nullptr ? row->code : "Unknown";
}

zt_status_t zt_code_to_status(const char *code) {
    const zt_status_entry_t *row = find_by_code(code);
    return row != nullptr ? row->status : ZT_STATUS_UNKNOWN_ERROR;
}

zt_status_t zt_get_status_by_errno(int32_t errno_value) {
    const auto index = static_cast<uint32_t>(errno_value);
    if (index >= kErrnoCount) return ZT_STATUS_UNKNOWN_ERROR;
    return kStatusByErrno[index];
}

void zt_status_extend_register(const zt_status_entry_t *rows, uint32_t count) {
    if (rows == nullptr || count == 0) return;
    for (uint32_t i = 0; i < count; ++i) {
        if (!clashes(rows[i])) continue;
        std::printf("repeat status code!!! status=%d code=%s\n", rows[i].status, rows[i].code);
        std::fflush(stdout);
        return;
    }

    // The grown copy is complete before it takes the old one's place: if it cannot be made, nothing
    // has changed.
    const uint64_t total = uint64_t{g_extra_count} + count;
    const uint64_t bytes = total * sizeof(zt_status_entry_t);
    if (bytes > UINT32_MAX) return;
    auto *grown = static_cast<zt_status_entry_t *>(zt_malloc(static_cast<uint32_t>(bytes)));
    if (grown == nullptr) return;

    if (g_extra_count > 0) {
        zt_memcpy(grown, g_extra, static_cast<uint32_t>(g_extra_count * sizeof(zt_status_entry_t)));
    }
    for (uint32_t i = 0; i < count; ++i) insert_by_code(grown, g_extra_count + i, rows[i]);
    zt_free(g_extra);
    g_extra = grown;
    g_extra_count = static_cast<uint32_t>(total);
}
