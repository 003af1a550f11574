// SPDX-License-Identifier: MIT
#include "zt/queue.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <deque>
#include <filesystem>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "support/alloc_faults.hpp"
#include "zt/time.h"

static int g_failing_step;                   // of a creation: counts down to it
static std::atomic<int> g_sleeps, g_asleep;  // waits begun, waits not yet over
static std::atomic<int> g_doom, g_gone;      // threads to end where they drain an event; ended so

static bool g_pester;  // every wait ends at once

struct Queue : testing::Test {
    Queue() { alarm(60); }  // a hang is a failure
};

zt_status_t zt_mutex_init(zt_mutex_t *mutex) {
    return --g_failing_step == 0 ? ZT_STATUS_TRY_AGAIN : zt_mutex_init_ex(mutex, true, false);
}

zt_status_t zt_event_init(zt_event_t *event) {
    event->fd = --g_failing_step == 0 ? -1 : eventfd(0, EFD_NONBLOCK);
    return event->fd < 0 ? ZT_STATUS_TOO_MANY : ZT_STATUS_SUCCESS;
}

int zt_event_wait(zt_event_t *event, int32_t timeout_ms) {
    static const auto wait = (decltype(&zt_event_wait))dlsym(RTLD_NEXT, "zt_event_wait");
    if (g_pester) return usleep(1'000) + 1;
    ++g_sleeps;
    ++g_asleep;
    const int sets = wait(event, timeout_ms);
    --g_asleep;
    if (sets > 0 && g_doom.exchange(0) > 0) {
        ++g_gone;
        pthread_exit(nullptr);
    }
    return sets;
}

TEST_F(Queue, CreatesWholeOrNotAtAll) {
    const auto open_files = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = open_files();
    const zt_status_t want[] = {0, 4, 17, 17, 8};
    for (int failing_step = 0; failing_step < 5; ++failing_step) {
        g_failing_step = failing_step % 4;
        if (failing_step == 4) alloc_faults::fail_at(1, alloc_faults::Mode::kOnce);
        zt_queue_t queue;
        EXPECT_EQ(zt_queue_create(&queue, 3), want[failing_step]);
        alloc_faults::disarm();
        EXPECT_EQ(queue.initialized, failing_step == 0);
        for (int i = 0; i < 2; ++i) zt_queue_destroy(&queue);
        EXPECT_EQ(open_files() + alloc_faults::live(), before) << "leak at step " << failing_step;
    }
}

static void discard(zt_queue_t *queue, void *item, void *context) {
    *static_cast<void **>(context) = item;
    EXPECT_FALSE(zt_event_is_set(&queue->avail_event));
    std::thread([=] { EXPECT_TRUE(zt_queue_is_full(queue)); }).join();  // the lock is free
}

TEST_F(Queue, AgreesWithADeque) {
    std::mt19937 random(7);
    const auto below = [&](size_t bound) { return random() % bound; };
    zt_queue_t queue;
    std::deque<void *> model;
    size_t capacity = 0;
    bool canceled = false;
    ASSERT_EQ(zt_queue_create(&queue, 0), ZT_STATUS_SUCCESS);
    g_pester = true;
    for (uintptr_t step = 1; step < 50'000; ++step) {
        SCOPED_TRACE(testing::Message() << "seed 7, step " << step);
        auto *const item = reinterpret_cast<void *>(step);
        const int wait = canceled ? static_cast<int>(below(3)) - 1 : 5 * (below(500) == 0);
        const size_t size = model.size(), at = below(size + 1), op = below(10);
        const size_t after = (at + 1) % (size + 1), end = size - (size == capacity);
        const size_t index[] = {0, size, at, after, end, 0, size - 1, at};  // in the model
        zt_list_head_t *place = queue.items.next;  // of item number `at`, or the head behind them
        for (size_t i = 0; i < at; ++i) place = place->next;
        auto *const pos = ZT_CONTAINER_OF(place, zt_queue_node_t, link);
        void *dropped = nullptr;
        const std::function<uintptr_t()> calls[] = {
            [&] { return zt_queue_add_head(&queue, item, wait); },
            [&] { return zt_queue_add_tail(&queue, item, wait); },
            [&] { return zt_queue_insert_before(&queue, item, pos, wait); },
            [&] { return zt_queue_insert_after(&queue, item, pos, wait); },
            [&] { return zt_queue_add_tail_with_discard(&queue, item, discard, &dropped); },
            [&] { return uintptr_t(zt_queue_get_head(&queue, wait)); },
            [&] { return uintptr_t(zt_queue_get_tail(&queue, wait)); },
            [&] { return uintptr_t(at < size ? zt_queue_get_at(&queue, pos) : nullptr); },
        };
        bool avail = false, space = false;  // events that the operation sets
        zt_event_clear(&queue.avail_event);
        zt_event_clear(&queue.space_event);
        if (op < 5) {
            avail = size < capacity || (op == 4 && capacity > 0);
            const uintptr_t refusal = canceled && wait && op < 4 ? 42 : 2;  // Canceled, Timeout
            ASSERT_EQ(calls[op](), avail ? 0 : refusal);
            ASSERT_EQ(dropped, avail && size == capacity ? model.front() : nullptr);
            if (dropped) model.pop_front();
            if (avail) model.insert(model.begin() + static_cast<ptrdiff_t>(index[op]), item);
        } else if (op < 8) {
            space = index[op] < size;
            ASSERT_EQ(calls[op](), space ? uintptr_t(model[index[op]]) : 0);
            if (space) model.erase(model.begin() + static_cast<ptrdiff_t>(index[op]));
        } else if (below(4) == 0) {
            canceled = avail = space = op == 8 && below(2);
            capacity = op == 8 ? 0 : below(6);
            model.clear();
            if (op == 8) zt_queue_decommit(&queue, canceled);
            const uint32_t nodes = capacity ? static_cast<uint32_t>(capacity) : 1U << 27;  // 4 GiB
            ASSERT_EQ(op == 8 ? 0 : zt_queue_commit(&queue, nodes), op == 8 || capacity ? 0 : 8);
        }
        ASSERT_EQ(zt_event_is_set(&queue.avail_event), avail);
        ASSERT_EQ(zt_event_is_set(&queue.space_event), space);
        ASSERT_TRUE(zt_queue_is_empty(&queue) == model.empty() && queue.canceled == canceled);
        ASSERT_EQ(zt_queue_get_num_avail(&queue), model.size());
        ASSERT_EQ(zt_queue_get_num_free(&queue), capacity - model.size());
        ASSERT_EQ(zt_queue_peek_head(&queue), model.empty() ? nullptr : model.front());
        ASSERT_EQ(zt_queue_peek_tail(&queue), model.empty() ? nullptr : model.back());
        for (auto *head : {&queue.items, &queue.free_nodes}) {
            size_t length = 0;
            for (auto *link = head->next; link != head; link = link->next, ++length) {
                const auto *node = ZT_CONTAINER_OF(link, zt_queue_node_t, link);
                ASSERT_TRUE(link->next->prev == link && node->owner == head);
                ASSERT_TRUE(head == &queue.free_nodes || node->data == model.at(length));
            }
            ASSERT_EQ(length, head == &queue.items ? model.size() : capacity - model.size());
        }
    }
    g_pester = false;
    zt_queue_destroy(&queue);
}

// A queue one side of which blocks while the other feeds it. The items are numbers, added up.
struct Stage {
    bool consumers;  // are the side that blocks
    zt_queue_t queue{};
    std::atomic<uintptr_t> items{0}, in{0}, out{0};

    bool put(int32_t timeout_ms) {
        const uintptr_t item = ++items;
        const uint64_t start = zt_time_get_ms();
        const auto got = zt_queue_add_tail(&queue, reinterpret_cast<void *>(item), timeout_ms);
        const bool expired = timeout_ms >= 0 && zt_time_get_ms() - start >= uint64_t(timeout_ms);
        if (got == ZT_STATUS_SUCCESS) return in += item;
        EXPECT_EQ(got, expired ? ZT_STATUS_TIMEOUT : ZT_STATUS_CANCELED);
        return false;
    }
    bool get(int32_t timeout_ms) {
        const auto item = reinterpret_cast<uintptr_t>(zt_queue_get_head(&queue, timeout_ms));
        out += item;
        return item > 0;
    }
    bool block(int32_t timeout_ms) { return consumers ? get(timeout_ms) : put(timeout_ms); }
    bool feed() { return consumers ? put(0) : get(0); }
    bool hungry() { return consumers ? zt_queue_is_empty(&queue) : zt_queue_is_full(&queue); }
};

template <typename Condition>
static void await(Condition holds) {
    while (!holds()) std::this_thread::yield();
}

// A crew of n blocks and is cancelled; a second one that comes at once must not stand in its way,
// and is then fed in batches. One thread may end in its wait, with the wake-up in its hands.
static void play(bool consumers, int n, uint32_t chance) {
    Stage stage{consumers};
    const auto nodes = static_cast<uint32_t>(consumers ? n : 0);
    zt_event_t *const event = consumers ? &stage.queue.avail_event : &stage.queue.space_event;
    ASSERT_EQ(zt_queue_create(&stage.queue, nodes), ZT_STATUS_SUCCESS);
    std::atomic<int> first{0}, second{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> crews;
    g_sleeps = g_asleep = g_gone = 0;
    for (int i = 0; i < n; ++i) {
        crews.emplace_back([&, i] { first += !stage.block(i % 3 > 0 ? -1 : 60'000); });
        crews.emplace_back([&, i] {
            go.wait(false);
            stage.block(i % 4 < 3 ? -1 : 1 + i % 5);
            ++second;
        });
    }
    await([&] { return g_asleep == n; });
    if (chance % 64 == 0) {
        zt_event_set(event);
        usleep(20'000);
        EXPECT_LE(g_sleeps, 2 * n) << "idle waiters spin";
    }
    g_doom = chance % 4 == 0;
    zt_queue_decommit(&stage.queue, true);
    if (chance % 3 == 0) await([&] { return first + g_gone == n; });
    ASSERT_EQ(zt_queue_commit(&stage.queue, nodes), ZT_STATUS_SUCCESS);
    go = true;
    go.notify_all();
    await([&] { return first + g_gone == n && g_asleep >= n - n / 4; });
    g_gone = 0;
    g_doom = chance % 4 == 1;
    ASSERT_EQ(consumers ? 0 : zt_queue_commit(&stage.queue, static_cast<uint32_t>(n / 2)), 0);
    while (second + g_gone < n) {
        await([&] { return stage.hungry() || second + g_gone == n; });
        for (uint32_t i = 0; i <= chance % 7; ++i) stage.feed();
    }
    for (auto &thread : crews) thread.join();
    while (!zt_queue_is_empty(&stage.queue)) stage.get(0);
    ASSERT_EQ(stage.in, stage.out) << "items lost, or got twice";
    zt_queue_destroy(&stage.queue);
}

TEST_F(Queue, WakesWhoeverCanGoOn) {
    zt_queue_t other;
    ASSERT_EQ(zt_queue_create(&other, 1), ZT_STATUS_SUCCESS);
    std::thread bystander([&] { EXPECT_EQ(zt_queue_get_head(&other, -1), &other); });
    await([] { return g_asleep == 1; });
    std::mt19937 random(11);
    for (const int n : {2, 8, 32}) {
        const uint64_t end = zt_time_get_ms() + 2'000;
        while (zt_time_get_ms() < end) play(random() % 2, n, random());
    }
    zt_event_set(&other.avail_event);  // no reason to leave
    usleep(1'000);
    zt_queue_add_tail(&other, &other, 0);
    bystander.join();
    zt_queue_destroy(&other);
}
