// SPDX-License-Identifier: MIT
#include "zt/list_sort.h"

#include "support/test.hpp"

struct Element : zt_list_head_t {
    uint64_t key;  // the part that is compared, above the place in the unsorted list
};

// Counts calls, those with one element twice apart. Whoever looks at 8 or 16 bits of the result
// takes all keys for equal.
static int32_t compare(void *context, zt_list_head_t *first, zt_list_head_t *second) {
    ++static_cast<uint64_t *>(context)[first == second];
    const auto key = [](auto *link) { return static_cast<Element *>(link)->key >> 32; };
    return 65536 * (key(first) > key(second));
}

// Sorted, reversed, random and often equal keys. The last merge is of the top run, a power of two
// (or a multiple of 2^19) elements, and all others: 1,624 sorted ones leave 600 at its end.
TEST(ListSort, SortsStablyAndCallsForEvery256thOfTheRemainder) {
    std::vector<uint32_t> sizes = {256, 511, 512, 600, 1000, 1024, 1624, 5000, (7 << 18) + 3};
    for (uint32_t size = 0; size < 70; ++size) sizes.push_back(size);
    std::mt19937 random(1);
    for (size_t test = 0; test < 4 * sizes.size(); ++test) {
        const uint32_t size = sizes[test / 4];
        zt_list_head_t head = ZT_LIST_HEAD_INIT(head), *link = &head;
        std::vector<Element> elements(size);
        std::vector<uint64_t> want;
        for (uint32_t i = 0; i < size; ++i) {
            const uint64_t keys[] = {i, ~i, random(), i * i % 7};
            want.push_back(keys[test % 4] << 32 | i);
            elements[i] = {{&head, head.prev}, want[i]};
            head.prev = head.prev->next = &elements[i];
        }
        uint64_t calls[2] = {};
        zt_list_sort(calls, &head, compare);

        std::sort(want.begin(), want.end());
        for (const uint64_t key : want) {
            ASSERT_TRUE(link->next->prev == link && static_cast<Element *>(link->next)->key == key);
            link = link->next;
        }
        ASSERT_TRUE(link->next == &head && head.prev == link);
        const uint32_t top = size & ~(std::min(std::bit_floor(size), 1u << 19) - 1);
        uint32_t rest = 0;  // what is left when the other run has been used up
        const auto from_top = [&](uint32_t i) { return uint32_t(want[size - 1 - i]) < top; };
        while (rest < size && from_top(rest) == from_top(0)) ++rest;
        EXPECT_TRUE(calls[1] == rest / 256 && calls[0] <= size * (std::bit_width(size) - (size < 2)));
    }
}
