// The window after every update against plain queues and 128-bit arithmetic; failures.
// SPDX-License-Identifier: MIT
#include "zt/tsw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

#include "support/alloc_faults.hpp"

namespace {

__extension__ using Wide = __int128;

struct Sample {
    uint64_t now;
    int64_t delta, jitter;
};

struct Model {
    zt_tsw_param_t param;
    std::deque<Sample> deltas, jitters;
    int64_t smoothed = 0;
    bool evicted = false;

    int64_t smallest() const {
        const auto less = [](const Sample &a, const Sample &b) { return a.delta < b.delta; };
        return deltas.empty() ? 0 : std::min_element(deltas.begin(), deltas.end(), less)->delta;
    }
    int64_t largest() const {
        int64_t largest = 0;
        for (const Sample &sample : jitters) largest = std::max(largest, sample.jitter);
        return largest;
    }
    bool drop(std::deque<Sample> &window, uint64_t now, uint32_t length) const {
        const size_t before = window.size();
        if (before == param.size) window.pop_front();
        while (!window.empty() && now - window.front().now > length) window.pop_front();
        return window.size() != before;
    }
    void update(uint64_t ref, uint64_t now, uint32_t limit) {
        auto delta = static_cast<int64_t>(now - ref);
        if (param.smooth && !deltas.empty())
            delta = static_cast<int64_t>(Wide{delta} / 8 + Wide{7} * smoothed / 8);
        if (param.smooth) smoothed = delta;
        const Wide rise = deltas.empty() ? 0 : Wide{delta} - smallest();
        const Wide jitter = std::min<Wide>(rise < 0 ? -rise : rise, limit);
        if (!deltas.empty() && rise >= limit) deltas.clear(), jitters.clear(), evicted = false;
        if (drop(deltas, now, param.delta_window)) evicted = true;
        drop(jitters, now, param.jitter_window);
        deltas.push_back({now, delta, static_cast<int64_t>(jitter)});
        jitters.push_back(deltas.back());
    }
};

void expect_same(const zt_tsw_t &tsw, const Model &model) {
    EXPECT_EQ(zt_tsw_get_delta(&tsw), model.smallest());
    EXPECT_EQ(zt_tsw_get_jitter(&tsw), model.largest());
    EXPECT_EQ(tsw.delta_heap.count, model.deltas.size());
    EXPECT_EQ(tsw.jitter_heap.count, model.jitters.size());
    EXPECT_EQ(tsw.evicted, model.evicted);
    EXPECT_EQ(tsw.smoothed, model.smoothed);
    uint64_t now = 0;
    EXPECT_EQ(zt_tsw_get_delta_ex(&tsw, &now), model.smallest());
    const auto holds = [&](const Sample &s) { return s.now == now && s.delta == model.smallest(); };
    EXPECT_TRUE(model.deltas.empty() ||
                std::any_of(model.deltas.begin(), model.deltas.end(), holds));
    const auto head = [&](size_t run) {  // where a run of slots that ends at cur starts
        return run == 0 ? -1
                        : (tsw.cur + 1 + int64_t{tsw.param.size} - static_cast<int64_t>(run)) %
                              tsw.param.size;
    };
    EXPECT_EQ(tsw.delta_head, head(model.deltas.size()));
    EXPECT_EQ(tsw.jitter_head, head(model.jitters.size()));
}

TEST(Tsw, RandomStreamsAgainstTheModel) {
    std::mt19937_64 random(4);
    for (int stream = 0; stream < 400; ++stream) {
        SCOPED_TRACE(testing::Message() << "seed 4, stream " << stream);
        const uint32_t sizes[] = {1, 2, 3, 8, 40}, lengths[] = {0, 10, 100, 1000, UINT32_MAX};
        const uint32_t limits[] = {0, 1, 30, 300, UINT32_MAX};
        const uint32_t lengths_drawn[] = {lengths[random() % 5], lengths[random() % 5]};
        const auto [shorter, longer] = std::minmax(lengths_drawn[0], lengths_drawn[1]);
        Model model = {{sizes[random() % 5], longer, shorter, random() % 2 == 0}, {}, {}};
        const uint64_t usual_limit = 2 + random() % 3;
        zt_tsw_t tsw;
        ASSERT_EQ(zt_tsw_create(&tsw, &model.param), ZT_STATUS_SUCCESS);
        expect_same(tsw, model);
        uint64_t now = random() % 3 == 0 ? random() : 1000, offset = 500;
        for (int i = 0; i < 250; ++i) {
            const uint64_t what = random() % 64;
            if (what == 0) offset = random();                // anything, half the numbers away
            if (what == 1) offset += random() % 1000 - 500;  // discontinuities
            if (what == 2) now += random() % 2000;           // a gap
            if (what == 3) now -= random() % 20;             // a clock set back
            if (what == 4) zt_tsw_reset(&tsw), model = {model.param, {}, {}, model.smoothed};
            if (what == 5) offset = uint64_t{1} << 63;  // the smallest delta of all
            if (what > 20) now += random() % 12;        // else a burst
            const uint32_t limit = limits[random() % 32 == 0 ? random() % 5 : usual_limit];
            const uint64_t ref = now - offset - random() % 40;
            zt_tsw_update(&tsw, ref, now, limit);
            model.update(ref, now, limit);
            expect_same(tsw, model);
            ASSERT_FALSE(HasFailure())
                << "update " << i << ": " << ref << " " << now << " " << limit;
        }
        zt_tsw_destroy(&tsw);
    }
}

TEST(Tsw, StreamsAsTheTableSays) {
    const struct {
        const char *name;
        zt_tsw_param_t param;
        std::vector<std::pair<uint64_t, int64_t>> updates;  // now, delta; limit 100
        int64_t delta, jitter;
        bool evicted;
    } rows[] = {
        {"as old as the window stays",
         {8, 100, 100, false},
         {{0, 1}, {50, 2}, {100, 3}},
         1,
         2,
         false},
        {"older leaves", {8, 100, 100, false}, {{0, 1}, {50, 2}, {100, 3}, {101, 9}}, 2, 8, true},
        {"a full ring", {3, 900, 900, false}, {{0, 1}, {1, 5}, {2, 4}, {3, 6}}, 4, 5, true},
        {"old jitter leaves first", {8, 100, 10, false}, {{0, 1}, {9, 90}, {20, 3}}, 1, 2, false},
        {"below is no discontinuity", {8, 100, 100, false}, {{0, 40}, {1, -900}}, -900, 100, false},
        {"limit above is one", {8, 100, 100, false}, {{0, 40}, {1, 140}}, 140, 100, false},
        {"smoothed", {8, 100, 100, true}, {{0, 80}, {1, 160}, {2, 16}}, 80, 10, false},
        {"each quotient truncated", {8, 100, 100, true}, {{0, -9}, {1, -9}, {2, -9}}, -9, 1, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        zt_tsw_t tsw;
        ASSERT_EQ(zt_tsw_create(&tsw, &row.param), ZT_STATUS_SUCCESS);
        for (const auto &[now, delta] : row.updates)
            zt_tsw_update(&tsw, now - static_cast<uint64_t>(delta), now, 100);
        EXPECT_EQ(zt_tsw_get_delta(&tsw), row.delta);
        EXPECT_EQ(zt_tsw_get_jitter(&tsw), row.jitter);
        EXPECT_EQ(tsw.evicted, row.evicted);
        zt_tsw_destroy(&tsw);
    }
}

void create_and_use() {
    const struct {
        zt_tsw_param_t param;
        zt_status_t want;
    } rows[] = {
        {{8, 10, 10, true}, ZT_STATUS_SUCCESS},
        {{8, 10, 11, true}, ZT_STATUS_INVALID_ARGUMENT},
        {{0, 10, 10, true}, ZT_STATUS_INVALID_ARGUMENT},
        {{48806447, 10, 10, true}, ZT_STATUS_OUT_OF_MEMORY},  // 40 bytes, if 32 bits wrapped
        {{UINT32_MAX, 10, 10, true}, ZT_STATUS_OUT_OF_MEMORY},
    };
    for (const auto &row : rows) {
        zt_tsw_t tsw;
        memset(&tsw, 0x5A, sizeof tsw);
        const int64_t before = alloc_faults::live();
        const zt_status_t status = zt_tsw_create(&tsw, &row.param);
        const bool created = alloc_faults::live() != before;
        EXPECT_EQ(status, row.want != 0 || created ? row.want : ZT_STATUS_OUT_OF_MEMORY);
        EXPECT_EQ(tsw.entries != nullptr, status == ZT_STATUS_SUCCESS);
        for (int destroyed = 0; destroyed < 2; ++destroyed) {
            zt_tsw_update(&tsw, 5, 12, 100);
            EXPECT_EQ(zt_tsw_get_delta(&tsw), status == 0 && !destroyed ? 7 : 0);
            EXPECT_EQ(zt_tsw_get_jitter(&tsw), 0);
            zt_tsw_destroy(&tsw);
        }
        zt_tsw_reset(&tsw);
    }
    EXPECT_EQ(zt_tsw_create(nullptr, &rows[0].param), ZT_STATUS_INVALID_ARGUMENT);
}

TEST(Tsw, FailedCreationsAndDestroyedWindowsReadAsEmpty) {
    EXPECT_EQ(alloc_faults::fail_each(create_and_use), 2u);
}

}  // namespace
