// The memory heap's blocks after every step, against first fit over a list; failures; threads.
// SPDX-License-Identifier: MIT
#include "zt/mem_heap.h"

#include "support/test.hpp"

// Checks that the blocks cover the region in order, add up to the sizes, and that no two free ones are
// neighbours. Returns the first free block of need bytes, or null.
static const zt_mem_heap_block_t *expect_sound(zt_mem_heap_t heap, uint64_t base, uint64_t need) {
    const zt_mem_heap_block_t *fit = nullptr;
    uint32_t sizes[2] = {}, before = 0;  // of used and free blocks; the one before is free
    for (auto *link = heap->blocks.next; link != &heap->blocks; link = link->next) {
        const auto *block = ZT_CONTAINER_OF(link, zt_mem_heap_block_t, link);
        EXPECT_TRUE(before + block->is_free < 2 && block->addr == base + sizes[0] + sizes[1]);
        sizes[before = block->is_free] += block->size;
        if (fit == nullptr && block->is_free && block->size >= need) fit = block;
    }
    EXPECT_EQ(zt_mem_heap_get_size(&heap), sizes[0] + zt_mem_heap_get_free_size(&heap));
    EXPECT_TRUE(zt_mem_heap_get_alloc_size(&heap) == sizes[0] && heap->free_size == sizes[1]);
    return fit;
}

// One of the regions ends at the top of the address space. Some allocations of block records fail,
// which changes nothing.
ZT_MODEL(MemHeap, FirstFitOverSoundBlocks, 5, 10'000) {
    const uint32_t sizes[] = {0x10000, 0x1000, 0x1000, UINT32_MAX & ~0xfffu, 0}, row = random.variant(5);
    const uint32_t size = sizes[row], align = size == ~0xfffu ? 0x1000 : 1u << 4 * row % 12;
    const uint64_t base = row == 2 ? UINT64_MAX - 0xfff : row == 0 ? 0x80000000 : 0;
    zt_mem_heap_t heap = nullptr;
    EXPECT_EQ(zt_mem_heap_create(&heap, base + row % 2 * 4, size, row % 2 ? 0x1000 : row % 4 * 3 / 2), 7);
    EXPECT_EQ(zt_mem_heap_create(&heap, base, size, align), 0);
    zt_mem_heap_block_t *held[40] = {};
    while (random.more()) {
        const uint32_t some = random(size / 12 + 1);
        const uint64_t request = random.pick({some, some, some, some, some, some, 0u, 1u, align, size, ~0u});
        const uint64_t need = (request + align - 1) / align * align;
        auto *&block = held[random(40)];
        zt_mem_heap_free(&heap, block);
        const auto *fit = expect_sound(heap, base, need);
        faults::fail_at(random(9) == 8, faults::Mode::kOnce);
        block = zt_mem_heap_alloc(&heap, request);
        EXPECT_EQ(block, faults::disarm() ? nullptr : fit);
        EXPECT_TRUE(block == nullptr || block->size == need);
    }
    zt_mem_heap_destroy(&heap);
    EXPECT_TRUE(heap == nullptr && faults::live() == 0);
}

// The owner of an address alone writes there: what two own at once would show.
TEST(MemHeap, ThreadsNeverShareAnAddress) {
    zt_mem_heap_t heap = nullptr;
    ASSERT_EQ(zt_mem_heap_create(&heap, 0, 4096, 16), 0);
    int region[4096];
    on_threads(4, [&](int thread) {
        for (uint32_t round = 0; round < 20'000; ++round) {
            auto *got = zt_mem_heap_alloc(&heap, 16 * (round % 9) + 1);
            for (size_t i = 0; got && i < got->size; ++i) region[got->addr + i] = thread;
            for (size_t i = 0; got && i < got->size; ++i) ASSERT_EQ(region[got->addr + i], thread);
            zt_mem_heap_free(&heap, got);
        }
    });
    zt_mem_heap_free(&heap, ZT_CONTAINER_OF(heap->blocks.next, zt_mem_heap_block_t, link));  // is free already
    EXPECT_NE(expect_sound(heap, 0, 4096), nullptr);
    zt_mem_heap_destroy(&heap);
}
