// The registry of log categories, sorted by name, and the levels and output that loggers read.
// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <type_traits>

#include "zt/log.h"
#include "zt/string.h"

static_assert(std::is_standard_layout_v<zt_logging_category_t>);
static_assert(sizeof(zt_logging_category_t) == 16 && offsetof(zt_logging_category_t, level) == 0);
static_assert(offsetof(zt_logging_category_t, name) == 8);
static_assert(std::atomic_ref<int32_t>::is_always_lock_free && sizeof(bool) == 1);

// The macros of the public header read these as plain objects.
constinit int32_t zt__g_logc_global_level = ZT_LOG_LEVEL_TRACE;
constinit zt_logc_print_cb_t zt__g_logc_print_cb = nullptr;

namespace {

constexpr uint32_t kNameBytes = 128;  // as far as names are compared
constexpr int32_t kOwnCapacity = 512;

// Sorted by name, so that look-ups halve it. The array is the library's own until zt_logc_init
// brings a larger one; it is reshaped at program start only and needs no lock.
constinit zt_logging_category_t *g_own_array[kOwnCapacity] = {};
constinit zt_logging_category_t **g_categories = g_own_array;
constinit int32_t g_capacity = kOwnCapacity;
constinit int32_t g_count = 0;

// Levels are read by threads that log while another one sets them. Nothing hangs on their order
// relative to other memory, so relaxed is enough.
void store_level(int32_t &level, int32_t value) {
    std::atomic_ref(level).store(value, std::memory_order_relaxed);
}

int32_t load_level(int32_t &level) {
    return std::atomic_ref(level).load(std::memory_order_relaxed);
}

struct Place {
    int32_t index;  // of the category, or where it would be inserted
    bool found;
};

// Binary search. When the name is missing, low has come to rest where it belongs.
Place find(const char *name) {
    int32_t low = 0;
    int32_t high = g_count - 1;
    while (low <= high) {
        const int32_t middle = low + (high - low) / 2;
        const int order = zt_strncmp(g_categories[middle]->name, name, kNameBytes);
        if (order == 0) return {middle, true};
        if (order > 0) {
            high = middle - 1;
        } else {
            low = middle + 1;
        }
    }
    return {low, false};
}

// The category with this name, or null.
zt_logging_category_t *lookup(const char *name) {
    if (name == nullptr) return nullptr;
    const Place place = find(name);
    return place.found ? g_categories[place.index] : nullptr;
}

void report_full_array() {
    std::puts(
        "ERROR: Logging category's array is not enough! Please call ZT_LOGGING_CATEGORY_INIT to "
        "increase the max_items!");
    std::fflush(stdout);
}

}  // namespace

void zt_logc_init(zt_logging_category_t **categories, int32_t max_items, int32_t global_level) {
    // No array is an array without room: registrations are refused, nothing is written through it.
    if (categories == nullptr) max_items = 0;
    if (g_count > 0 && max_items < g_count) {
        report_full_array();
        return;
    }
    for (int32_t i = 0; i < g_count; ++i) categories[i] = g_categories[i];
    g_categories = categories;
    g_capacity = max_items;
    zt_logc_set_global_level(global_level);
}

void zt_logging_category_reg(zt_logging_category_t *category) {
    if (category == nullptr || category->name == nullptr) return;
    const Place place = find(category->name);
    // A name that is taken is the more telling mistake, also when the array is full.
    if (place.found) {
        std::printf("ERROR: Failed to register logging category: %s\n", category->name);
        std::fflush(stdout);
        zt_logc_dump_categories();
        return;
    }
    if (g_count >= g_capacity) {
        report_full_array();
        return;
    }
    for (int32_t i = g_count; i > place.index; --i) g_categories[i] = g_categories[i - 1];
    g_categories[place.index] = category;
    ++g_count;
}

void zt_logc_set_level(const char *name, int32_t level) {
    zt_logging_category_t *category = lookup(name);
    if (category != nullptr) store_level(category->level, level);
}

int32_t zt_logc_get_level(const char *name) {
    zt_logging_category_t *category = lookup(name);
    return category != nullptr ? load_level(category->level) : -1;
}

void zt_logc_set_level_by_prefix(const char *prefix, int32_t level) {
    if (prefix == nullptr) return;
    const auto length = static_cast<uint32_t>(zt_strlen(prefix));
    for (int32_t i = 0; i < g_count; ++i) {
        zt_logging_category_t &category = *g_categories[i];
        if (zt_strncmp(category.name, prefix, length) == 0) store_level(category.level, level);
    }
}

void zt_logc_set_global_level(int32_t level) { store_level(zt__g_logc_global_level, level); }

int32_t zt_logc_get_global_level() { return load_level(zt__g_logc_global_level); }

void zt_logc_set_print_cb(zt_logc_print_cb_t print_cb) {
    std::atomic_ref(zt__g_logc_print_cb).store(print_cb, std::memory_order_relaxed);
}

void zt_logc_dump_categories() {
    std::printf("Logging category global level: %d\n", zt_logc_get_global_level());
    std::fflush(stdout);
    std::printf("Total %d logging categories:\n", g_count);
    std::fflush(stdout);
    for (int32_t i = 0; i < g_count; ++i) {
        std::printf("    %03d: %-16s level=%d\n", i, g_categories[i]->name,
                    load_level(g_categories[i]->level));
        std::fflush(stdout);
    }
}

void zt_logc_get_categories(zt_logging_category_t ***categories, int32_t *count) {
    if (categories != nullptr) *categories = g_categories;
    if (count != nullptr) *count = g_count;
}
