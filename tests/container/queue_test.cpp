// Random use against a model, and crews of threads that block and are released.
// SPDX-License-Identifier: MIT
#include "zt/queue.h"

#include <dlfcn.h>

#include "zt/time.h"

#include "support/test.hpp"

static bool g_pester = true;       // every wait ends at once
static std::atomic<bool> g_dies;   // the next thread that wakes up does
static std::atomic<int> g_sleeps;  // waits begun, but not by a bystander
static thread_local bool t_bystander;

// In place of the library's own: its low half wraps while the crews wait.
static const uint64_t g_start_us = zt_time_get_us();
uint64_t zt_time_get_ms() { return UINT32_MAX - 1'500ULL + (zt_time_get_us() - g_start_us) / 1000; }

int zt_event_wait(zt_event_t *event, int32_t timeout_ms) {
    static const auto wait = (decltype(&zt_event_wait))dlsym(RTLD_NEXT, "zt_event_wait");
    g_sleeps += t_bystander ? 0 : 1;
    const int sets = g_pester ? usleep(1'000) + 1 : wait(event, timeout_ms);
    if (sets > 0 && g_dies.exchange(false)) pthread_cancel(pthread_self()), pthread_testcancel();
    return sets;
}

static void discard(zt_queue_t *queue, void *item, void *dropped) {
    *static_cast<void **>(dropped) = item;
    EXPECT_FALSE(zt_event_is_set(&queue->avail_event));
    std::thread([=] { EXPECT_TRUE(zt_queue_is_full(queue)); }).join();  // the lock is free
}

// The queue holds what a vector holds, and sets its events just when an operation adds or frees
// something.
ZT_MODEL(Queue, AgreesWithAModel, 1, 30'000) {
    zt_queue_t queue;
    g_pester = true;
    ASSERT_TRUE(zt_queue_create(&queue, 3) == 0 && queue.initialized);
    std::vector<void *> model;
    size_t capacity = 3;
    bool canceled = false;
    for (uintptr_t step = 1; random.more(); ++step) {
        const size_t size = model.size(), at = random(size + 1), op = random(10);
        std::vector<zt_queue_node_t *> nodes;  // of the items; the head is like one behind them
        for (auto *link = queue.items.next; nodes.size() <= size; link = link->next) {
            nodes.push_back(ZT_CONTAINER_OF(link, zt_queue_node_t, link));
            ASSERT_EQ(link->next->prev, link);
        }
        for (size_t i = 0; i < size; ++i) ASSERT_TRUE(nodes[i]->data == model[i] && nodes[i]->owner == &queue.items);
        ASSERT_EQ(zt_queue_get_num_free(&queue), capacity - size);
        ASSERT_TRUE(zt_queue_get_num_avail(&queue) == size && zt_queue_is_empty(&queue) == !size);
        ASSERT_EQ(zt_queue_peek_head(&queue), size > 0 ? model.front() : nullptr);
        ASSERT_EQ(zt_queue_peek_tail(&queue), size > 0 ? model.back() : nullptr);

        const int wait = canceled ? static_cast<int>(random(3)) - 1 : random(500) != 499 ? 0 : 5;
        const size_t end = size - (size == capacity), after = (at + 1) % (size + 1);
        const size_t index[] = {0, size, at, after, end, 0, size - 1, std::min(at, size - 1)};
        void *const item = reinterpret_cast<void *>(step), *dropped = nullptr;
        bool avail = false, space = false;  // events that the operation sets
        for (auto *event : {&queue.avail_event, &queue.space_event}) zt_event_clear(event);
        if (op < 5) {
            const auto add = op == 0 ? zt_queue_add_head : zt_queue_add_tail;
            const auto insert = op == 2 ? zt_queue_insert_before : zt_queue_insert_after;
            auto got = op < 2 ? add(&queue, item, wait) : ZT_STATUS_SUCCESS;
            if (op == 4) got = zt_queue_add_tail_with_discard(&queue, item, discard, &dropped);
            if (op == 2 || op == 3) got = insert(&queue, item, nodes[at], wait);
            avail = size < capacity || (op == 4 && capacity > 0);
            ASSERT_EQ(got, avail ? 0 : canceled && wait != 0 && op < 4 ? 42 : 2);
            ASSERT_EQ(dropped, avail && size == capacity ? model.front() : nullptr);
            if (dropped != nullptr) model.erase(model.begin());
            if (avail) model.insert(model.begin() + index[op], item);
        } else if (op < 8) {
            const auto get = op == 5 ? zt_queue_get_head : zt_queue_get_tail;
            space = size > 0;
            auto *got = op > 6 && at < size ? zt_queue_get_at(&queue, nodes[at]) : get(&queue, wait);
            ASSERT_EQ(got, space ? model[index[op]] : nullptr);
            ASSERT_TRUE(!space || nodes[index[op]]->owner == &queue.free_nodes);
            if (space) model.erase(model.begin() + index[op]);
        } else if (random(4) == 0) {
            canceled = avail = space = op == 8 && random(2);
            capacity = op == 8 ? 0 : random(6);
            model.clear();
            if (op == 8)
                zt_queue_decommit(&queue, canceled);
            else  // 2^27 nodes take 4 GiB
                ASSERT_EQ(zt_queue_commit(&queue, capacity ? capacity : 1 << 27), capacity ? 0 : 8);
        }
        ASSERT_EQ(zt_event_is_set(&queue.avail_event), avail);
        ASSERT_EQ(zt_event_is_set(&queue.space_event), space);
    }
    g_pester = false;
    zt_queue_destroy(&queue), zt_queue_destroy(&queue);
}

// A crew of n blocks and is cancelled; a second one that comes at once must not stand in its way,
// and is then fed in batches.
TEST(Queue, WakesWhoeverCanGoOn) {
    std::mt19937 random(11);
    zt_queue_t other;  // whose waiter nothing of all this concerns
    ASSERT_EQ(zt_queue_create(&other, 1), 0);
    std::thread bystander([&] {
        t_bystander = true;
        EXPECT_EQ(zt_queue_get_head(&other, -1), &other);
    });
    const uint64_t start = zt_time_get_ms();
    for (uint64_t age = 0; age < 5'400; age = zt_time_get_ms() - start) {
        const bool consumers = random() % 2;
        const int n = age < 1'800 ? 2 : age < 3'600 ? 8 : 32;
        zt_queue_t queue;
        ASSERT_EQ(zt_queue_create(&queue, 0), 0);
        const auto move = [&](bool get, int32_t timeout_ms) {
            return get ? zt_queue_get_head(&queue, timeout_ms) ? 0 : 2
                       : int(zt_queue_add_tail(&queue, &queue, timeout_ms));
        };
        g_sleeps = 0;
        std::atomic<int> go{0}, ended{0};
        std::vector<std::thread> crews[2];
        for (int i = 0; i < 2 * n; ++i)
            crews[i / n].emplace_back([&, i] {
                if (i >= n) go.wait(0);
                const int got = move(consumers, i % 4 != 1 ? -1 : i < n ? 60'000 : 1 + i % 5);
                if (i < n || i % 4 != 1) EXPECT_EQ(got, i >= n ? 0 : consumers ? 2 : 42);
                ++ended;
            });
        while (g_sleeps < n) std::this_thread::yield();
        auto *event = consumers ? &queue.avail_event : &queue.space_event;
        if (random() % 64 == 0) zt_event_set(event), usleep(20'000);
        EXPECT_LE(g_sleeps, 2 * n) << "idle waiters spin";
        zt_queue_decommit(&queue, true);
        ASSERT_EQ(zt_queue_commit(&queue, 0), 0);
        zt_event_set(&other.avail_event);
        if (random() % 3 > 0) go = 1, go.notify_all();  // else the first crew is on its own
        for (auto &thread : crews[0]) thread.join();
        go = 1, go.notify_all();
        ASSERT_EQ(zt_queue_commit(&queue, n / 2), 0);
        const auto hungry = consumers ? zt_queue_is_empty : zt_queue_is_full;
        while (ended < 2 * n)
            for (auto i = hungry(&queue) ? random() % 7 + 1 : 0; i > 0; --i) move(!consumers, 0);
        for (auto &thread : crews[1]) thread.join();
        zt_queue_destroy(&queue);
    }
    EXPECT_EQ(zt_queue_add_tail(&other, &other, 0), 0);
    bystander.join(), zt_queue_destroy(&other);
}

// Of two that wait, the first to wake up is cancelled before it takes anything.
TEST(Queue, AThreadThatDiesInItsWaitLeavesTheWakeUpToAnother) {
    zt_queue_t queue;
    for (const bool consumers : {true, false}) {
        ASSERT_EQ(zt_queue_create(&queue, 1) + (consumers ? 0 : zt_queue_add_tail(&queue, &queue, 0)), 0);
        g_dies = true, g_pester = false, g_sleeps = 0;
        std::thread threads[2];
        for (auto &thread : threads)
            thread = std::thread(
                [&] { consumers ? zt_queue_get_head(&queue, -1) : (zt_queue_add_tail(&queue, &queue, -1), nullptr); });
        while (g_sleeps < 2) std::this_thread::yield();
        consumers ? zt_queue_add_tail(&queue, &queue, 0) : zt_queue_get_head(&queue, 0) == nullptr;
        for (auto &thread : threads) thread.join();
        EXPECT_EQ(zt_queue_get_num_avail(&queue), consumers ? 0u : 1u);
        zt_queue_destroy(&queue);
    }
}
