// The window after every update against a plain list and 128-bit arithmetic; failures.
// SPDX-License-Identifier: MIT
#include "zt/tsw.h"

#include "support/test.hpp"

__extension__ using Wide = __int128;

struct Slow {
    zt_tsw_param_t param;
    int64_t smoothed = 0, smallest = 0, largest = 0;
    std::vector<zt_tsw_entry_t> all = {};  // since the last reset, and how many have left since
    size_t old_deltas = 0, old_jitters = 0;

    void update(uint64_t ref, uint64_t now, uint32_t limit) {
        auto delta = static_cast<int64_t>(now - ref);
        const bool first = all.empty();
        if (param.smooth && !first) delta = static_cast<int64_t>(Wide{delta} / 8 + Wide{7} * smoothed / 8);
        if (param.smooth) smoothed = delta;
        const Wide rise = first ? 0 : Wide{delta} - smallest;
        if (!first && rise >= limit) *this = {param, smoothed};
        const auto leave = [&](size_t &old, uint32_t length) {
            if (all.size() - old == param.size) ++old;
            while (old < all.size() && now - all[old].now > length) ++old;
        };
        leave(old_deltas, param.delta_window), leave(old_jitters, param.jitter_window);
        largest = static_cast<int64_t>(std::min<Wide>(rise < 0 ? -rise : rise, limit));
        all.push_back({now, smallest = delta, largest, {}, {}});
        for (size_t i = 0; i < all.size(); ++i) {
            if (i >= old_deltas) smallest = std::min(smallest, all[i].delta);
            if (i >= old_jitters) largest = std::max(largest, all[i].jitter);
        }
    }
};

ZT_MODEL(Tsw, RandomStreamsAgainstTheModel, 400, 250) {
    const uint32_t longer = random.pick({0u, 10u, 100u, 1000u, UINT32_MAX});
    const uint32_t shorter = std::min(longer, random.pick({0u, 10u, 100u, 1000u, UINT32_MAX}));
    const uint32_t usual_limit = random.pick({30u, 300u, UINT32_MAX});
    Slow model = {{random.pick({1u, 2u, 3u, 8u, 40u}), longer, shorter, random(2) == 0}};
    zt_tsw_t tsw;
    ASSERT_EQ(zt_tsw_create(&tsw, &model.param) + zt_tsw_get_delta(&tsw) + zt_tsw_get_jitter(&tsw), 0);
    uint64_t now = random() >> random(64), offset = 500, when = 0;
    while (random.more()) {
        const uint64_t what = random(128), limit = what / 2 == 3 ? what % 2 : usual_limit;
        if (what == 0) offset = random();             // half the numbers away
        if (what == 1) offset = uint64_t{1} << 63;    // the smallest delta of all
        if (what == 2) offset += random(1000) - 500;  // a jump up or down
        if (what == 3) now += random(2000);           // a gap
        if (what == 4) now -= random(20);             // a clock set back
        if (what == 5) zt_tsw_reset(&tsw), model = {model.param, model.smoothed};
        if (what > 40) now += random(12);  // else a burst
        const uint64_t ref = now - offset - random(40);
        zt_tsw_update(&tsw, ref, now, static_cast<uint32_t>(limit));
        model.update(ref, now, static_cast<uint32_t>(limit));
        EXPECT_EQ(zt_tsw_get_delta_ex(&tsw, &when), model.smallest);
        EXPECT_EQ(zt_tsw_get_jitter(&tsw), model.largest);
        const uint64_t size = model.all.size();
        EXPECT_TRUE(tsw.delta_heap.count == size - model.old_deltas &&
                    tsw.jitter_heap.count == size - model.old_jitters);
        EXPECT_TRUE(tsw.evicted == (model.old_deltas != 0) && tsw.smoothed == model.smoothed);
        const auto holds = [&](auto &e) { return e.now == when && e.delta == model.smallest; };
        EXPECT_TRUE(std::any_of(model.all.begin() + static_cast<ptrdiff_t>(model.old_deltas), model.all.end(), holds));
    }
    zt_tsw_destroy(&tsw);
}

TEST(Tsw, RefusedAndDestroyedWindowsReadAsEmpty) {
    const uint32_t sizes[] = {8, 8, 0, 48806447, UINT32_MAX};  // the fourth: 40 bytes in 32 bits
    const zt_status_t wants[] = {0, 7, 7, 8, 8};
    for (uint32_t i = 0; i < 5; ++i) {
        const zt_tsw_param_t param = {sizes[i], 10, i == 1 ? 11u : 10u, true};
        zt_tsw_t tsw;
        memset(&tsw, 0x5A, sizeof tsw);
        const zt_status_t status = zt_tsw_create(&tsw, &param);
        EXPECT_EQ(status, wants[i]);
        for (int use = 0; use < 2; ++use, zt_tsw_destroy(&tsw)) {
            zt_tsw_update(&tsw, 5, 12, 100);
            EXPECT_EQ(zt_tsw_get_delta(&tsw) + zt_tsw_get_jitter(&tsw), status + use == 0 ? 7 : 0);
        }
        zt_tsw_reset(&tsw);
    }
}
