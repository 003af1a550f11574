// The memory heap's blocks after every step, against first fit over a list; failures; threads.
// SPDX-License-Identifier: MIT
#include "zt/mem_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "support/alloc_faults.hpp"
#include "support/threads.hpp"

namespace {

// Checks that the blocks cover the region in order, add up to the sizes, and that no two free ones are
// neighbours. Returns the address of the first free block of need bytes, or null.
const uint64_t *expect_sound(zt_mem_heap_t heap, uint64_t base, uint64_t need = 0) {
    const uint64_t *fit = nullptr;
    uint64_t addr = base, free_size = 0, total = 0;
    bool previous_free = false;
    for (zt_list_head_t *link = heap->blocks.next; link != &heap->blocks; link = link->next) {
        const auto *block = ZT_CONTAINER_OF(link, zt_mem_heap_block_t, link);
        EXPECT_EQ(link->next->prev, link);
        EXPECT_EQ(block->addr, addr);
        EXPECT_EQ(block->addr % heap->align, 0u);
        EXPECT_FALSE(previous_free && block->is_free);
        previous_free = block->is_free;
        addr += block->size;
        total += block->size;
        if (block->is_free) free_size += block->size;
        if (fit == nullptr && block->is_free && block->size >= need) fit = &block->addr;
    }
    EXPECT_EQ(total, zt_mem_heap_get_size(&heap));
    EXPECT_EQ(free_size, zt_mem_heap_get_free_size(&heap));
    EXPECT_EQ(total - free_size, zt_mem_heap_get_alloc_size(&heap));
    return fit;
}

struct Region {
    uint64_t base;
    uint32_t size, align;
};
const Region kRegions[] = {
    {0x80000000, 0x10000, 0x100},       {0, 0x1000, 1}, {0x1000, 0x1000, 0x1000},
    {UINT64_MAX - 0xfff, 0x1000, 0x10},  // ends at the top of the address space
    {0, UINT32_MAX & ~0xfffu, 0x1000},  {0, 0, 8},
};

TEST(MemHeap, FirstFitOverSoundBlocks) {
    std::mt19937 random(5);
    for (const Region &region : kRegions) {
        SCOPED_TRACE(testing::Message()
                     << "seed 5, base " << region.base << " size " << region.size);
        zt_mem_heap_t heap = nullptr;
        ASSERT_EQ(zt_mem_heap_create(&heap, region.base, region.size, region.align), 0);
        std::vector<zt_mem_heap_block_t *> held;
        for (int i = 0; i < 10'000; ++i) {
            if (held.size() > 40 || (!held.empty() && random() % 5 < 2)) {
                std::swap(held[random() % held.size()], held.back());
                zt_mem_heap_free(&heap, held.back());
                held.pop_back();
            } else {
                const uint32_t edges[] = {0, 1, region.align, region.size, UINT32_MAX};
                const bool edge = random() % 8 == 0;
                const auto size = edge ? edges[random() % 5]
                                       : static_cast<uint32_t>(random()) % (region.size / 12 + 1);
                const uint64_t need =
                    (uint64_t{size} + region.align - 1) / region.align * region.align;
                const uint64_t *expected = expect_sound(heap, region.base, need);
                zt_mem_heap_block_t *block = zt_mem_heap_alloc(&heap, size);
                ASSERT_EQ(block != nullptr, expected != nullptr) << "request " << size;
                if (block == nullptr) continue;
                ASSERT_EQ(&block->addr, expected);
                ASSERT_EQ(block->size, need);
                held.push_back(block);
            }
            ASSERT_FALSE(HasFailure());
        }
        for (zt_mem_heap_block_t *block : held) zt_mem_heap_free(&heap, block);
        EXPECT_EQ(heap->blocks.next->next, &heap->blocks) << "one free block is left";
        zt_mem_heap_free(&heap, ZT_CONTAINER_OF(heap->blocks.next, zt_mem_heap_block_t, link));
        EXPECT_EQ(zt_mem_heap_get_free_size(&heap), region.size) << "a free block was freed";
        zt_mem_heap_destroy(&heap);
        EXPECT_EQ(heap, nullptr);
    }
}

TEST(MemHeap, FailuresChangeNothing) {
    zt_mem_heap_t untouched = reinterpret_cast<zt_mem_heap_t>(16);
    EXPECT_EQ(zt_mem_heap_create(&untouched, 0, 64, 0), ZT_STATUS_INVALID_ARGUMENT);
    EXPECT_EQ(zt_mem_heap_create(&untouched, 0, 64, 3), ZT_STATUS_INVALID_ARGUMENT);
    EXPECT_EQ(zt_mem_heap_create(&untouched, 0x1004, 64, 0x1000), ZT_STATUS_INVALID_ARGUMENT);
    EXPECT_EQ(untouched, reinterpret_cast<zt_mem_heap_t>(16));
    const uint64_t injected = alloc_faults::fail_each([] {
        zt_mem_heap_t heap = nullptr;
        if (zt_mem_heap_create(&heap, 0x100, 0x100, 8) != 0) return;
        const zt_mem_heap_block_t *block = zt_mem_heap_alloc(&heap, 5);
        EXPECT_EQ(zt_mem_heap_get_alloc_size(&heap), block != nullptr ? 8u : 0u);
        expect_sound(heap, 0x100);
        zt_mem_heap_destroy(&heap);
    });
    EXPECT_EQ(injected, 6u);
}

TEST(MemHeap, ThreadsNeverShareAnAddress) {
    zt_mem_heap_t heap = nullptr;
    ASSERT_EQ(zt_mem_heap_create(&heap, 0, 4096, 16), 0);
    std::vector<uint8_t> region(4096);  // written by the owner of an address only: races would show
    on_threads(4, [&heap, &region](int thread) {
        for (uint32_t round = 0; round < 3'000; ++round) {
            zt_mem_heap_block_t *block = zt_mem_heap_alloc(&heap, 16 * (round % 9) + 1);
            if (block == nullptr) continue;
            std::fill_n(&region[block->addr], block->size, static_cast<uint8_t>(thread));
            for (uint32_t i = 0; i < block->size; ++i) ASSERT_EQ(region[block->addr + i], thread);
            zt_mem_heap_free(&heap, block);
        }
    });
    expect_sound(heap, 0);
    EXPECT_EQ(zt_mem_heap_get_alloc_size(&heap), 0u);
    zt_mem_heap_destroy(&heap);
}

}  // namespace
