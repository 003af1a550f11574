// Random subscriptions (some without memory), publishes and reads against a slow model, with every hook
// call recorded; a real reader/writer lock under many threads.
// SPDX-License-Identifier: MIT
#include "zt/ntf_mgr.h"

#include <mutex>
#include <shared_mutex>

#include "support/test.hpp"

std::string g_hooks;                                 // R and r: read_lock and read_unlock, W and w, F and f likewise
std::vector<std::pair<uint64_t, uint64_t>> g_calls;  // subscriber and notification of each callback

template <char kLetter>
constexpr zt_ntf_mgr_hook_t kRecord = [](auto) { g_hooks += kLetter; };
const zt_ntf_mgr_ops_t kRecording = {kRecord<'R'>, kRecord<'r'>, kRecord<'W'>,
                                     kRecord<'w'>, kRecord<'F'>, kRecord<'f'>};

static bool on_change(zt_ntf_mgr_t *, uint64_t subscriber, uint64_t ntf) {
    return g_calls.emplace_back(subscriber, ntf), g_hooks == "RF" && ntf % 3 == 0;  // consumes some
}
static zt_ntf_cb_t callback_of(uint64_t subscriber) { return subscriber % 4 != 0 ? on_change : nullptr; }

struct Subject {
    Choices &random;
    zt_ntf_mgr_t manager = {};
    std::map<uint64_t, std::array<uint64_t, 3>> subscribers = {};  // enable mask, flags, raw flags
    std::vector<std::pair<uint64_t, uint64_t>> links[12] = {};     // subscriber and bit, by notification

    void subscribe(uint64_t id) {
        int first = random(65) - 1, count = random(10) - 1, bits = first + count;
        uint64_t ids[8];
        for (uint64_t &ntf : ids) ntf = random(12);
        const int64_t before = faults::live();
        faults::fail_at(1 + random(40), faults::Mode(random(2)));
        const auto status = zt_ntf_mgr_subscribe(&manager, id, first, ids, count, callback_of(id));
        const bool failed = faults::disarm(), bad = first < 0 || count < 0 || bits > 64;
        ASSERT_EQ(status, bad ? 7 : subscribers.contains(id) ? 22 : failed ? 8 : 0);
        ASSERT_EQ(g_hooks, bad ? "" : "Ww");
        ASSERT_TRUE(status == 0 || faults::live() == before) << "not rolled back";
        for (int i = 0; !status && i < count; ++i) links[ids[i]].emplace_back(id, 1ull << first++);
        if (status == 0) subscribers[id] = {bits == 64 ? ~0ull : (1ull << bits) - 1};
    }
    void unsubscribe(uint64_t id) {
        ASSERT_EQ(zt_ntf_mgr_unsubscribe(&manager, id), subscribers.erase(id) != 0 ? 0 : 16);
        ASSERT_EQ(g_hooks, "Ww");
        for (auto &all : links) std::erase_if(all, [id](auto &link) { return link.first == id; });
    }
    void publish(uint64_t ntf) {
        decltype(g_calls) expected;
        for (const auto &[id, bit] : links[ntf]) {
            auto &[mask, flags, raw] = subscribers.at(id);
            raw |= bit;
            if (std::exchange(flags, raw & mask) == (raw & mask) || !callback_of(id)) continue;
            expected.emplace_back(id, ntf);
            if (ntf % 3 == 0) raw &= ~bit, flags &= ~bit;
        }
        ASSERT_EQ(zt_ntf_mgr_publish(&manager, ntf), 0);
        ASSERT_EQ(g_calls, expected);
        ASSERT_EQ(g_hooks, links[ntf].empty() ? "Rr" : "RFfr");
    }
    void read_or_set_mask(uint64_t id) {
        const auto what = random(4), before = random();
        const auto set = [](auto m, auto i, auto v) { return zt_ntf_mgr_set_en_mask(m, i, *v); };
        const decltype(&zt_ntf_mgr_get_flags) operations[] = {zt_ntf_mgr_get_en_mask, zt_ntf_mgr_get_flags,
                                                              zt_ntf_mgr_get_raw_flags, set};
        const bool exists = subscribers.contains(id);
        std::array none = {before, before, before};
        auto &words = exists ? subscribers[id] : none;
        uint64_t value = before;
        ASSERT_EQ(operations[what](&manager, id, &value), exists ? 0 : 16);
        ASSERT_EQ(g_hooks, exists ? "RFfr" : "Rr");
        if (what == 3) words[0] = value;
        ASSERT_EQ(value, words[what % 3]);
        if (what % 3 != 0) words[2] &= what == 1 ? ~words[1] : 0, words[1] = 0;
    }
};

ZT_MODEL(NtfMgr, BehavesAsTheModelAndCallsTheHooksInOrder, 1, 100'000) {
    Subject all{random};
    zt_ntf_mgr_t &manager = all.manager;
    // Keys whose differences do not fit signed numbers of any width.
    constexpr uint64_t kIds[] = {0, 1, 2, 3, 1ull << 31, 1ull << 32, ~0ull / 2, 1ull << 63, ~0ull};
    faults::fail_at(1, faults::Mode::kOnce);
    for (const int want : {8, 0}) ASSERT_EQ(zt_ntf_mgr_init(&kRecording, &manager), want);
    EXPECT_EQ(zt_ntf_mgr_subscribe(&manager, 1, INT32_MAX, kIds, INT32_MAX, nullptr), 7);
    EXPECT_EQ(g_hooks, "");
    for (; random.more(); g_hooks.clear(), g_calls.clear()) {
        const uint64_t id = kIds[random(std::size(kIds))], dice = random(8);
        if (dice < 2) dice == 0 ? all.subscribe(id) : all.unsubscribe(id);
        if (dice >= 2) dice < 5 ? all.publish(random(12)) : all.read_or_set_mask(id);
    }
    zt_ntf_mgr_deinit(&manager), zt_ntf_mgr_deinit(&manager);
    EXPECT_EQ(std::exchange(g_hooks, ""), "Ww");
    EXPECT_EQ(faults::live(), 0);
}

std::shared_mutex g_trees;
std::mutex g_flags;
const zt_ntf_mgr_ops_t kLocking = {[](auto) { g_trees.lock_shared(); }, [](auto) { g_trees.unlock_shared(); },
                                   [](auto) { g_trees.lock(); },        [](auto) { g_trees.unlock(); },
                                   [](auto) { g_flags.lock(); },        [](auto) { g_flags.unlock(); }};
int g_called;  // safe: called back under flags_lock

TEST(NtfMgr, ThreadsPublishPollAndComeAndGo) {
    const uint64_t ids[] = {1, 2, 3};
    zt_ntf_mgr_t manager = {};
    ASSERT_EQ(zt_ntf_mgr_init(&kLocking, &manager), 0);
    const auto count = [](auto, auto, auto) { return ++g_called > 0; };
    ASSERT_EQ(zt_ntf_mgr_subscribe(&manager, 1, 0, ids, 3, count), 0);
    on_threads(6, [&](int t) {
        for (uint64_t i = 0, flags = 0; i < 3'000; ++i) {
            if (t < 2) ASSERT_EQ(zt_ntf_mgr_publish(&manager, 1 + i % 3), 0);
            if (t == 2 || t == 3) ASSERT_LE(zt_ntf_mgr_get_flags(&manager, 4 + i % 2, &flags), 16);
            if (t >= 4) ASSERT_EQ(zt_ntf_mgr_subscribe(&manager, t, 0, ids, 3, nullptr), 0);
            if (t >= 4) ASSERT_EQ(zt_ntf_mgr_unsubscribe(&manager, t), 0);
        }
    });
    EXPECT_EQ(g_called, 2 * 3'000) << "each publish changes the flags: the callback consumes them";
    zt_ntf_mgr_deinit(&manager);
}
