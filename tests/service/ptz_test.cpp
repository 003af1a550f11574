// Commands against capabilities, routing of results, what callbacks may do, failures, threads.
// SPDX-License-Identifier: MIT
#include "zt/ptz.h"

#include "zt/ptz_internal.h"

#include "support/test.hpp"

using Callback = std::function<void(const zt_ptz_msg_t &)>;

// A channel with a driver that only counts; the handle comes first, as operations get its address.
struct Channel {
    zt_ptz_t ptz;
    int ready = 0, released = 0;
    zt_status_t init_result, status;
    Callback callbacks[32], *next = callbacks;

    static Channel &of(zt_ptz_t *handle) { return *reinterpret_cast<Channel *>(handle); }
    explicit Channel(uint32_t depth, zt_status_t init = 0) : init_result(init) {
        zt_ptz_init(&ptz);
        ptz.init_capability = [](auto handle, auto) { return of(handle).init_result; };
        ptz.command_ready = [](auto handle) { ++of(handle).ready; };
        ptz.release = [](auto handle) { ++of(handle).released; };
        status = create({depth});
    }
    ~Channel() { zt_ptz_destroy(&ptz); }
    zt_status_t create(zt_ptz_internal_param_t p) { return zt_ptz_internal_create(&ptz, &p); }
    uint32_t add(Callback callback) {  // 0 when there is no room
        const auto cb = [](auto, auto msg, void *to) { (*static_cast<Callback *>(to))(*msg); };
        *next = callback;
        uint32_t id = 0;
        return zt_ptz_register(&ptz, &id, std::string(100, 'n').c_str(), cb, next++) == 0 ? id : 0;
    }
    int send(uint32_t code, const void *p = nullptr) {
        return zt_ptz_send_command(&ptz, 1, code, static_cast<const zt_ptz_params_t *>(p), nullptr);
    }
    int send_as(uint32_t id, uint32_t *n) { return zt_ptz_send_command(&ptz, id, 1, nullptr, n); }
};

// Random modes, selectors, bounds and supported bytes: in the capability only the range in question admits
// anything, so a wrong one shows.
ZT_MODEL(Ptz, EachValueIsHeldAgainstItsOwnRange, 1, 50'000) {
    // Code, selector (0: none), and as words from the start: mode (35: none), value, first minimum.
    constexpr int kChecks[][5] = {{0x100, 0, 0, 2, 1},      {0x100, 0, 3, 5, 10},       {0x102, 0, 0, 2, 19},
                                  {0x103, 4, 1, 2, 29},     {0x104, 0x200, 1, 3, 39},   {0x104, 0x400, 4, 6, 48},
                                  {0x104, 0x400, 7, 9, 57}, {0x104, 0x400, 10, 12, 66}, {0x105, 0x20, 35, 1, 76},
                                  {0x105, 0x20, 35, 2, 78}, {0x106, 8, 35, 33, 81}};
    Channel channel(1);
    for (; random.more(); zt_ptz_clear(&channel.ptz)) {
        const auto &[code, selector, mode_at, value_at, first] = kChecks[random(11)];
        const int sent = code | random.pick({0, 0, 0x200, 0x10000}), word = random.pick({selector, selector << 1});
        const uint32_t mode = mode_at == 35 ? 1 : random.pick({0u, 1u, 2u, 3u, 4u, 0x80000001u});
        const uint32_t supported = random.pick({0, 1, 0x80, 0x100}), index = random.pick({0u, 255u, 256u, ~0u});
        const float value = random.pick({-2.5f, 0.5f, 7.25f, -2.6f, 7.3f, std::bit_cast<float>(0x7fc00000)});
        const bool moves = mode >= 1 && mode <= 3;
        const size_t min = first + (moves ? mode - 1 : 0) * 3;
        std::array<float, 84> words = {};
        words[77] = words[79] = 1, words[83] = std::bit_cast<float>(256);
        words[min == 78 ? 75 : min - 1] = std::bit_cast<float>(supported);
        words[min] = -2.5f, words[min + 1] = 7.25f;
        const auto capability = std::bit_cast<zt_ptz_capability_t>(words);
        ASSERT_EQ(zt_ptz_internal_update_capability(&channel.ptz, &capability), 0);
        uint32_t block[36] = {static_cast<uint32_t>(word)};
        block[34] = index, block[mode_at] = mode, block[value_at] = std::bit_cast<uint32_t>(value);
        const bool inside = value >= -2.5f && value <= 7.25f && (supported % 256 || code == 0x106);
        const bool fits = (!moves || word != selector || inside) && (code != 0x106 || index < 256);
        EXPECT_EQ(channel.send(sent, block), sent != code || fits ? 0 : 7);
    }
}

// What each of three clients hears: '-' nothing, 'r' the result, 'i' the index; every other byte is 0.
ZT_MODEL(Ptz, ResultsAreRoutedByCodeStatusAndOperation, 1, 2'000) {
    Channel channel(0);
    std::string heard, want;
    uint32_t ids[4] = {};               // the last one hears nothing
    static zt_ptz_msg_t result, index;  // expected; static, so that every byte is 0
    const auto same = [](auto &a, auto &b) { return memcmp(&a, &b, sizeof a) == 0; };
    const auto kind = [&](auto &m) { return same(m, index) ? 'i' : same(m, result) ? 'r' : '?'; };
    for (const int i : {0, 1, 2}) ids[i] = channel.add([&, i](auto &msg) { heard[i] = kind(msg); });
    ASSERT_EQ(zt_ptz_register(&channel.ptz, &ids[3], nullptr, nullptr, nullptr), 0);
    while (random.more()) {
        const uint32_t code = random.pick({0x106, 0x106, 0x306, 0x1106, 0x102, 0x206});
        const uint32_t operation = random(5), to = random(4);  // operation 0: no block
        result.u.result = {random.pick({0, 1}), code, 5, ids[to], {9}}, index.type = 3;
        zt_ptz_params_t block;
        memset(&block, 'x', sizeof block), block.index.name[5] = 0;
        block.index.operation = operation, block.index.index = index.u.index.index = 77;
        memset(index.u.index.name, operation == 2 ? 'x' : 0, 5);
        const bool told = code == 0x106 && result.u.result.status == 0 && operation % 4 != 0;
        heard = "---", want = told ? "iii" : "---";
        if (to < 3) want[to] = 'r';
        const auto *params = operation != 0 ? &block : nullptr;
        ASSERT_EQ(zt_ptz_internal_put_result(&channel.ptz, &result.u.result, params), 0);
        EXPECT_EQ(heard, want) << std::hex << code << " operation " << operation;
    }
}

// Callbacks that register, unregister anybody and send: each client that is there throughout is called
// exactly once, none that has left before its turn, no newcomer.
ZT_MODEL(Ptz, CallbacksMayRearrangeTheClients, 1, 300) {
    while (random.more()) {
        Channel channel(0);
        uint32_t ids[8], calls[8] = {};  // 9: has left
        for (int i = 0; i < 8; ++i)
            ids[i] = channel.add([&, i](auto &) {
                EXPECT_EQ(calls[i]++, 0u);
                const int victim = random(8);
                if (random.pick({0, 0, 1})) zt_ptz_unregister(&channel.ptz, ids[victim]), calls[victim] = 9;
                if (random.pick({0, 0, 1})) channel.add([](auto &) { ADD_FAILURE() << "a newcomer"; });
                EXPECT_LE(channel.send(0x201), 4);
            });
        zt_ptz_capability_t capability = {};
        ASSERT_EQ(zt_ptz_internal_update_capability(&channel.ptz, &capability), 0);
        for (const uint32_t n : calls) EXPECT_TRUE(n == 1 || n == 9);
    }
}

TEST(Ptz, LimitsOrderDefaultsAndStates) {
    Channel channel(2);
    faults::fail_at(1, faults::Mode::kFromThenOn);
    zt_ptz_capability_t capability;
    ASSERT_EQ(zt_ptz_get_capability(&channel.ptz, &capability), 0);
    EXPECT_TRUE(capability.value[0].min == 0 && capability.group_three[2][1].min == -1);
    uint32_t seq[3], id, got, code;
    static zt_ptz_params_t block, zeros;
    memset(&block, 1, sizeof block);
    for (const int want : {0, 0, 4}) EXPECT_EQ(channel.send(0x101, &block), want);
    for (const int needs_block : {0x101, 0x301}) EXPECT_EQ(channel.send(needs_block), 7);
    zt_ptz_clear(&channel.ptz);  // nothing of these blocks may show in later commands
    for (const int i : {0, 1, 2}) EXPECT_EQ(channel.send_as(50 + i, &seq[i]), i < 2 ? 0 : 4);
    for (const uint32_t i : {0, 1}) {
        ASSERT_EQ(zt_ptz_internal_get_command(&channel.ptz, &id, &got, &code, &block), 0);
        EXPECT_TRUE(id == 50 + i && got == seq[i] && memcmp(&block, &zeros, sizeof block) == 0);
    }
    EXPECT_EQ(channel.send_as(1, &seq[2]) + zt_ptz_clear(&channel.ptz), 0);
    EXPECT_EQ(seq[2], seq[1] + 2) << "the number of the refused command is lost";
    EXPECT_EQ(zt_ptz_internal_get_command(&channel.ptz, &id, &got, &code, &block), 4);
    for (int i = 0; i < 17; ++i) EXPECT_EQ(channel.add({}) != 0, i < 16);
    EXPECT_EQ(channel.send(0x201) + zt_ptz_internal_get_command(&channel.ptz, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_TRUE(zt_ptz_get_register_num(&channel.ptz) == 16 && channel.ptz.peek_command(&channel.ptz)->next != nullptr);
    EXPECT_EQ(channel.ptz.peek_command(nullptr), nullptr);
    channel.ptz.clear_commands(nullptr), channel.ptz.clear_commands = nullptr;
    EXPECT_EQ(zt_ptz_clear(&channel.ptz), 0);
    EXPECT_FALSE(faults::disarm()) << "allocated after the creation";
    zt_ptz_destroy(&channel.ptz);
    EXPECT_TRUE(channel.released == 1 && channel.ready == 6 && channel.send(0x201) == 38);
    const auto release = std::exchange(channel.ptz.release, nullptr);
    EXPECT_EQ(channel.create({2}), 7);
    channel.ptz.release = release, channel.ptz.init_capability = nullptr;
    EXPECT_EQ(channel.create({2}), 7);
    Channel last(1);
    last.ptz.release = nullptr;  // it is destroyed all the same
    EXPECT_TRUE(Channel(UINT32_MAX).status == 8 && Channel(4, 55).status == 55);
}

// Clients on threads of their own, one driver: nothing is lost, each client's results come in order.
TEST(Ptz, NothingIsLostBetweenThreads) {
    Channel channel(8);
    std::vector<uint32_t> ids, sent[4], got[4];
    for (auto &g : got) ids.push_back(channel.add([&](auto &m) { g.push_back(m.u.result.other); }));
    on_threads(5, [&](int c) {
        uint32_t id, seq, code, last = 0;
        for (; c < 4 && sent[c].size() < 2'000; std::this_thread::yield())
            if (channel.send_as(ids[c], &seq) == 0) sent[c].push_back(seq);
        for (int left = c < 4 ? 0 : 8'000; left > 0; std::this_thread::yield()) {
            if (zt_ptz_internal_get_command(&channel.ptz, &id, &seq, &code, nullptr) != 0) continue;
            EXPECT_GT(seq, std::exchange(last, seq));
            const zt_ptz_result_t result = {0, code, seq, id, {}};
            left -= zt_ptz_internal_put_result(&channel.ptz, &result, nullptr) == 0;
        }
    });
    for (const int c : {0, 1, 2, 3}) EXPECT_EQ(sent[c], got[c]);
}
