// Random use of ring buffers against queues of bytes and items, with the rebase threshold lowered
// so that positions are rebased thousands of times. SPDX-License-Identifier: MIT
#include "zt/ring_buf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

namespace {

uint32_t g_threshold = 0x80000000;

struct Case {
    uint32_t size;
    uint32_t threshold;
    uint32_t start;  // all positions at the outset
};

// Thresholds from the size itself, where a full buffer could look empty, to many times the size;
// and starts from where the next rebase is the one that keeps positions within 32 bits.
const Case kCases[] = {
    {1, 1, 0},
    {1, 9, 0},
    {2, 5, 0},
    {3, 3, 0},
    {3, 8, 0},
    {5, 1000, 0},
    {8, 8, 0},
    {8, 17, 0},
    {8, 4096, 0},
    {37, 74, 0},
    {37, 1999, 0},
    {64, 64, 0xffffff80},
    {48, 48, 48u * 89478480},
    {64, 127, 0xffffffa0},
    {300, 70000, 0},
    {512, 0x80000000, 0x7ffffe00},
};

std::vector<uint8_t> random_bytes(std::mt19937 &random, size_t count) {
    std::vector<uint8_t> bytes(count);
    for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
}

class ByteModel {
  public:
    ByteModel(const Case &row, std::mt19937 &random) : random_(random), storage_(row.size) {
        g_threshold = row.threshold;
        zt_ring_buf_init(&ring_, row.size, storage_.data());
        ring_.head = ring_.tail = ring_.claim_tail = ring_.claim_head = row.start;
    }

    void step() {
        const uint32_t count = random_() % (ring_.size + 3);
        switch (random_() % 7) {
            case 0:
            case 1:
                put(count);
                break;
            case 2:
                fill_in_place(count);
                break;
            case 3:
                get(count);
                break;
            case 4:
                read_in_place(count);
                break;
            case 5:
                expect_front(count, &zt_ring_buf_peek, 0);
                break;
            default:
                over_the_limit();
                break;
        }
        ASSERT_EQ(zt_ring_buf_size_get(&ring_), stored_.size());
        ASSERT_EQ(zt_ring_buf_space_get(&ring_), ring_.size - stored_.size());
        ASSERT_EQ(zt_ring_buf_is_empty(&ring_), stored_.empty());
    }

  private:
    // All that is free, but for the one unit that a buffer as large as its rebase amount keeps back
    // around a rebase.
    void expect_granted(uint32_t granted, uint32_t asked) {
        const auto space = static_cast<uint32_t>(ring_.size - stored_.size());
        const bool keeps_one = ring_.size > g_threshold / 2 &&
                               granted + 1 == std::min(asked, space) &&
                               (ring_.head > ring_.tail || ring_.head > UINT32_MAX - ring_.size);
        ASSERT_TRUE(keeps_one || granted == std::min(asked, space)) << granted;
    }

    void put(uint32_t count) {
        const std::vector<uint8_t> bytes = random_bytes(random_, count);
        const uint32_t done = zt_ring_buf_put(&ring_, bytes.data(), count);
        expect_granted(done, count);
        stored_.insert(stored_.end(), bytes.begin(), bytes.begin() + done);
    }

    void fill_in_place(uint32_t count) {
        std::vector<uint8_t> written;
        for (int piece = 0; piece < 3; ++piece) {
            uint8_t *data = nullptr;
            const uint32_t granted = zt_ring_buf_put_claim(&ring_, &data, count);
            ASSERT_LE(granted, count);
            ASSERT_GE(data, storage_.data());
            ASSERT_LE(data + granted, storage_.data() + storage_.size());
            for (uint32_t i = 0; i < granted; ++i) written.push_back(data[i] = uint8_t(random_()));
        }
        ASSERT_LE(written.size(), ring_.size - stored_.size()) << "unread data was handed out";
        if (written.size() < count) expect_granted(static_cast<uint32_t>(written.size()), count);
        written.resize(random_() % (written.size() + 1));  // the rest of the claims is given up
        ASSERT_EQ(zt_ring_buf_put_finish(&ring_, static_cast<uint32_t>(written.size())), 0);
        stored_.insert(stored_.end(), written.begin(), written.end());
    }

    using Reader = uint32_t (*)(zt_ring_buf_t *, uint8_t *, uint32_t);
    void expect_front(uint32_t count, Reader read, size_t consumed) {
        std::vector<uint8_t> bytes(count);
        bytes.resize(read(&ring_, bytes.data(), count));
        ASSERT_EQ(bytes.size(), std::min<size_t>(count, stored_.size()));
        ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), stored_.begin()));
        stored_.erase(stored_.begin(), stored_.begin() + std::min(consumed, bytes.size()));
    }

    void get(uint32_t count) {
        if (random_() % 8 != 0) return expect_front(count, &zt_ring_buf_get, count);
        const uint32_t skipped = zt_ring_buf_get(&ring_, nullptr, count);
        ASSERT_EQ(skipped, std::min<size_t>(count, stored_.size()));
        stored_.erase(stored_.begin(), stored_.begin() + skipped);
    }

    void read_in_place(uint32_t count) {
        size_t seen = 0;
        for (int piece = 0; piece < 2; ++piece) {
            uint8_t *data = nullptr;
            const uint32_t granted = zt_ring_buf_get_claim(&ring_, &data, count);
            ASSERT_LE(seen + granted, stored_.size());
            ASSERT_TRUE(std::equal(data, data + granted, stored_.begin() + seen));
            seen += granted;
        }
        const auto consumed = static_cast<uint32_t>(random_() % (seen + 1));
        ASSERT_EQ(zt_ring_buf_get_finish(&ring_, consumed), 0);
        stored_.erase(stored_.begin(), stored_.begin() + consumed);
    }

    void over_the_limit() {
        const uint32_t beyond = random_() % 2 ? 1 : UINT32_MAX / 2;
        const zt_ring_buf_t before = ring_;
        ASSERT_EQ(zt_ring_buf_put_finish(&ring_, zt_ring_buf_space_get(&ring_) + beyond), 7);
        ASSERT_EQ(zt_ring_buf_get_finish(&ring_, zt_ring_buf_size_get(&ring_) + beyond), 7);
        ASSERT_EQ(ring_.head, before.head);
        ASSERT_EQ(ring_.tail, before.tail);
    }

    std::mt19937 &random_;
    std::vector<uint8_t> storage_;
    zt_ring_buf_t ring_;
    std::deque<uint8_t> stored_;
};

TEST(RingBuf, BytesComeOutAsTheyWentIn) {
    std::mt19937 random(20260305);
    for (const Case &row : kCases) {
        SCOPED_TRACE(testing::Message() << "seed 20260305, size " << row.size << ", threshold "
                                        << row.threshold << ", start " << row.start);
        ByteModel model(row, random);
        for (int i = 0; i < 150'000 && !testing::Test::HasFatalFailure(); ++i) model.step();
    }
}

TEST(RingBuf, ItemsComeOutAsTheyWentIn) {
    struct Item {
        uint16_t type;
        uint8_t value;
        std::vector<uint32_t> words;
    };
    std::mt19937 random(7);
    for (const Case &row : kCases) {
        SCOPED_TRACE(testing::Message() << "seed 7, size " << row.size << ", threshold "
                                        << row.threshold << ", start " << row.start);
        g_threshold = row.threshold;
        std::vector<uint32_t> storage(row.size);
        zt_ring_buf_t ring;
        zt_ring_buf_init(&ring, row.size, storage.data());
        ring.head = ring.tail = row.start;
        std::deque<Item> items;
        size_t used = 0;
        uint32_t dropped = 0;
        for (int i = 0; i < 60'000; ++i) {
            Item item{uint16_t(random()), uint8_t(random()), {}};
            item.words.resize(random() % std::min<size_t>(row.size + 1, 256));
            for (uint32_t &word : item.words) word = static_cast<uint32_t>(random());
            const auto length = static_cast<uint8_t>(item.words.size());
            if (zt_ring_buf_item_put(&ring, item.type, item.value, item.words.data(), length) ==
                0) {
                used += length + 1u;
                items.push_back(item);
            } else {
                ASSERT_GE(used + length + 2u, row.size) << "refused although there was room";
                ASSERT_EQ(ring.dropped_puts, ++dropped);
            }
            ASSERT_LE(used, row.size);
            ASSERT_EQ(zt_ring_buf_size_get(&ring), used);
            if (random() % 2) continue;

            uint32_t words[256];
            uint16_t type = 0;
            uint8_t value = 0;
            uint8_t room = items.empty() ? 0 : static_cast<uint8_t>(items[0].words.size());
            if (items.empty()) {
                ASSERT_EQ(zt_ring_buf_item_get(&ring, &type, &value, words, &room), 4);
                continue;
            }
            const Item &oldest = items.front();
            if (room > 0 && random() % 4 == 0) {
                uint8_t small = room - 1;
                ASSERT_EQ(zt_ring_buf_item_get(&ring, &type, &value, words, &small), 18);
                ASSERT_EQ(small, room);
            }
            const bool skip = random() % 4 == 0;
            ASSERT_EQ(zt_ring_buf_item_get(&ring, &type, &value, skip ? nullptr : words, &room), 0);
            ASSERT_EQ(room, oldest.words.size());
            ASSERT_EQ(type, oldest.type);
            ASSERT_EQ(value, oldest.value);
            ASSERT_TRUE(skip || std::equal(oldest.words.begin(), oldest.words.end(), words));
            used -= room + 1u;
            items.pop_front();
        }
    }
}

TEST(RingBuf, SizesOutOfRangeHoldNothing) {
    for (const uint32_t size : {0u, 0x80000001u, UINT32_MAX}) {
        zt_ring_buf_t ring;
        uint32_t word = 1;
        uint8_t length = 0, value = 0, *claimed = nullptr;
        uint16_t type = 0;
        zt_ring_buf_init(&ring, size, &word);
        auto *bytes = reinterpret_cast<uint8_t *>(&word);
        EXPECT_TRUE(zt_ring_buf_is_empty(&ring));
        EXPECT_EQ(zt_ring_buf_space_get(&ring), 0u);
        EXPECT_EQ(zt_ring_buf_put(&ring, bytes, 4) + zt_ring_buf_get(&ring, bytes, 4), 0u);
        EXPECT_EQ(zt_ring_buf_put_claim(&ring, &claimed, 4), 0u);
        EXPECT_EQ(zt_ring_buf_item_put(&ring, 1, 1, nullptr, 0), ZT_STATUS_TOO_LARGE);
        EXPECT_EQ(zt_ring_buf_item_get(&ring, &type, &value, &word, &length), ZT_STATUS_TRY_AGAIN);
    }
}

// The stored format, and the documented rebase.
TEST(RingBuf, PositionsAndHeaderAreAsDocumented) {
    g_threshold = 0x80000000;
    alignas(4) uint8_t storage[16];
    const uint8_t header[] = {0x34, 0x12, 0x01, 0x56};
    const uint32_t data = 7;
    zt_ring_buf_t ring;
    zt_ring_buf_init(&ring, 4, storage);
    ASSERT_EQ(zt_ring_buf_item_put(&ring, 0x1234, 0x56, &data, 1), 0);
    EXPECT_TRUE(std::equal(header, header + 4, storage));

    zt_ring_buf_init(&ring, 16, storage);
    ring.head = ring.claim_head = 0x80000000;
    ring.tail = ring.claim_tail = 0x80000008;
    ASSERT_EQ(zt_ring_buf_put_finish(&ring, 4), 0);
    EXPECT_EQ(ring.tail, 0xCu);
    EXPECT_EQ(zt_ring_buf_size_get(&ring), 12u);
    ASSERT_EQ(zt_ring_buf_get_finish(&ring, 12), 0);
    EXPECT_EQ(ring.head, 0xCu);
}

}  // namespace

uint32_t ring_buf_get_rewind_threshold() { return g_threshold; }
