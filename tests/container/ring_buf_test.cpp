// Random use of ring buffers against queues of bytes and items, with the rebase threshold lowered so
// that positions are rebased thousands of times.
// SPDX-License-Identifier: MIT
#include "zt/ring_buf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

static uint32_t g_threshold;

uint32_t ring_buf_get_rewind_threshold() { return g_threshold; }

namespace {

// Size, threshold and position at the start, of one case after the other. Thresholds from the size
// itself, where a full buffer could look empty, to many times the size; starts from where the next
// rebase is the one that keeps positions within 32 bits.
const uint32_t kCases[] = {
    0,  8,   0,          0x80000001, 8,     0, 1,   1,          0,          1,  9,  0,
    3,  3,   0,          5,          1000,  0, 8,   8,          0,          8,  17, 0,
    37, 74,  0,          37,         1999,  0, 48,  48,         0xffffff90, 64, 64, 0xffffff80,
    64, 127, 0xffffffa0, 300,        70000, 0, 512, 0x80000000, 0x7ffffe00};

// A ring over storage of its own, in words for items.
struct Ring : zt_ring_buf_t {
    uint32_t limit;  // units it can hold: none when the size is out of range
    std::vector<uint32_t> storage;
    explicit Ring(const uint32_t *row) : limit(row[0] >> 31 ? 0 : row[0]), storage(limit) {
        g_threshold = row[1];
        zt_ring_buf_init(this, row[0], storage.data());
        head = tail = claim_head = row[2];
    }
    // Around a rebase a buffer as large as its rebase amount keeps one unit back.
    bool may_keep_one() const {
        return limit > g_threshold / 2 && (head > tail || head > UINT32_MAX - limit);
    }
};

// What is claimed or peeked at and not finished is given up, or read again. Finishing needs no claim.
TEST(RingBuf, BytesComeOutAsTheyWentIn) {
    std::mt19937 random(20260305);
    for (auto *row = kCases; row != std::end(kCases); row += 3) {
        Ring ring(row);
        ring.claim_tail = row[2];
        std::deque<uint8_t> stored;
        for (int step = 0; step < 150'000; ++step) {
            SCOPED_TRACE(testing::Message() << "size " << row[0] << ", step " << step);
            const uint32_t count = random() % (ring.limit + 3), how = random() % 4;
            uint32_t done = 0;
            uint8_t bytes[600], *piece = nullptr;
            if (random() % 2) {
                const uint32_t space = ring.limit - stored.size(), keeps_one = ring.may_keep_one();
                std::generate_n(bytes, count, [&] { return random(); });
                if (how > 1) done = zt_ring_buf_put(&ring, bytes, count);
                while (const auto granted =
                           how > 1 ? 0 : zt_ring_buf_put_claim(&ring, &piece, count - done))
                    std::copy_n(bytes + done, granted, piece), done += granted;
                ASSERT_TRUE(done == std::min(count, space) || (keeps_one && done + 1 == space));
                if (how == 0) ASSERT_EQ(zt_ring_buf_put_finish(&ring, 0), 0);
                if (how < 2)
                    ASSERT_EQ(zt_ring_buf_put_finish(&ring, done = random() % (done + 1)), 0);
                stored.insert(stored.end(), bytes, bytes + done);
            } else {
                if (how < 2) done = zt_ring_buf_get(&ring, how ? bytes : nullptr, count);
                if (how == 2) done = zt_ring_buf_peek(&ring, bytes, count);
                while (const auto granted =
                           how < 3 ? 0 : zt_ring_buf_get_claim(&ring, &piece, count - done))
                    std::copy_n(piece, granted, bytes + done), done += granted;
                ASSERT_EQ(done, std::min<size_t>(count, stored.size()));
                ASSERT_TRUE(how == 0 || std::equal(bytes, bytes + done, stored.begin()));
                if (how > 1)
                    ASSERT_EQ(zt_ring_buf_get_finish(&ring, done = random() % (done + 1)), 0);
                stored.erase(stored.begin(), stored.begin() + done);
            }
            const uint32_t beyond = random() % 2 ? 1 : UINT32_MAX / 2;
            ASSERT_EQ(zt_ring_buf_put_finish(&ring, zt_ring_buf_space_get(&ring) + beyond), 7);
            ASSERT_EQ(zt_ring_buf_get_finish(&ring, zt_ring_buf_size_get(&ring) + beyond), 7);
            ASSERT_EQ(zt_ring_buf_size_get(&ring), stored.size());
            ASSERT_EQ(zt_ring_buf_space_get(&ring), ring.limit - stored.size());
            ASSERT_EQ(zt_ring_buf_is_empty(&ring), stored.empty());
        }
    }
}

TEST(RingBuf, ItemsComeOutAsTheyWentIn) {
    std::mt19937 random(7);
    for (auto *row = kCases; row != std::end(kCases); row += 3) {
        Ring ring(row);
        std::deque<std::vector<uint32_t>> items;  // the header word as it is stored, then the data
        uint32_t used = 0, dropped = 0;
        for (int step = 0; step < 60'000; ++step) {
            SCOPED_TRACE(testing::Message() << "size " << row[0] << ", step " << step);
            std::vector<uint32_t> item(1 + random() % std::min<uint32_t>(ring.limit + 2, 256));
            std::generate(item.begin(), item.end(), [&] { return random(); });
            item[0] = (item[0] & 0xff00ffff) | (item.size() - 1) << 16;
            const bool fits = used + item.size() + ring.may_keep_one() <= ring.limit;
            const uint32_t start = ring.tail % std::max(ring.limit, 1u);
            const auto got =
                zt_ring_buf_item_put(&ring, item[0], item[0] >> 24, item.data() + 1, item[0] >> 16);
            ASSERT_TRUE(got == 0 ? ring.storage[start] == item[0] : got == 18 && !fits);
            if (got == 0) items.push_back(item), used += item.size();
            ASSERT_EQ(ring.dropped_puts, dropped += got != 0);
            ASSERT_TRUE(used <= ring.limit && zt_ring_buf_size_get(&ring) == used);
            if (random() % 2) continue;

            uint16_t type = 0;
            uint8_t value = 0;
            uint32_t words[256];
            const uint8_t length = items.empty() ? 0 : items[0].size() - 1;
            const bool skip = random() % 4 == 0, short_of_room = length > 0 && random() % 4 == 0;
            uint8_t room = length - short_of_room;
            const int want = items.empty() ? 4 : short_of_room && !skip ? 18 : 0;
            ASSERT_EQ(zt_ring_buf_item_get(&ring, &type, &value, skip ? nullptr : words, &room),
                      want);
            ASSERT_EQ(room, length);
            if (want != 0) continue;
            ASSERT_EQ(uint32_t(value << 24 | length << 16 | type), items[0][0]);
            ASSERT_TRUE(skip || std::equal(words, words + length, items[0].begin() + 1));
            used -= items[0].size();
            items.pop_front();
        }
    }
}

}  // namespace
