// Random use of ring buffers against queues of bytes and items, with the rebase threshold lowered so
// that positions are rebased thousands of times.
// SPDX-License-Identifier: MIT
#include "zt/ring_buf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

namespace {

uint32_t g_threshold = 0x80000000;

// Thresholds from the size itself, where a full buffer could look empty, to many times the size;
// starts from where the next rebase is the one that keeps positions within 32 bits.
const struct Case {
    uint32_t size, threshold, start;
} kCases[] = {
    {0, 8, 0},
    {0x80000001, 8, 0},
    {1, 1, 0},
    {1, 9, 0},
    {3, 3, 0},
    {5, 1000, 0},
    {8, 8, 0},
    {8, 17, 0},
    {37, 74, 0},
    {37, 1999, 0},
    {48, 48, 0xffffff90},
    {64, 64, 0xffffff80},
    {64, 127, 0xffffffa0},
    {300, 70000, 0},
    {512, 0x80000000, 0x7ffffe00},
};

// A ring over storage of its own, in words for items.
struct Ring : zt_ring_buf_t {
    uint32_t limit;  // units it can hold: none when the size is out of range
    std::vector<uint32_t> storage;
    explicit Ring(const Case &row) : limit(row.size > 0x80000000 ? 0 : row.size), storage(limit) {
        g_threshold = row.threshold;
        zt_ring_buf_init(this, row.size, storage.data());
        head = tail = claim_head = row.start;
    }
    // Around a rebase a buffer as large as its rebase amount keeps one unit back.
    bool may_keep_one() const {
        return limit > g_threshold / 2 && (head > tail || head > UINT32_MAX - limit);
    }
};

class Bytes {
  public:
    Bytes(const Case &row, std::mt19937 &random) : ring_(row), random_(random) {
        ring_.claim_tail = row.start;
    }

    void step() {
        const uint32_t count = random_() % (ring_.limit + 3);
        random_() % 2 == 0 ? write(count) : read(count);
        const uint32_t beyond = random_() % 2 == 0 ? 1 : UINT32_MAX / 2;
        ASSERT_EQ(zt_ring_buf_put_finish(&ring_, zt_ring_buf_space_get(&ring_) + beyond), 7);
        ASSERT_EQ(zt_ring_buf_get_finish(&ring_, zt_ring_buf_size_get(&ring_) + beyond), 7);
        ASSERT_EQ(zt_ring_buf_size_get(&ring_), stored_.size());
        ASSERT_EQ(zt_ring_buf_space_get(&ring_), ring_.limit - stored_.size());
        ASSERT_EQ(zt_ring_buf_is_empty(&ring_), stored_.empty());
    }

  private:
    void write(uint32_t count) {
        std::vector<uint8_t> bytes(count);
        for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random_());
        const auto space = static_cast<uint32_t>(ring_.limit - stored_.size());
        const bool keeps_one = ring_.may_keep_one();
        uint32_t done = 0, kept = 0;
        if (random_() % 2 == 0) {
            kept = done = zt_ring_buf_put(&ring_, bytes.data(), count);
        } else {
            uint8_t *data = nullptr;
            while (const uint32_t granted = zt_ring_buf_put_claim(&ring_, &data, count - done)) {
                std::copy_n(&bytes[done], granted, data);
                done += granted;
            }
            kept = random_() % (done + 1);  // the rest of the claims is given up
            ASSERT_EQ(zt_ring_buf_put_finish(&ring_, kept), 0);
        }
        ASSERT_TRUE(done == std::min(count, space) || (keeps_one && done + 1 == space)) << done;
        stored_.insert(stored_.end(), bytes.begin(), bytes.begin() + kept);
    }

    void read(uint32_t count) {
        std::vector<uint8_t> bytes(count + 1);
        const uint32_t expected = std::min<uint32_t>(count, static_cast<uint32_t>(stored_.size()));
        uint32_t done = 0, consumed = expected;
        const uint32_t how = random_() % 4;
        if (how == 0) done = zt_ring_buf_get(&ring_, nullptr, count);
        if (how == 1) done = zt_ring_buf_get(&ring_, bytes.data(), count);
        if (how == 2) done = zt_ring_buf_peek(&ring_, bytes.data(), count);
        if (how == 2) consumed = 0;
        if (how == 3) {
            uint8_t *data = nullptr;
            while (const auto granted = zt_ring_buf_get_claim(&ring_, &data, count - done)) {
                std::copy_n(data, granted, &bytes[done]);
                done += granted;
            }
            ASSERT_EQ(zt_ring_buf_get_finish(&ring_, consumed = random_() % (done + 1)), 0);
        }
        ASSERT_EQ(done, expected);
        ASSERT_TRUE(how == 0 || std::equal(&bytes[0], &bytes[done], stored_.begin()));
        stored_.erase(stored_.begin(), stored_.begin() + consumed);
    }

    Ring ring_;
    std::mt19937 &random_;
    std::deque<uint8_t> stored_;
};

TEST(RingBuf, BytesComeOutAsTheyWentIn) {
    std::mt19937 random(20260305);
    for (const Case &row : kCases) {
        SCOPED_TRACE(testing::Message() << "seed 20260305, case " << &row - kCases);
        Bytes bytes(row, random);
        for (int i = 0; i < 150'000 && !HasFatalFailure(); ++i) bytes.step();
    }
}

TEST(RingBuf, ItemsComeOutAsTheyWentIn) {
    std::mt19937 random(7);
    for (const Case &row : kCases) {
        SCOPED_TRACE(testing::Message() << "seed 7, case " << &row - kCases);
        Ring ring(row);
        std::deque<std::vector<uint32_t>> items;  // type and value in the first word, then the data
        size_t used = 0;
        uint32_t dropped = 0;
        for (int i = 0; i < 60'000; ++i) {
            std::vector<uint32_t> item(1 + random() % std::min<uint32_t>(ring.limit + 2, 256));
            for (uint32_t &word : item) word = static_cast<uint32_t>(random());
            const bool fits = used + item.size() + ring.may_keep_one() <= ring.limit;
            const zt_status_t status =
                zt_ring_buf_item_put(&ring, static_cast<uint16_t>(item[0]), item[0] >> 24 & 255,
                                     &item[1], static_cast<uint8_t>(item.size() - 1));
            if (status == 0) items.push_back(item);
            if (status == 0) used += item.size();
            ASSERT_TRUE(status == 0 || (status == 18 && !fits));
            ASSERT_EQ(ring.dropped_puts, dropped += status != 0);
            ASSERT_LE(used, ring.limit);
            ASSERT_EQ(zt_ring_buf_size_get(&ring), used);
            if (random() % 2) continue;

            uint32_t words[256];
            uint16_t type = 0;
            uint8_t value = 0,
                    length = static_cast<uint8_t>(items.empty() ? 0 : items[0].size() - 1);
            const bool skip = random() % 4 == 0, short_of_room = length > 0 && random() % 4 == 0;
            uint8_t room = length - short_of_room;
            const zt_status_t want = items.empty() ? 4 : short_of_room && !skip ? 18 : 0;
            ASSERT_EQ(zt_ring_buf_item_get(&ring, &type, &value, skip ? nullptr : words, &room),
                      want);
            ASSERT_EQ(room, want == 4 ? 0 : length);
            if (want != 0) continue;
            ASSERT_EQ(type | uint32_t{value} << 24, items[0][0] & 0xff00ffff);
            ASSERT_TRUE(skip || std::equal(items[0].begin() + 1, items[0].end(), words));
            used -= items[0].size();
            items.pop_front();
        }
    }
}

TEST(RingBuf, TheItemHeaderIsAsDocumented) {
    const uint32_t data = 7;
    Ring ring({4, 64, 0});
    ASSERT_EQ(zt_ring_buf_item_put(&ring, 0x1234, 0x56, &data, 1), 0);
    EXPECT_EQ(ring.storage[0], 0x56011234u);
}

}  // namespace

uint32_t ring_buf_get_rewind_threshold() { return g_threshold; }
