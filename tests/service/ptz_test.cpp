// Commands against capabilities, routing of results, what callbacks may do, failures, threads.
// SPDX-License-Identifier: MIT
#include "zt/ptz.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/alloc_faults.hpp"
#include "zt/ptz_internal.h"

namespace {

using Callback = std::function<void(const zt_ptz_msg_t &)>;

void call(zt_ptz_t *, const zt_ptz_msg_t *msg, void *user) {
    (*static_cast<Callback *>(user))(*msg);
}

// A channel with a driver that only counts; the handle comes first, as operations get its address.
struct Channel {
    zt_ptz_t ptz;
    int ready = 0, released = 0;
    zt_status_t init_result = 0;

    zt_status_t create(uint32_t depth) {
        zt_ptz_init(&ptz);
        ptz.init_capability = [](zt_ptz_t *handle, zt_ptz_capability_t *) {
            return reinterpret_cast<Channel *>(handle)->init_result;
        };
        ptz.command_ready = [](zt_ptz_t *handle) { ++reinterpret_cast<Channel *>(handle)->ready; };
        ptz.release = [](zt_ptz_t *handle) { ++reinterpret_cast<Channel *>(handle)->released; };
        const zt_ptz_internal_param_t param = {depth};
        return zt_ptz_internal_create(&ptz, &param);
    }
    uint32_t add(Callback callback) {
        callbacks.push_back(std::make_unique<Callback>(std::move(callback)));
        Callback *stored = callbacks.back().get();
        uint32_t id = 0;
        EXPECT_EQ(zt_ptz_register(&ptz, &id, std::string(100, 'n').c_str(), call, stored), 0);
        return id;
    }
    std::vector<std::unique_ptr<Callback>> callbacks;
    ~Channel() { zt_ptz_destroy(&ptz); }
};

template <typename T>
void store(void *record, size_t at, T value) {
    memcpy(static_cast<char *>(record) + at, &value, sizeof value);
}

// One checked field: code, first word (0: none), mode (-1: no mode, the range itself is meant), value,
// and where the three ranges, or the one, are.
struct CheckRow {
    uint32_t code, selector;
    int mode_at, value_at;
    size_t range_at, supported_at, min_at;
};
const CheckRow kChecks[] = {
    {0x100, 0, 0x00, 0x08, 0x000, 0, 4},     {0x100, 0, 0x0c, 0x14, 0x024, 0, 4},
    {0x102, 0, 0x00, 0x08, 0x048, 0, 4},     {0x103, 4, 0x04, 0x08, 0x070, 0, 4},
    {0x104, 0x200, 0x04, 0x0c, 0x098, 0, 4}, {0x104, 0x400, 0x10, 0x18, 0x0bc, 0, 4},
    {0x104, 0x400, 0x1c, 0x24, 0x0e0, 0, 4}, {0x104, 0x400, 0x28, 0x30, 0x104, 0, 4},
    {0x105, 0x20, -1, 0x04, 0x12c, 0, 4},    {0x105, 0x20, -1, 0x08, 0x12c, 0, 12},
    {0x106, 8, -1, 0x84, 0x140, 0, 4},
};

// Every mode, selector, bound and supported byte: only the range in question admits anything, so a
// wrong one shows.
TEST(PtzValidation, EachValueIsHeldAgainstItsOwnRange) {
    Channel channel;
    ASSERT_EQ(channel.create(1), 0);
    for (const CheckRow &row : kChecks) {
        for (const uint32_t mode : {0u, 1u, 2u, 3u, 4u, 0x80000001u}) {
            if (row.mode_at < 0 && mode != 1) continue;
            for (const uint8_t supported : {0, 1, 0x80}) {
                zt_ptz_capability_t capability = {};
                const size_t range = row.range_at + (mode >= 1 && mode <= 3 ? mode - 1 : 0) * 12;
                store(&capability, range + row.supported_at, supported);
                store(&capability, range + row.min_at, -2.5f);
                store(&capability, range + row.min_at + 4, 7.25f);
                capability.index_limit = 1;
                if (row.code == 0x105) store(&capability, 0x12c + (row.min_at == 4 ? 16 : 8), 1.0f);
                ASSERT_EQ(zt_ptz_internal_update_capability(&channel.ptz, &capability), 0);
                const bool checked = row.mode_at < 0 || (mode >= 1 && mode <= 3);
                const bool looked_at = row.code != 0x106;  // the index range needs no support
                for (const float value : {-2.5f, 0.5f, 7.25f, -2.6f, 7.3f, std::nanf("")}) {
                    for (const uint32_t selector : {row.selector, 0x40u}) {
                        if (selector == 0x40u && row.selector == 0) continue;
                        zt_ptz_params_t params = {};
                        if (row.selector != 0) store(&params, 0, selector);
                        if (row.mode_at >= 0) store(&params, row.mode_at, mode);
                        store(&params, row.value_at, value);
                        const bool admitted = value >= -2.5f && value <= 7.25f;
                        const bool want = !checked || selector != row.selector ||
                                          (admitted && (supported != 0 || !looked_at));
                        const zt_status_t status =
                            zt_ptz_send_command(&channel.ptz, 1, row.code, &params, nullptr);
                        ASSERT_EQ(status, want ? 0 : 7)
                            << std::hex << row.code << " selector " << selector << " mode " << mode
                            << " value " << value << " at " << row.value_at;
                        zt_ptz_clear(&channel.ptz);
                    }
                }
            }
        }
    }
}

TEST(PtzValidation, CodesIndicesAndDefaultsAreExact) {
    struct Row {
        uint32_t code, word, index;
        bool block;
        zt_status_t want;
    };
    const Row rows[] = {
        {0x101, 0, 0, false, 7},         {0x101, 9, 0, true, 0},   {0x201, 0, 0, false, 0},
        {0x301, 0, 0, false, 7},         {0x106, 1, 255, true, 0}, {0x106, 1, 256, true, 7},
        {0x106, 1, UINT32_MAX, true, 7}, {0x306, 1, 256, true, 0}, {0x102, 1, 0, true, 7},
        {0x302, 1, 0, true, 0},          {0x10102, 1, 0, true, 0},
    };
    Channel channel;
    ASSERT_EQ(channel.create(0), 0);
    for (const Row &row : rows) {
        zt_ptz_params_t params = {};
        store(&params, 0, row.word);
        params.index.index = row.index;
        EXPECT_EQ(
            zt_ptz_send_command(&channel.ptz, 1, row.code, row.block ? &params : nullptr, nullptr),
            row.want)
            << std::hex << row.code << " index " << row.index;
    }
    zt_ptz_capability_t capability;
    ASSERT_EQ(zt_ptz_get_capability(&channel.ptz, &capability), 0);
    for (int i = 0; i < 3; ++i) {
        const float narrow = i == 1 ? -1.f : 0.f, lens = i == 0 ? 0.f : -1.f;
        EXPECT_EQ(capability.first_axis[i].min, -1.f);
        EXPECT_EQ(capability.selected[i].min, lens);
        EXPECT_EQ(capability.value[i].min, lens);
        EXPECT_EQ(capability.group_one[i].min, narrow);
        for (const auto &group : capability.group_three) EXPECT_EQ(group[i].min, narrow);
        EXPECT_EQ(capability.second_axis[i].max, 1.f);
    }
    EXPECT_EQ(capability.pair.max2, 1.f);
    EXPECT_EQ(capability.index_value.max, 1.f);
}

// Which client hears what of a result: '-' nothing, 'r' the result, 'i' the index, 'n' with the name.
TEST(PtzChannel, ResultsAreRoutedByCodeStatusAndOperation) {
    struct Row {
        uint32_t code;
        int32_t status;
        uint32_t operation, to;  // to: 0 to 2 a client, 3 nobody
        bool block;
        const char *heard;
    };
    const Row rows[] = {
        {0x206, 0, 2, 1, true, "-r-"}, {0x106, 0, 2, 1, true, "nrn"},
        {0x106, 0, 4, 1, true, "-r-"}, {0x106, 1, 2, 0, true, "r--"},
        {0x106, 0, 1, 2, true, "iir"}, {0x106, 0, 1, 3, true, "iii"},
        {0x306, 0, 1, 0, true, "r--"}, {0x1106, 0, 1, 0, true, "r--"},
        {0x102, 0, 1, 0, true, "r--"}, {0x106, 0, 1, 0, false, "r--"},
        {0x206, 0, 1, 3, true, "---"},
    };
    Channel channel;
    ASSERT_EQ(channel.create(0), 0);
    std::string heard;
    uint32_t ids[4] = {0, 0, 0, 0xffff0000};
    for (size_t i = 0; i < 3; ++i) {
        ids[i] = channel.add([&heard, i](const zt_ptz_msg_t &msg) {
            uint8_t expected[144] = {};
            expected[0] = static_cast<uint8_t>(msg.type);
            if (msg.type == 3) {
                const bool named = msg.u.index.name[0] != 0;
                if (named) memset(expected + 0x0c, 'x', 127);
                expected[0x8c] = 77;
                heard[i] = named ? 'n' : 'i';
            } else {
                memcpy(expected + 8, &msg.u.result, 40);
                heard[i] = msg.u.result.data[23] == 9 ? 'r' : '?';
            }
            EXPECT_EQ(memcmp(&msg, expected, sizeof msg), 0) << "a byte without a meaning is not 0";
        });
    }
    uint32_t silent = 0;
    ASSERT_EQ(zt_ptz_register(&channel.ptz, &silent, nullptr, nullptr, nullptr), 0);
    for (const Row &row : rows) {
        heard = "---";
        zt_ptz_params_t params;
        memset(&params, 'x', sizeof params);
        params.index.operation = row.operation;
        params.index.index = 77;
        zt_ptz_result_t result = {row.status, row.code, 5, ids[row.to], {}};
        result.data[23] = 9;
        ASSERT_EQ(zt_ptz_internal_put_result(&channel.ptz, &result, row.block ? &params : nullptr),
                  0);
        EXPECT_EQ(heard, row.heard) << std::hex << row.code << " operation " << row.operation;
    }
}

// Callbacks that register, unregister anybody and send: each client that is there throughout is called
// exactly once, none that has left before its turn.
TEST(PtzChannel, CallbacksMayRearrangeTheClients) {
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(testing::Message() << "seed 3, round " << round);
        Channel channel;
        ASSERT_EQ(channel.create(0), 0);
        std::vector<uint32_t> present, called;
        std::map<uint32_t, bool> left;
        Callback rearrange;
        const auto add_one = [&](bool initially) {
            auto own_id = std::make_shared<uint32_t>(0);
            *own_id = channel.add([&, own_id](const zt_ptz_msg_t &) {
                called.push_back(*own_id);
                EXPECT_FALSE(left[*own_id]);
                rearrange({});
            });
            if (initially) present.push_back(*own_id);
        };
        rearrange = [&](const zt_ptz_msg_t &) {
            if (random() % 3 == 0) {
                const uint32_t victim = present[random() % present.size()];
                zt_ptz_unregister(&channel.ptz, victim);
                left[victim] = true;
            }
            if (random() % 3 == 0 && zt_ptz_get_register_num(&channel.ptz) < 16) add_one(false);
            EXPECT_LE(zt_ptz_send_command(&channel.ptz, 1, 0x201, nullptr, nullptr), 4);
        };
        for (int i = 0; i < 8; ++i) add_one(true);
        const zt_ptz_capability_t capability = {};
        ASSERT_EQ(zt_ptz_internal_update_capability(&channel.ptz, &capability), 0);
        std::vector<uint32_t> stayed;
        for (const uint32_t id : present) {
            const auto times = std::count(called.begin(), called.end(), id);
            EXPECT_LE(times, 1);
            EXPECT_TRUE(left[id] || times == 1);
        }
        for (const uint32_t id : called) EXPECT_LE(id, present.back()) << "a newcomer was called";
    }
}

TEST(PtzChannel, LimitsOrderAndStates) {
    Channel channel;
    ASSERT_EQ(channel.create(2), 0);
    zt_ptz_channel_t *first = channel.ptz.priv;
    const zt_ptz_internal_param_t param = {2};
    EXPECT_EQ(zt_ptz_internal_create(&channel.ptz, &param), 35);
    EXPECT_EQ(channel.ptz.priv, first);
    uint32_t seq[4] = {}, id = 0, got = 0, code = 0;
    zt_ptz_params_t block, zeros = {};
    memset(&block, 1, sizeof block);
    while (zt_ptz_send_command(&channel.ptz, 1, 0x101, &block, nullptr) == 0) ++id;
    EXPECT_EQ(id, 2u);
    zt_ptz_clear(&channel.ptz);  // nothing of these blocks may show in later commands
    channel.ready = 0;
    for (uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(zt_ptz_send_command(&channel.ptz, 50 + i, 0x201, nullptr, &seq[i]),
                  i < 2 ? 0 : 4);
    }
    EXPECT_EQ(channel.ready, 2);
    for (uint32_t i = 0; i < 3; ++i) {
        memset(&block, 1, sizeof block);
        ASSERT_EQ(zt_ptz_internal_get_command(&channel.ptz, &id, &got, &code, &block),
                  i < 2 ? 0 : 4);
        if (i == 2) break;
        EXPECT_EQ(id, 50 + i);
        EXPECT_EQ(got, seq[i]);
        EXPECT_EQ(memcmp(&block, &zeros, sizeof block), 0);
    }
    ASSERT_EQ(zt_ptz_send_command(&channel.ptz, 1, 0x201, nullptr, &seq[3]), 0);
    EXPECT_EQ(seq[3], seq[1] + 2) << "the number of the refused command is lost";
    EXPECT_EQ(zt_ptz_clear(&channel.ptz), 0);
    EXPECT_EQ(zt_ptz_internal_get_command(&channel.ptz, &id, &got, &code, &block), 4);
    for (int i = 0; i < 16; ++i) channel.add([](const zt_ptz_msg_t &) {});
    id = 12345;
    EXPECT_EQ(zt_ptz_register(&channel.ptz, &id, nullptr, nullptr, nullptr), 4);
    EXPECT_EQ(id, 12345u);

    zt_ptz_destroy(&channel.ptz);
    EXPECT_EQ(channel.released, 1);
    EXPECT_EQ(zt_ptz_send_command(&channel.ptz, 1, 0x201, nullptr, nullptr), 38);
    EXPECT_EQ(zt_ptz_get_register_num(&channel.ptz), 38);
    zt_ptz_capability_t capability;
    memset(&capability, 1, sizeof capability);
    EXPECT_EQ(zt_ptz_get_capability(&channel.ptz, &capability), 38);
    EXPECT_EQ(capability.index_limit, 0u);
    EXPECT_EQ(channel.create(UINT32_MAX), 8);
    channel.ptz.release = nullptr;
    EXPECT_EQ(zt_ptz_internal_create(&channel.ptz, &param), 7);
}

TEST(PtzChannel, EveryFailedCreationLeavesNothing) {
    EXPECT_EQ(alloc_faults::fail_each([] {
                  Channel channel;
                  const zt_status_t status = channel.create(4);
                  EXPECT_TRUE(status == 0 || (status == 8 && channel.ptz.priv == nullptr));
                  const int64_t before = alloc_faults::live();
                  for (int i = 0; status == 0 && i < 4; ++i) {
                      EXPECT_EQ(zt_ptz_send_command(&channel.ptz, 1, 0x201, nullptr, nullptr), 0);
                  }
                  EXPECT_EQ(alloc_faults::live(), before) << "allocated after creation";
              }),
              6u);
    Channel refused;
    refused.init_result = 55;
    EXPECT_EQ(refused.create(4), 55);
    EXPECT_EQ(alloc_faults::live(), 0);
}

// Clients on threads of their own, one driver: nothing is lost, each client's results come in order.
TEST(PtzChannel, NothingIsLostBetweenThreads) {
    constexpr uint32_t kClients = 4, kCommands = 2'000;
    Channel channel;
    ASSERT_EQ(channel.create(8), 0);
    std::atomic<uint32_t> finished{0};
    std::vector<std::vector<uint32_t>> sent(kClients), heard(kClients);
    std::vector<std::thread> threads;
    for (uint32_t c = 0; c < kClients; ++c) {
        const uint32_t id = channel.add([&heard, c](const zt_ptz_msg_t &msg) {
            if (msg.type == ZT_PTZ_MSG_RESULT) heard[c].push_back(msg.u.result.other);
        });
        threads.emplace_back([&, c, id] {
            while (sent[c].size() < kCommands) {
                uint32_t seq = 0;
                const zt_status_t status =
                    zt_ptz_send_command(&channel.ptz, id, 0x001, nullptr, &seq);
                if (status == 0) sent[c].push_back(seq);
                if (status != 0) std::this_thread::yield();
            }
            ++finished;
        });
    }
    uint32_t taken = 0, last_seq = 0;
    while (taken < kClients * kCommands) {
        uint32_t id = 0, seq = 0, code = 0;
        if (zt_ptz_internal_get_command(&channel.ptz, &id, &seq, &code, nullptr) != 0) {
            std::this_thread::yield();
            continue;
        }
        EXPECT_GT(seq, last_seq);
        last_seq = seq;
        ++taken;
        const zt_ptz_result_t result = {0, code, seq, id, {}};
        ASSERT_EQ(zt_ptz_internal_put_result(&channel.ptz, &result, nullptr), 0);
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(sent, heard);
}

}  // namespace
