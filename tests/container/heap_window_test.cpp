// SPDX-License-Identifier: MIT
#include "zt/heap_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <random>
#include <string>

#include "support/alloc_faults.hpp"

namespace {

// Items are ranked by their first byte. Whoever looks at 8 or 16 bits of the result takes them all
// for equal.
int32_t greater(zt_heap_window_t *, const void *first, const void *second) {
    EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 8, 0u);
    return 65536 * (*static_cast<const int8_t *>(first) > *static_cast<const int8_t *>(second));
}

struct Row {
    const char *name;
    uint32_t slot_count, window_len, item_size;
    uint64_t start;
    zt_status_t want;
};

const Row kRows[] = {
    {"no_slots", 0, 9, 8, 0, ZT_STATUS_INVALID_ARGUMENT},
    {"item_of_no_size", 4, 9, 0, 0, ZT_STATUS_INVALID_ARGUMENT},
    {"size_over_32_bits", 76695845, 9, 8, 0, ZT_STATUS_OUT_OF_MEMORY},
    {"size_over_64_bits", UINT32_MAX - 6, 9, UINT32_MAX - 46, 0, ZT_STATUS_OUT_OF_MEMORY},
    {"no_memory", 4, 9, 8, 0, ZT_STATUS_OUT_OF_MEMORY},
    {"one_slot", 1, 100, 16, 0, ZT_STATUS_SUCCESS},
    {"count_decides", 3, 1000, 2, 0, ZT_STATUS_SUCCESS},
    {"age_decides", 200, 30, 3, 0, ZT_STATUS_SUCCESS},
    {"equal_times_only", 20, 0, 12, 0, ZT_STATUS_SUCCESS},
    {"both_decide", 8, 20, 33, 0, ZT_STATUS_SUCCESS},
    {"time_and_length_wrap", 50, UINT32_MAX, 8, UINT64_MAX - 10000, ZT_STATUS_SUCCESS},
};

// Windows of items and of numbers, by maximum or minimum, beside a queue of the samples. What a
// failed create leaves behind is empty and harmless.
TEST(HeapWindow, HoldsTheSamplesOfAQueue) {
    for (const auto &[name, slots, length, size, start, want] : kRows) {
        SCOPED_TRACE(name);
        zt_heap_window_t items, numbers;
        std::memset(&items, 0xA5, sizeof items);
        alloc_faults::fail_at(want == ZT_STATUS_SUCCESS ? 0 : 1, alloc_faults::Mode::kOnce);
        EXPECT_EQ(zt_heap_window_create(&items, length, slots, greater, size, 0), want);
        EXPECT_EQ(alloc_faults::disarm(), std::string("no_memory") == name);
        if (want != ZT_STATUS_SUCCESS) {
            zt_heap_window_update(&items, 1, "");
            zt_heap_window_reset(&items);
            EXPECT_EQ(items.slots, nullptr);
            EXPECT_EQ(zt_heap_window_get_max(&items, nullptr), ZT_STATUS_NEED_MORE_DATA);
            continue;
        }
        const uint8_t is_max = size % 2 == 0 ? 2 : 0;
        EXPECT_EQ(zt_heap_window_create(&numbers, length, slots, nullptr, 0, is_max), 0);

        std::mt19937 random(1);
        std::deque<std::pair<uint64_t, int8_t>> model;
        uint64_t time = start;
        for (int step = 0; step < 2000 && !HasFailure(); ++step) {
            time += random() % 5 * (random() % 3);
            if (start == 0 && random() % 100 == 0) time += UINT32_MAX;
            const auto value = static_cast<int8_t>(random());
            model.emplace_back(time, value);
            while (model.size() > slots || time - model[0].first > length) model.pop_front();
            zt_heap_window_update_int64(&numbers, time, value * INT64_C(0x100000000));
            zt_heap_window_update(&items, time, std::string(size, value).data());

            const auto [low, high] = std::minmax_element(
                model.begin(), model.end(), [](auto a, auto b) { return a.second < b.second; });
            const int8_t number = is_max != 0 ? high->second : low->second;
            EXPECT_EQ(zt_heap_window_get_max_int64(&numbers), number * INT64_C(0x100000000));
            std::string got(40, '?'), item = got;
            EXPECT_EQ(zt_heap_window_get_max(&items, got.data()), ZT_STATUS_SUCCESS);
            EXPECT_EQ(got, item.replace(0, size, size, high->second));
            if (random() % 300 != 0) continue;
            model.clear();
            zt_heap_window_reset(&items);
            zt_heap_window_reset(&numbers);
            EXPECT_EQ(zt_heap_window_get_max(&items, got.data()), ZT_STATUS_NEED_MORE_DATA);
            EXPECT_EQ(zt_heap_window_get_max_int64(&numbers), 0);
        }
        zt_heap_window_destroy(&items);
        zt_heap_window_destroy(&numbers);
        EXPECT_EQ(alloc_faults::live() + zt_heap_window_get_max_int64(&numbers), 0);
    }
}

}  // namespace
