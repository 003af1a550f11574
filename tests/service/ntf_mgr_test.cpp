// Random subscriptions, publishes and reads against a slow model, with every hook call recorded; failed
// allocations; a real reader/writer lock under many threads.
// SPDX-License-Identifier: MIT
#include "zt/ntf_mgr.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <map>
#include <mutex>
#include <random>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/alloc_faults.hpp"

namespace {

std::string g_hooks;  // R and r: read_lock and read_unlock, W and w, F and f likewise
std::vector<std::pair<uint64_t, uint64_t>> g_calls;  // subscriber and notification of each callback

template <char kLetter>
void record(zt_ntf_mgr_t *) {
    g_hooks += kLetter;
}
const zt_ntf_mgr_ops_t kRecording = {record<'R'>, record<'r'>, record<'W'>,
                                     record<'w'>, record<'F'>, record<'f'>};

bool consumes(uint64_t subscriber, uint64_t ntf) { return (subscriber + ntf) % 3 == 0; }

bool on_change(zt_ntf_mgr_t *, uint64_t subscriber, uint64_t ntf) {
    g_calls.emplace_back(subscriber, ntf);
    EXPECT_EQ(g_hooks, "RF");
    return consumes(subscriber, ntf);
}

struct Subscriber {
    std::vector<uint64_t> ids;
    int first_bit;
    uint64_t mask, flags = 0, raw = 0;
    bool called_back;
};

class Model {
  public:
    void step() {
        g_hooks.clear();
        g_calls.clear();
        const uint64_t id = kSubscribers[random_() % std::size(kSubscribers)];
        switch (random_() % 8) {
            case 0:
                subscribe(id);
                break;
            case 1:
                unsubscribe(id);
                break;
            case 2:
            case 3:
            case 4:
                publish(random_() % 12);
                break;
            default:
                read(id, static_cast<int>(random_() % 4));
                break;
        }
    }
    ~Model() { zt_ntf_mgr_deinit(&manager_); }
    Model() { EXPECT_EQ(zt_ntf_mgr_init(&kRecording, &manager_), 0); }

  private:
    // Keys whose differences do not fit signed numbers of any width.
    static constexpr uint64_t kSubscribers[] = {
        0, 1, 2, 3, 0x80000000, 0x100000000, UINT64_MAX / 2, UINT64_MAX / 2 + 1, UINT64_MAX};

    void subscribe(uint64_t id) {
        Subscriber made = {};
        made.first_bit = static_cast<int>(random_() % 64);
        made.ids.resize(random_() % std::min(9, 66 - made.first_bit));
        for (uint64_t &ntf : made.ids) ntf = random_() % 12;
        const auto bits = static_cast<int>(made.first_bit + made.ids.size());
        made.mask = bits >= 64 ? ~uint64_t{0} : (uint64_t{1} << bits) - 1;
        made.called_back = random_() % 4 != 0;
        const uint64_t nothing = 0;
        const zt_status_t want = bits > 64 ? 7 : subscribers_.count(id) != 0 ? 22 : 0;
        ASSERT_EQ(zt_ntf_mgr_subscribe(&manager_, id, made.first_bit,
                                       made.ids.empty() ? &nothing : made.ids.data(),
                                       static_cast<int32_t>(made.ids.size()),
                                       made.called_back ? on_change : nullptr),
                  want);
        ASSERT_EQ(g_hooks, want == 7 ? "" : "Ww");
        if (want != 0) return;
        for (size_t i = 0; i < made.ids.size(); ++i) {
            links_[made.ids[i]].emplace_back(id, made.first_bit + i);
        }
        subscribers_[id] = made;
    }

    void unsubscribe(uint64_t id) {
        const bool exists = subscribers_.erase(id) != 0;
        ASSERT_EQ(zt_ntf_mgr_unsubscribe(&manager_, id), exists ? 0 : 16);
        ASSERT_EQ(g_hooks, "Ww");
        for (auto &[ntf, links] : links_) {
            std::erase_if(links, [id](const auto &link) { return link.first == id; });
        }
    }

    void publish(uint64_t ntf) {
        std::vector<std::pair<uint64_t, uint64_t>> expected;
        for (const auto &[id, bit] : links_[ntf]) {
            Subscriber &subscriber = subscribers_.at(id);
            subscriber.raw |= uint64_t{1} << bit;
            const uint64_t effective = subscriber.raw & subscriber.mask;
            if (effective == subscriber.flags) continue;
            subscriber.flags = effective;
            if (!subscriber.called_back) continue;
            expected.emplace_back(id, ntf);
            if (!consumes(id, ntf)) continue;
            subscriber.raw &= ~(uint64_t{1} << bit);
            subscriber.flags &= ~(uint64_t{1} << bit);
        }
        ASSERT_EQ(zt_ntf_mgr_publish(&manager_, ntf), 0);
        ASSERT_EQ(g_calls, expected);
        ASSERT_EQ(g_hooks, links_[ntf].empty() ? "Rr" : "RFfr");
    }

    void read(uint64_t id, int what) {
        const auto found = subscribers_.find(id);
        const bool exists = found != subscribers_.end();
        uint64_t value = 0xabc, expected = 0xabc;
        const uint64_t mask = (uint64_t{random_()} << 32) | random_();
        zt_status_t status = 0;
        if (what == 0) status = zt_ntf_mgr_get_en_mask(&manager_, id, &value);
        if (what == 1) status = zt_ntf_mgr_set_en_mask(&manager_, id, mask);
        if (what == 2) status = zt_ntf_mgr_get_flags(&manager_, id, &value);
        if (what == 3) status = zt_ntf_mgr_get_raw_flags(&manager_, id, &value);
        if (exists) {
            Subscriber &subscriber = found->second;
            if (what == 0) expected = subscriber.mask;
            if (what == 1) subscriber.mask = mask;
            if (what == 2) expected = subscriber.flags;
            if (what == 3) expected = subscriber.raw;
            if (what == 2) subscriber.raw &= ~subscriber.flags;
            if (what == 3) subscriber.raw = 0;
            if (what >= 2) subscriber.flags = 0;
        }
        ASSERT_EQ(status, exists ? 0 : 16);
        ASSERT_EQ(value, expected);
        ASSERT_EQ(g_hooks, exists ? "RFfr" : "Rr");
    }

    std::mt19937 random_{17};
    zt_ntf_mgr_t manager_ = {};
    std::map<uint64_t, Subscriber> subscribers_;
    std::map<uint64_t, std::vector<std::pair<uint64_t, uint64_t>>> links_;
};

TEST(NtfMgr, BehavesAsTheModelAndCallsTheHooksInOrder) {
    SCOPED_TRACE("seed 17");
    const int64_t before = alloc_faults::live();
    {
        Model model;
        for (int i = 0; i < 100'000 && !HasFatalFailure(); ++i) model.step();
        g_hooks.clear();
    }
    EXPECT_EQ(g_hooks, "Ww") << "deinit";
    EXPECT_EQ(alloc_faults::live(), before);
}

TEST(NtfMgr, BadArgumentsCallNoHook) {
    zt_ntf_mgr_t none = {}, manager = {};
    uint64_t ids[1] = {5}, value = 0;
    g_hooks.clear();
    EXPECT_EQ(zt_ntf_mgr_publish(&none, 1), 7);
    EXPECT_EQ(zt_ntf_mgr_unsubscribe(&none, 1), 7);
    EXPECT_EQ(zt_ntf_mgr_get_flags(&none, 1, &value), 7);
    EXPECT_EQ(zt_ntf_mgr_subscribe(&none, 1, 0, ids, 1, nullptr), 7);
    ASSERT_EQ(zt_ntf_mgr_init(&kRecording, &manager), 0);
    EXPECT_EQ(zt_ntf_mgr_get_raw_flags(&manager, 1, nullptr), 7);
    EXPECT_EQ(zt_ntf_mgr_subscribe(&manager, 1, 0, nullptr, 0, nullptr), 7);
    EXPECT_EQ(zt_ntf_mgr_subscribe(&manager, 1, -1, ids, 1, nullptr), 7);
    EXPECT_EQ(zt_ntf_mgr_subscribe(&manager, 1, 0, ids, -1, nullptr), 7);
    EXPECT_EQ(zt_ntf_mgr_subscribe(&manager, 1, INT32_MAX, ids, INT32_MAX, nullptr), 7);
    EXPECT_EQ(g_hooks, "");
    zt_ntf_mgr_deinit(&manager);
    zt_ntf_mgr_deinit(&manager);
    EXPECT_EQ(g_hooks, "Ww");
}

TEST(NtfMgr, AFailedSubscribeLeavesTheManagerAsItWas) {
    EXPECT_EQ(alloc_faults::fail_each([] {
                  const uint64_t ids[] = {1, 2, 1}, others[] = {2};
                  zt_ntf_mgr_t manager = {};
                  if (zt_ntf_mgr_init(&kRecording, &manager) != 0) return;
                  const bool other = zt_ntf_mgr_subscribe(&manager, 7, 0, others, 1, nullptr) == 0;
                  const int64_t before = alloc_faults::live();
                  g_hooks.clear();
                  const zt_status_t status = zt_ntf_mgr_subscribe(&manager, 8, 0, ids, 3, nullptr);
                  EXPECT_EQ(g_hooks, "Ww");
                  EXPECT_TRUE(status == 0 || (status == 8 && alloc_faults::live() == before));
                  EXPECT_EQ(zt_ntf_mgr_publish(&manager, 2), 0);
                  uint64_t flags = 0;
                  EXPECT_EQ(zt_ntf_mgr_get_flags(&manager, 7, &flags), other ? 0 : 16);
                  EXPECT_EQ(flags, other ? 1u : 0u);
                  zt_ntf_mgr_deinit(&manager);
              }),
              18u);
}

// An application's own locks behind the hooks; the handle comes first.
struct Application {
    zt_ntf_mgr_t manager = {};
    std::shared_mutex trees;
    std::mutex flags;
};
Application *app_of(zt_ntf_mgr_t *manager) { return reinterpret_cast<Application *>(manager); }
const zt_ntf_mgr_ops_t kLocking = {
    [](zt_ntf_mgr_t *m) { app_of(m)->trees.lock_shared(); },
    [](zt_ntf_mgr_t *m) { app_of(m)->trees.unlock_shared(); },
    [](zt_ntf_mgr_t *m) { app_of(m)->trees.lock(); },
    [](zt_ntf_mgr_t *m) { app_of(m)->trees.unlock(); },
    [](zt_ntf_mgr_t *m) { app_of(m)->flags.lock(); },
    [](zt_ntf_mgr_t *m) { app_of(m)->flags.unlock(); },
};

TEST(NtfMgr, ThreadsPublishPollAndComeAndGo) {
    Application app;
    ASSERT_EQ(zt_ntf_mgr_init(&kLocking, &app.manager), 0);
    static std::atomic<int> called;
    called = 0;
    const zt_ntf_cb_t count = [](zt_ntf_mgr_t *, uint64_t, uint64_t) { return ++called > 0; };
    const uint64_t ids[] = {1, 2, 3};
    ASSERT_EQ(zt_ntf_mgr_subscribe(&app.manager, 1, 0, ids, 3, count), 0);
    std::vector<std::thread> threads;
    for (uint64_t t = 0; t < 6; ++t) {
        threads.emplace_back([&, t] {
            for (uint64_t i = 0; i < 3'000; ++i) {
                uint64_t flags = 0;
                if (t < 2) {
                    ASSERT_EQ(zt_ntf_mgr_publish(&app.manager, 1 + i % 3), 0);
                } else if (t < 4) {
                    ASSERT_LE(zt_ntf_mgr_get_flags(&app.manager, 4 + i % 2, &flags), 16);
                    ASSERT_EQ(flags & ~uint64_t{7}, 0u);
                } else {
                    ASSERT_EQ(zt_ntf_mgr_subscribe(&app.manager, t, 0, ids, 3, nullptr), 0);
                    ASSERT_EQ(zt_ntf_mgr_unsubscribe(&app.manager, t), 0);
                }
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(called, 2 * 3'000) << "each publish changes the flags: the callback consumes them";
    zt_ntf_mgr_deinit(&app.manager);
}

}  // namespace
