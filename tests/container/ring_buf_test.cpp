// Random use of ring buffers against queues of bytes and items, with the rebase threshold lowered so
// that positions are rebased thousands of times.
// SPDX-License-Identifier: MIT
#include "zt/ring_buf.h"

#include "support/test.hpp"

static uint32_t g_threshold;

uint32_t ring_buf_get_rewind_threshold() { return g_threshold; }

// Size, threshold and position at the start, of one case after the other. Thresholds from the size
// itself, where a full buffer could look empty, to many times the size; starts from where the next
// rebase is the one that keeps positions within 32 bits.
static const uint32_t kCases[] = {0,  8,   0,          0x80000001, 8,  0,          1,   1,          0,
                                  1,  9,   0,          3,          3,  0,          8,   8,          0,
                                  37, 74,  0,          48,         48, 0xffffff90, 300, 70000,      0,
                                  64, 127, 0xffffffa0, 64,         64, 0xffffff80, 512, 0x80000000, 0x7ffffe00};

// A ring over storage of its own, in words for items.
struct Ring : zt_ring_buf_t {
    uint32_t limit;  // units it can hold: none when the size is out of range
    std::vector<uint32_t> storage;
    explicit Ring(const uint32_t *row) : limit(row[0] >> 31 ? 0 : row[0]), storage(limit) {
        g_threshold = row[1];
        zt_ring_buf_init(this, row[0], storage.data());
        head = tail = claim_head = claim_tail = row[2];
    }
    // Around a rebase a buffer as large as its rebase amount keeps one unit back.
    bool may_keep_one() const { return limit > g_threshold / 2 && (head > tail || head > UINT32_MAX - limit); }
};

// What is claimed or peeked at and not finished is given up, or read again. Finishing needs no claim.
static void use_bytes(Ring &ring, std::deque<uint8_t> &stored, Choices &random) {
    uint32_t done = 0, count = random(ring.limit + 3), how = random(4);
    const uint32_t space = ring.limit - stored.size(), beyond = random(2) ? 1 : UINT32_MAX / 2;
    const bool keeps_one = ring.may_keep_one();
    uint8_t bytes[600], *piece = nullptr;
    if (random(2)) {
        std::generate_n(bytes, count, std::minstd_rand(1 + random(256)));
        if (how > 1) done = zt_ring_buf_put(&ring, bytes, count);
        while (auto got = how > 1 ? 0 : zt_ring_buf_put_claim(&ring, &piece, count - done))
            std::copy_n(bytes + done, got, piece), done += got;
        ASSERT_TRUE(done == std::min(count, space) || (keeps_one && done + 1 == space));
        if (how < 2) ASSERT_EQ(zt_ring_buf_put_finish(&ring, done = random(done + 1)), 0);
        stored.insert(stored.end(), bytes, bytes + done);
    } else {
        if (how < 2) done = zt_ring_buf_get(&ring, how ? bytes : nullptr, count);
        if (how == 2) done = zt_ring_buf_peek(&ring, bytes, count);
        while (auto got = how < 3 ? 0 : zt_ring_buf_get_claim(&ring, &piece, count - done))
            std::copy_n(piece, got, bytes + done), done += got;
        ASSERT_EQ(done, std::min<size_t>(count, stored.size()));
        ASSERT_TRUE(how == 0 || std::equal(bytes, bytes + done, stored.begin()));
        if (how > 1) ASSERT_EQ(zt_ring_buf_get_finish(&ring, done = random(done + 1)), 0);
        stored.erase(stored.begin(), stored.begin() + done);
    }
    ASSERT_EQ(zt_ring_buf_put_finish(&ring, ring.limit - stored.size() + beyond), 7);
    ASSERT_EQ(zt_ring_buf_get_finish(&ring, stored.size() + beyond), 7);
    ASSERT_EQ(zt_ring_buf_space_get(&ring), ring.limit - stored.size());
    ASSERT_TRUE(zt_ring_buf_size_get(&ring) == stored.size() && zt_ring_buf_is_empty(&ring) == stored.empty());
}

// An item in the model is the header word as it is stored, then the data.
static void use_items(Ring &ring, std::deque<std::vector<uint32_t>> &items, Choices &random) {
    std::vector<uint32_t> in(1 + random(std::min<uint32_t>(ring.limit + 2, 256)));
    std::generate(in.begin(), in.end(), std::minstd_rand(1 + random(256)));
    in[0] = (in[0] & 0xff00ffff) | (in.size() - 1) << 16;
    const uint32_t used = zt_ring_buf_size_get(&ring), dropped = ring.dropped_puts;
    const bool fits = used + in.size() + ring.may_keep_one() <= ring.limit;
    const auto got = zt_ring_buf_item_put(&ring, in[0], in[0] >> 24, in.data() + 1, in[0] >> 16);
    ASSERT_TRUE(got == 0 || (got == 18 && !fits && ring.dropped_puts == dropped + 1));
    ASSERT_EQ(zt_ring_buf_size_get(&ring), used + (got == 0 ? in.size() : 0));
    if (got == 0) items.push_back(in);
    if (random(2)) return;

    const std::vector<uint32_t> want = items.empty() ? std::vector{0u} : items[0];
    const uint8_t length = want.size() - 1;
    const bool skip = random(4) == 0, short_of_room = length > 0 && random(4) == 0;
    uint16_t type = 0;
    uint8_t value = 0, room = length - short_of_room;
    uint32_t out[256];
    const auto status = zt_ring_buf_item_get(&ring, &type, &value, skip ? nullptr : out, &room);
    ASSERT_TRUE(room == length && status == (items.empty() ? 4 : short_of_room && !skip ? 18 : 0));
    if (status != 0) return;
    ASSERT_EQ(uint32_t(value << 24 | length << 16 | type), want[0]);
    ASSERT_TRUE(skip || std::equal(out, out + length, want.begin() + 1));
    items.pop_front();
}

ZT_MODEL(RingBuf, GivesWhatWentIn, 12, 100'000) {
    const uint32_t *row = kCases + 3 * random.variant(12);
    Ring bytes(row), words(row);
    std::deque<uint8_t> stored;
    std::deque<std::vector<uint32_t>> items;
    while (random.more()) use_bytes(bytes, stored, random), use_items(words, items, random);
}
