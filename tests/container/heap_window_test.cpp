// SPDX-License-Identifier: MIT
#include "zt/heap_window.h"

#include "support/test.hpp"

// Items are ranked by their first byte. Whoever looks at 8 or 16 bits of the result takes them all
// for equal.
static int32_t greater(zt_heap_window_t *, const void *first, const void *second) {
    EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 8, 0u);
    return 65536 * (*static_cast<const int8_t *>(first) > *static_cast<const int8_t *>(second));
}

// Creations without slots, with items of no size, with sizes over 32 and 64 bits: what they leave
// behind is empty and harmless.
TEST(HeapWindow, RefusesWhatCannotBe) {
    const uint32_t rows[][3] = {{0, 8, 7}, {4, 0, 7}, {76695845, 8, 8}, {UINT32_MAX - 6, UINT32_MAX - 46, 8}};
    for (const auto [slots, size, want] : rows) {
        zt_heap_window_t items;
        std::memset(&items, 0xA5, sizeof items);
        EXPECT_EQ(zt_heap_window_create(&items, 9, slots, greater, size, 0), static_cast<int>(want));
        zt_heap_window_update(&items, 1, ""), zt_heap_window_reset(&items);
        EXPECT_TRUE(items.slots == nullptr && !items.heap.root);
    }
}

// Windows of items and of numbers, by maximum or minimum, beside a queue of the samples. The count
// decides who leaves, the age, or both, or times and length wrap.
ZT_MODEL(HeapWindow, HoldsTheSamplesOfAQueue, 6, 2'000) {
    const uint32_t rows[][3] = {{1, 16, 100}, {3, 2, 1000}, {200, 3, 30},
                                {20, 12, 0},  {8, 33, 20},  {50, 8, UINT32_MAX}};
    const auto &[slots, size, length] = rows[random.variant(6)];
    const uint8_t is_max = size % 2 * 2;
    zt_heap_window_t items, numbers;
    ASSERT_EQ(zt_heap_window_create(&items, length, slots, greater, size, 0), 0);
    ASSERT_EQ(zt_heap_window_create(&numbers, length, slots, nullptr, 0, is_max), 0);
    std::deque<int8_t> model;
    std::deque<uint64_t> times;
    uint64_t time = length == UINT32_MAX ? UINT64_MAX - random(10'000) : 0;
    while (random.more()) {
        const uint32_t dice = random(256);
        time += dice % 3 ? 0 : dice % 5 * 2;
        if (length != UINT32_MAX && dice > 253) time += UINT32_MAX;
        const auto value = static_cast<int8_t>(random(256));
        model.push_back(value), times.push_back(time);
        while (model.size() > slots || time - times[0] > length) model.pop_front(), times.pop_front();
        zt_heap_window_update_int64(&numbers, time, value * (int64_t{1} << 32));
        zt_heap_window_update(&items, time, std::string(size, value).data());

        const auto [low, high] = std::minmax_element(model.begin(), model.end());
        EXPECT_EQ(zt_heap_window_get_max_int64(&numbers), (is_max ? *high : *low) * (int64_t{1} << 32));
        std::string got(40, '?'), item = got;
        EXPECT_EQ(zt_heap_window_get_max(&items, got.data()), ZT_STATUS_SUCCESS);
        EXPECT_EQ(got, item.replace(0, size, size, *high));
        if (dice != 100) continue;
        model.clear(), times.clear(), zt_heap_window_reset(&items), zt_heap_window_reset(&numbers);
        EXPECT_EQ(zt_heap_window_get_max(&items, nullptr), ZT_STATUS_NEED_MORE_DATA);
    }
    zt_heap_window_destroy(&items), zt_heap_window_destroy(&numbers);
    EXPECT_EQ(zt_heap_window_get_max_int64(&numbers), 0);
}
