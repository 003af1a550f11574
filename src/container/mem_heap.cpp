// First-fit allocation of address ranges.
// SPDX-License-Identifier: MIT
#include "zt/mem_heap.h"

#include <bit>
#include <cstddef>
#include <type_traits>

#include "base/list_ops.hpp"
#include "os/mutex_guard.hpp"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_mem_heap_block_t> && sizeof(zt_mem_heap_block_t) == 40);
static_assert(offsetof(zt_mem_heap_block_t, is_free) == 16);
static_assert(offsetof(zt_mem_heap_block_t, addr) == 24);
static_assert(offsetof(zt_mem_heap_block_t, size) == 32);
static_assert(std::is_standard_layout_v<zt_mem_heap_record_t>);
static_assert(offsetof(zt_mem_heap_record_t, lock) == 16);
static_assert(offsetof(zt_mem_heap_record_t, total_size) == 16 + sizeof(zt_mutex_t));
static_assert(offsetof(zt_mem_heap_record_t, free_size) == 20 + sizeof(zt_mutex_t));
static_assert(offsetof(zt_mem_heap_record_t, align) == 24 + sizeof(zt_mutex_t));

using namespace zt::detail;

namespace {

zt_mem_heap_block_t *block_of(zt_list_head_t *link) {
    return ZT_CONTAINER_OF(link, zt_mem_heap_block_t, link);
}

zt_mem_heap_block_t *new_free_block(uint64_t addr, uint32_t size) {
    auto *block = static_cast<zt_mem_heap_block_t *>(zt_zalloc(sizeof(zt_mem_heap_block_t)));
    if (block == nullptr) return nullptr;
    list_init(&block->link);
    block->is_free = 1;
    block->addr = addr;
    block->size = size;
    return block;
}

void delete_block(zt_mem_heap_block_t *block) {
    list_remove(&block->link);
    zt_free(block);
}

// In 64 bits, so that a request that rounds up past 32 bits is larger than any region.
uint64_t round_up(uint32_t size, uint32_t align) {
    return (uint64_t{size} + align - 1) & ~(uint64_t{align} - 1);
}

zt_mem_heap_block_t *first_fit(zt_mem_heap_record_t *heap, uint64_t need) {
    for (zt_list_head_t *link = heap->blocks.next; link != &heap->blocks; link = link->next) {
        zt_mem_heap_block_t *block = block_of(link);
        if (block->is_free != 0 && block->size >= need) return block;
    }
    return nullptr;
}

// Cuts the block to need bytes; false, with nothing changed, when there is no memory for the rest.
bool split(zt_mem_heap_block_t *block, uint32_t need) {
    if (block->size == need) return true;
    zt_mem_heap_block_t *rest = new_free_block(block->addr + need, block->size - need);
    if (rest == nullptr) return false;
    list_insert_after(&block->link, &rest->link);
    block->size = need;
    return true;
}

// Joins the block behind link to the one before it when both are free.
void merge_with_successor(zt_mem_heap_record_t *heap, zt_list_head_t *link) {
    zt_list_head_t *next = link->next;
    if (link == &heap->blocks || next == &heap->blocks) return;
    if (block_of(link)->is_free == 0 || block_of(next)->is_free == 0) return;
    block_of(link)->size += block_of(next)->size;
    delete_block(block_of(next));
}

uint32_t read_locked(zt_mem_heap_t *heap, uint32_t (*read)(const zt_mem_heap_record_t *)) {
    if (heap == nullptr || *heap == nullptr) return 0;
    const MutexGuard guard(&(*heap)->lock);
    return read(*heap);
}

}  // namespace

zt_status_t zt_mem_heap_create(zt_mem_heap_t *heap, uint64_t base, uint32_t size, uint32_t align) {
    if (heap == nullptr || !std::has_single_bit(align)) return ZT_STATUS_INVALID_ARGUMENT;
    if ((base & (align - 1)) != 0) return ZT_STATUS_INVALID_ARGUMENT;
    auto *record = static_cast<zt_mem_heap_record_t *>(zt_zalloc(sizeof(zt_mem_heap_record_t)));
    if (record == nullptr) return ZT_STATUS_OUT_OF_MEMORY;

    zt_mem_heap_block_t *whole = new_free_block(base, size);
    const zt_status_t status =
        whole != nullptr ? zt_mutex_init(&record->lock) : ZT_STATUS_OUT_OF_MEMORY;
    if (status != ZT_STATUS_SUCCESS) {
        zt_free(whole);
        zt_free(record);
        *heap = nullptr;
        return status;
    }
    list_init(&record->blocks);
    list_insert_after(&record->blocks, &whole->link);
    record->total_size = size;
    record->free_size = size;
    record->align = align;
    *heap = record;
    return ZT_STATUS_SUCCESS;
}

void zt_mem_heap_destroy(zt_mem_heap_t *heap) {
    if (heap == nullptr || *heap == nullptr) return;
    zt_mem_heap_record_t *record = *heap;
    {
        const MutexGuard guard(&record->lock);
        while (!list_empty(&record->blocks)) delete_block(block_of(record->blocks.next));
        record->total_size = 0;
    }
    zt_mutex_destroy(&record->lock);
    zt_free(record);
    *heap = nullptr;
}

zt_mem_heap_block_t *zt_mem_heap_alloc(zt_mem_heap_t *heap, uint32_t size) {
    if (heap == nullptr || *heap == nullptr) return nullptr;
    zt_mem_heap_record_t *record = *heap;
    const MutexGuard guard(&record->lock);
    const uint64_t need = round_up(size, record->align);
    zt_mem_heap_block_t *block = first_fit(record, need);
    if (block == nullptr || !split(block, static_cast<uint32_t>(need))) return nullptr;
    block->is_free = 0;
    record->free_size -= block->size;
    return block;
}

void zt_mem_heap_free(zt_mem_heap_t *heap, zt_mem_heap_block_t *block) {
    if (heap == nullptr || *heap == nullptr || block == nullptr) return;
    zt_mem_heap_record_t *record = *heap;
    const MutexGuard guard(&record->lock);
    if (block->is_free != 0) return;
    block->is_free = 1;
    record->free_size += block->size;
    merge_with_successor(record, &block->link);
    merge_with_successor(record, block->link.prev);
}

uint32_t zt_mem_heap_get_size(zt_mem_heap_t *heap) {
    return read_locked(heap, [](const zt_mem_heap_record_t *record) { return record->total_size; });
}

uint32_t zt_mem_heap_get_alloc_size(zt_mem_heap_t *heap) {
    return read_locked(heap, [](const zt_mem_heap_record_t *record) {
        return record->total_size - record->free_size;
    });
}

uint32_t zt_mem_heap_get_free_size(zt_mem_heap_t *heap) {
    return read_locked(heap, [](const zt_mem_heap_record_t *record) { return record->free_size; });
}
