// The id pool against a map, with its counter's restart and failed allocations; threads.
// SPDX-License-Identifier: MIT
#include "zt/id_pool.h"

#include "support/test.hpp"

// Ids come from around the counter's restart, so that live ones stand in its way. The model's counter
// is slow and obvious: the first number from `next` on that is not in the map.
ZT_MODEL(IdPool, BehavesAsAMap, 9, 20'000) {
    zt_id_pool_t pool;
    memset(static_cast<void *>(&pool), 0x5a, sizeof pool);  // stale bytes must not be freed
    const uint32_t kind = random.variant(9), buckets = kind % 3 * 31 + 1;
    EXPECT_EQ(zt_id_pool_create(&pool, 0) + zt_id_pool_create(&pool, 0x10000000), 7 + 8);
    ASSERT_EQ(zt_id_pool_create(&pool, buckets), 0);
    int32_t next = pool.next_id = kind < 3 ? 1 : kind < 6 ? INT32_MAX - 20 : INT32_MIN;
    std::map<int32_t, void *> model;
    for (uintptr_t step = 1; random.more(); ++step) {
        int32_t id = random(2) ? int(random(60)) - 2 : INT32_MAX - int(random(40));
        void *const item = reinterpret_cast<void *>(step), *found = nullptr;
        if (const int32_t op = random(4), before = id; op < 2) {
            const bool automatic = op == 0 || id < 1, passed = next < 1 || next > id;
            int32_t want = id, after = automatic || passed ? next : int32_t(id + 1u);
            for (bool taken = automatic; taken; taken = model.count(want))
                want = std::max(after, 1), after = int32_t(want + 1u);
            faults::fail_at(random(9) == 8, faults::Mode::kOnce);
            const auto got = (op ? zt_id_pool_alloc_specific : zt_id_pool_alloc)(&pool, item, &id);
            ASSERT_EQ(got, faults::disarm() ? 8 : model.count(want) ? 22 : 0);
            ASSERT_EQ(id, got == 8 ? before : want);
            if (got == 0) model[id] = item;
            if (got == 0 || automatic) next = after;
        } else
            ASSERT_EQ(zt_id_pool_free(&pool, id), id < 1 || model.erase(id));
        ASSERT_EQ(zt_id_pool_lookup(&pool, id, &found), model.count(id));
        ASSERT_TRUE(found == (model.count(id) ? model[id] : nullptr) && pool.next_id == next);
    }
    zt_id_pool_destroy(&pool);
    ASSERT_EQ(faults::live(), 0);
}

TEST(IdPool, ThreadsNeverShareAnId) {
    zt_id_pool_t pool;
    ASSERT_EQ(zt_id_pool_create(&pool, 16), 0);
    on_threads(4, [&pool](int) {
        for (int32_t i = 0, id = 0; i < 50'000; ++i) {
            void *got = nullptr;
            EXPECT_TRUE(!zt_id_pool_alloc(&pool, &id, &id) && zt_id_pool_lookup(&pool, id, nullptr));
            EXPECT_TRUE(zt_id_pool_lookup(&pool, id, &got));
            EXPECT_TRUE(got == &id && zt_id_pool_free(&pool, id));
        }
    });
    EXPECT_TRUE(pool.node_count - 1 < 4 && pool.next_id == 4 * 50'000 + 1);
    zt_id_pool_destroy(&pool);
    memset(&pool, 0, sizeof pool), zt_id_pool_destroy(&pool);  // one that was never created
}
