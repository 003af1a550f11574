// SPDX-License-Identifier: MIT
#include "zt/heap_window.h"

#include "support/test.hpp"

// Items are ranked by their first byte. Whoever looks at 8 or 16 bits of the result takes them all
// for equal.
static int32_t greater(zt_heap_window_t *, const void *first, const void *second) {
    EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 8, 0u);
    return 65536 * (*static_cast<const int8_t *>(first) > *static_cast<const int8_t *>(second));
}

// Windows of items and of numbers, by maximum or minimum, beside a queue of the samples. First come
// creations without slots, with items of no size, with sizes over 32 and 64 bits and without memory:
// what they leave behind is empty and harmless. Then the count decides who leaves, the age, or both,
// and lastly times and length wrap.
TEST(HeapWindow, HoldsTheSamplesOfAQueue) {
    const uint32_t slot_counts[] = {0, 4, 76695845, UINT32_MAX - 6, 4, 1, 3, 200, 20, 8, 50};
    const uint32_t sizes[] = {8, 0, 8, UINT32_MAX - 46, 8, 16, 2, 3, 12, 33, 8};
    const uint32_t lengths[] = {9, 9, 9, 9, 9, 100, 1000, 30, 0, 20, UINT32_MAX};
    for (int row = 0; row < 11; ++row) {
        const uint32_t slots = slot_counts[row], size = sizes[row], length = lengths[row];
        zt_heap_window_t items, numbers;
        std::memset(&items, 0xA5, sizeof items);
        alloc_faults::fail_at(row < 5, alloc_faults::Mode::kOnce);
        const int status = zt_heap_window_create(&items, length, slots, greater, size, 0);
        EXPECT_TRUE(status == (row < 2 ? 7 : row < 5 ? 8 : 0) && alloc_faults::disarm() == (row == 4));
        if (row < 5) {
            zt_heap_window_update(&items, 1, ""), zt_heap_window_reset(&items);
            EXPECT_TRUE(items.slots == nullptr && !items.heap.root);
            continue;
        }
        const uint8_t is_max = size % 2 * 2;
        EXPECT_EQ(zt_heap_window_create(&numbers, length, slots, nullptr, 0, is_max), 0);
        std::mt19937 random(1);
        std::deque<int8_t> model;
        std::deque<uint64_t> times;
        uint64_t time = row == 10 ? UINT64_MAX - 10'000 : 0;
        for (int step = 0; step < 2000 && !HasFailure(); ++step) {
            time += random() % 5 * (random() % 3);
            if (row < 10 && random() % 100 == 0) time += UINT32_MAX;
            const auto value = static_cast<int8_t>(random());
            model.push_back(value), times.push_back(time);
            while (model.size() > slots || time - times[0] > length) model.pop_front(), times.pop_front();
            zt_heap_window_update_int64(&numbers, time, value * (int64_t{1} << 32));
            zt_heap_window_update(&items, time, std::string(size, value).data());

            const auto [low, high] = std::minmax_element(model.begin(), model.end());
            EXPECT_EQ(zt_heap_window_get_max_int64(&numbers), (is_max ? *high : *low) * (int64_t{1} << 32));
            std::string got(40, '?'), item = got;
            EXPECT_EQ(zt_heap_window_get_max(&items, got.data()), ZT_STATUS_SUCCESS);
            EXPECT_EQ(got, item.replace(0, size, size, *high));
            if (random() % 300 != 0) continue;
            model.clear(), times.clear(), zt_heap_window_reset(&items), zt_heap_window_reset(&numbers);
            EXPECT_EQ(zt_heap_window_get_max(&items, nullptr), ZT_STATUS_NEED_MORE_DATA);
        }
        zt_heap_window_destroy(&items), zt_heap_window_destroy(&numbers);
        EXPECT_EQ(alloc_faults::live() + zt_heap_window_get_max_int64(&numbers), 0);
    }
}
