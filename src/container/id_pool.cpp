// A hash table from small positive ids to pointers.
// SPDX-License-Identifier: MIT
#include "zt/id_pool.h"

#include <atomic>
#include <cstddef>
#include <type_traits>

#include "base/list_ops.hpp"
#include "os/mutex_guard.hpp"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_id_pool_t>);
static_assert(offsetof(zt_id_pool_t, lock) == 0);
static_assert(offsetof(zt_id_pool_t, next_id) == sizeof(zt_mutex_t));
static_assert(offsetof(zt_id_pool_t, bucket_count) == sizeof(zt_mutex_t) + 4);
static_assert(offsetof(zt_id_pool_t, buckets) == sizeof(zt_mutex_t) + 8);
static_assert(offsetof(zt_id_pool_t, free_nodes) == sizeof(zt_mutex_t) + 16);
static_assert(offsetof(zt_id_pool_t, node_count) == sizeof(zt_mutex_t) + 32);

using namespace zt::detail;

namespace {

struct Entry {
    zt_list_head_t link;
    uint32_t id;
    void *ptr;
};
static_assert(offsetof(Entry, id) == 16 && offsetof(Entry, ptr) == 24 && sizeof(Entry) == 32);

zt_list_head_t *bucket_of(const zt_id_pool_t *pool, uint32_t id) {
    return &pool->buckets[id % pool->bucket_count];
}

Entry *find(const zt_id_pool_t *pool, int32_t id) {
    const auto wanted = static_cast<uint32_t>(id);
    const zt_list_head_t *bucket = bucket_of(pool, wanted);
    for (zt_list_head_t *link = bucket->next; link != bucket; link = link->next) {
        Entry *entry = ZT_CONTAINER_OF(link, Entry, link);
        if (entry->id == wanted) return entry;
    }
    return nullptr;
}

// The number behind an id, computed unsigned: behind the largest one it is not positive, which the
// next choice takes as a sign to restart.
int32_t successor(int32_t id) { return static_cast<int32_t>(static_cast<uint32_t>(id) + 1); }

int32_t choose_id(zt_id_pool_t *pool) {
    int32_t id = 0;
    do {
        id = pool->next_id > 0 ? pool->next_id : 1;
        pool->next_id = successor(id);
    } while (find(pool, id) != nullptr);
    return id;
}

Entry *obtain_entry(zt_id_pool_t *pool) {
    if (!list_empty(&pool->free_nodes)) {
        zt_list_head_t *link = pool->free_nodes.next;
        list_remove(link);
        return ZT_CONTAINER_OF(link, Entry, link);
    }
    auto *entry = static_cast<Entry *>(zt_zalloc(sizeof(Entry)));
    if (entry != nullptr) std::atomic_ref(pool->node_count).fetch_add(1);
    return entry;
}

bool store(zt_id_pool_t *pool, int32_t id, void *ptr) {
    Entry *entry = obtain_entry(pool);
    if (entry == nullptr) return false;
    entry->id = static_cast<uint32_t>(id);
    entry->ptr = ptr;
    list_insert_before(bucket_of(pool, entry->id), &entry->link);
    return true;
}

}  // namespace

void _delete_list(zt_id_pool_t *pool, zt_list_head_t *list) {
    while (!list_empty(list)) {
        zt_list_head_t *link = list->next;
        list_remove(link);
        zt_free(ZT_CONTAINER_OF(link, Entry, link));
        std::atomic_ref(pool->node_count).fetch_sub(1);
    }
}

zt_status_t zt_id_pool_create(zt_id_pool_t *pool, uint32_t bucket_count) {
    zt_memset(pool, 0, sizeof *pool);  // destroy must find nothing of what the bytes held before
    list_init(&pool->free_nodes);
    if (bucket_count == 0) return ZT_STATUS_INVALID_ARGUMENT;
    const uint64_t bytes = uint64_t{bucket_count} * sizeof(zt_list_head_t);
    if (bytes > UINT32_MAX) return ZT_STATUS_OUT_OF_MEMORY;

    const zt_status_t status = zt_mutex_init(&pool->lock);
    if (status != ZT_STATUS_SUCCESS) {
        zt_id_pool_destroy(pool);
        return status;
    }
    pool->buckets = static_cast<zt_list_head_t *>(zt_zalloc(static_cast<uint32_t>(bytes)));
    if (pool->buckets == nullptr) {
        zt_id_pool_destroy(pool);
        return ZT_STATUS_OUT_OF_MEMORY;
    }
    pool->bucket_count = bucket_count;
    pool->next_id = 1;
    for (uint32_t i = 0; i < bucket_count; ++i) list_init(&pool->buckets[i]);
    return ZT_STATUS_SUCCESS;
}

void zt_id_pool_destroy(zt_id_pool_t *pool) {
    if (pool->buckets != nullptr) {
        for (uint32_t i = 0; i < pool->bucket_count; ++i) _delete_list(pool, &pool->buckets[i]);
        zt_free(pool->buckets);
    }
    if (pool->free_nodes.next != nullptr) _delete_list(pool, &pool->free_nodes);
    zt_mutex_destroy(&pool->lock);
    zt_memset(pool, 0, sizeof *pool);
    list_init(&pool->free_nodes);
}

zt_status_t zt_id_pool_alloc(zt_id_pool_t *pool, void *ptr, int32_t *id) {
    const MutexGuard guard(&pool->lock);
    const int32_t chosen = choose_id(pool);
    if (!store(pool, chosen, ptr)) return ZT_STATUS_OUT_OF_MEMORY;
    *id = chosen;
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_id_pool_alloc_specific(zt_id_pool_t *pool, void *ptr, int32_t *id) {
    if (*id < 1) return zt_id_pool_alloc(pool, ptr, id);
    const MutexGuard guard(&pool->lock);
    const int32_t wanted = *id;
    if (find(pool, wanted) != nullptr) return ZT_STATUS_FILE_EXISTS;
    if (!store(pool, wanted, ptr)) return ZT_STATUS_OUT_OF_MEMORY;
    const auto distance = static_cast<uint32_t>(pool->next_id) - static_cast<uint32_t>(wanted);
    if (static_cast<int32_t>(distance) <= 0) pool->next_id = successor(wanted);
    return ZT_STATUS_SUCCESS;
}

bool zt_id_pool_free(zt_id_pool_t *pool, int32_t id) {
    if (id < 1) return true;
    const MutexGuard guard(&pool->lock);
    Entry *entry = find(pool, id);
    if (entry == nullptr) return false;
    list_remove(&entry->link);
    list_insert_before(&pool->free_nodes, &entry->link);
    return true;
}

bool zt_id_pool_lookup(zt_id_pool_t *pool, int32_t id, void **ptr) {
    const MutexGuard guard(&pool->lock);
    const Entry *entry = find(pool, id);
    if (entry == nullptr) return false;
    if (ptr != nullptr) *ptr = entry->ptr;
    return true;
}
