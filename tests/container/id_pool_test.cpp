// The id pool against a map, its counter's restart, failed allocations, and threads.
// SPDX-License-Identifier: MIT
#include "zt/id_pool.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "support/alloc_faults.hpp"
#include "support/threads.hpp"

namespace {

void *as_pointer(uintptr_t value) { return reinterpret_cast<void *>(value); }

// The counter as a slow obvious model: the first number from `next` on that is not in the map.
int32_t expected_id(const std::map<int32_t, void *> &used, int32_t *next) {
    int32_t id = 0;
    do {
        id = *next > 0 ? *next : 1;
        *next = id == INT32_MAX ? INT32_MIN : id + 1;
    } while (used.count(id) != 0);
    return id;
}

void run_against_map(uint32_t buckets, int32_t start) {
    SCOPED_TRACE(testing::Message() << "seed 11, buckets " << buckets << ", start " << start);
    std::mt19937 random(11);
    std::map<int32_t, void *> model;
    int32_t next = start;
    zt_id_pool_t pool;
    ASSERT_EQ(zt_id_pool_create(&pool, buckets), 0);
    pool.next_id = start;
    for (uintptr_t i = 1; i < 20'000; ++i) {
        // Ids around the restart, so that live ones stand in the counter's way.
        int32_t id = random() % 2 ? static_cast<int32_t>(random() % 60) - 2
                                  : INT32_MAX - static_cast<int32_t>(random() % 40);
        switch (random() % 4) {
            case 0: {
                const int32_t expected = expected_id(model, &next);
                ASSERT_EQ(zt_id_pool_alloc(&pool, as_pointer(i), &id), 0);
                ASSERT_EQ(id, expected);
                model[id] = as_pointer(i);
                break;
            }
            case 1: {
                const int32_t expected = id < 1 ? expected_id(model, &next) : id;
                const bool added = model.try_emplace(expected, as_pointer(i)).second;
                ASSERT_EQ(zt_id_pool_alloc_specific(&pool, as_pointer(i), &id), added ? 0 : 22);
                ASSERT_EQ(id, expected);
                const bool passes = next > 0 && next <= id;
                if (added && passes) next = id == INT32_MAX ? INT32_MIN : id + 1;
                break;
            }
            default:
                ASSERT_EQ(zt_id_pool_free(&pool, id), id < 1 || model.erase(id) != 0);
        }
        void *found = nullptr;
        const auto entry = model.find(id);
        ASSERT_EQ(zt_id_pool_lookup(&pool, id, &found), entry != model.end());
        ASSERT_EQ(found, entry != model.end() ? entry->second : nullptr);
        ASSERT_EQ(pool.next_id, next);
    }
    ASSERT_GE(pool.node_count, model.size());
    zt_id_pool_destroy(&pool);
    ASSERT_EQ(alloc_faults::live(), 0);
}

TEST(IdPool, BehavesAsAMap) {
    for (const uint32_t buckets : {1u, 7u, 64u}) {
        for (const int32_t start : {1, INT32_MAX - 20, INT32_MIN}) run_against_map(buckets, start);
    }
}

TEST(IdPool, EveryFailedAllocationLeavesThePoolAsItWas) {
    const uint64_t injected = alloc_faults::fail_each([] {
        zt_id_pool_t pool;
        memset(static_cast<void *>(&pool), 0x5a, sizeof pool);  // stale bytes must not be freed
        if (zt_id_pool_create(&pool, 3) == 0) {
            int32_t automatic = -1, specific = 9;
            const zt_status_t first = zt_id_pool_alloc(&pool, nullptr, &automatic);
            const zt_status_t second = zt_id_pool_alloc_specific(&pool, nullptr, &specific);
            EXPECT_EQ(automatic, first == 0 ? 1 : -1);
            EXPECT_TRUE((first == 0 || first == 8) && (second == 0 || second == 8));
            EXPECT_EQ(zt_id_pool_lookup(&pool, 9, nullptr), second == 0);
            EXPECT_EQ(pool.next_id, second == 0 ? 10 : 2);
        }
        zt_id_pool_destroy(&pool);
    });
    EXPECT_EQ(injected, 6u);
    zt_id_pool_t pool;
    EXPECT_EQ(zt_id_pool_create(&pool, 0), ZT_STATUS_INVALID_ARGUMENT);
    EXPECT_EQ(zt_id_pool_create(&pool, 0x10000000), ZT_STATUS_OUT_OF_MEMORY);
}

TEST(IdPool, ThreadsNeverShareAnId) {
    zt_id_pool_t pool;
    ASSERT_EQ(zt_id_pool_create(&pool, 16), 0);
    on_threads(4, [&pool](int thread) {
        for (int32_t round = 0, id = 0; round < 8'000; ++round) {
            void *owner = nullptr;
            ASSERT_EQ(zt_id_pool_alloc(&pool, as_pointer(thread), &id), 0);
            ASSERT_TRUE(zt_id_pool_lookup(&pool, id, &owner));
            ASSERT_EQ(owner, as_pointer(thread));
            ASSERT_TRUE(zt_id_pool_free(&pool, id));
        }
    });
    EXPECT_LE(pool.node_count, 4u);
    EXPECT_EQ(pool.next_id, 4 * 8'000 + 1);
    zt_id_pool_destroy(&pool);
}

}  // namespace
