// Byte mode of the ring buffer, and what both modes share.
// SPDX-License-Identifier: MIT
#include "zt/ring_buf.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <type_traits>

#include "container/ring_buf_frame.hpp"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_ring_buf_t> && sizeof(zt_ring_buf_t) == 40);
static_assert(offsetof(zt_ring_buf_t, head) == 0);
static_assert(offsetof(zt_ring_buf_t, tail) == 4);
static_assert(offsetof(zt_ring_buf_t, claim_tail) == 8);
static_assert(offsetof(zt_ring_buf_t, dropped_puts) == 8);
static_assert(offsetof(zt_ring_buf_t, claim_head) == 12);
static_assert(offsetof(zt_ring_buf_t, size) == 16);
static_assert(offsetof(zt_ring_buf_t, buffer) == 24);
static_assert(offsetof(zt_ring_buf_t, mask) == 32);

using namespace zt::detail;

namespace {

constexpr uint32_t kLargestSize = uint32_t{1} << 31;

// Grants up to requested of the units between position + claimed and position + limit, in one
// piece.
uint32_t claim(const zt_ring_buf_t &ring, uint32_t position, uint32_t claimed, uint32_t limit,
               uint32_t requested, uint8_t **data) {
    const uint32_t index = index_at(ring, position, claimed);
    *data = static_cast<uint8_t *>(ring.buffer) + index;
    return std::min({requested, limit - claimed, ring.size - index});
}

}  // namespace

uint32_t ring_buf_get_rewind_threshold() { return 0x80000000; }

void zt_ring_buf_init(zt_ring_buf_t *ring, uint32_t size, void *buffer) {
    zt_memset(ring, 0, sizeof *ring);
    ring->size = size <= kLargestSize ? size : 0;
    ring->buffer = buffer;
    ring->mask = std::has_single_bit(ring->size) ? ring->size - 1 : 0;
}

bool zt_ring_buf_is_empty(const zt_ring_buf_t *ring) { return stored(*ring) == 0; }

uint32_t zt_ring_buf_size_get(const zt_ring_buf_t *ring) { return stored(*ring); }

uint32_t zt_ring_buf_space_get(const zt_ring_buf_t *ring) { return ring->size - stored(*ring); }

uint32_t zt_ring_buf_put_claim(zt_ring_buf_t *ring, uint8_t **data, uint32_t requested) {
    const uint32_t claimed = ring->claim_tail - ring->tail;
    const uint32_t granted = claim(*ring, ring->tail, claimed, available(*ring), requested, data);
    ring->claim_tail += granted;
    return granted;
}

zt_status_t zt_ring_buf_put_finish(zt_ring_buf_t *ring, uint32_t count) {
    if (count > available(*ring)) return ZT_STATUS_INVALID_ARGUMENT;
    ring->tail = tail_after(*ring, count);
    ring->claim_tail = ring->tail;
    return ZT_STATUS_SUCCESS;
}

uint32_t zt_ring_buf_put(zt_ring_buf_t *ring, const uint8_t *data, uint32_t count) {
    uint32_t done = 0;
    while (done < count) {
        uint8_t *piece = nullptr;
        const uint32_t granted = zt_ring_buf_put_claim(ring, &piece, count - done);
        if (granted == 0) break;
        zt_memcpy(piece, data + done, granted);
        done += granted;
    }
    zt_ring_buf_put_finish(ring, done);
    return done;
}

uint32_t zt_ring_buf_get_claim(zt_ring_buf_t *ring, uint8_t **data, uint32_t requested) {
    const uint32_t claimed = ring->claim_head - ring->head;
    const uint32_t granted = claim(*ring, ring->head, claimed, stored(*ring), requested, data);
    ring->claim_head += granted;
    return granted;
}

zt_status_t zt_ring_buf_get_finish(zt_ring_buf_t *ring, uint32_t count) {
    if (count > stored(*ring)) return ZT_STATUS_INVALID_ARGUMENT;
    ring->head = head_after(*ring, count);
    ring->claim_head = ring->head;
    return ZT_STATUS_SUCCESS;
}

namespace {

// Claims up to count bytes and copies them to data unless that is null; finishing is the caller's.
uint32_t copy_out(zt_ring_buf_t *ring, uint8_t *data, uint32_t count) {
    uint32_t done = 0;
    while (done < count) {
        uint8_t *piece = nullptr;
        const uint32_t granted = zt_ring_buf_get_claim(ring, &piece, count - done);
        if (granted == 0) break;
        if (data != nullptr) zt_memcpy(data + done, piece, granted);
        done += granted;
    }
    return done;
}

}  // namespace

uint32_t zt_ring_buf_get(zt_ring_buf_t *ring, uint8_t *data, uint32_t count) {
    const uint32_t done = copy_out(ring, data, count);
    zt_ring_buf_get_finish(ring, done);
    return done;
}

uint32_t zt_ring_buf_peek(zt_ring_buf_t *ring, uint8_t *data, uint32_t count) {
    const uint32_t done = copy_out(ring, data, count);
    zt_ring_buf_get_finish(ring, 0);
    return done;
}
