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

// Where count units at an index stand: up to the end of the storage, and the rest at its start.
struct Pieces {
    uint8_t *first;
    uint32_t first_count;
};

Pieces pieces_of(const zt_ring_buf_t &ring, uint32_t index, uint32_t count) {
    return {static_cast<uint8_t *>(ring.buffer) + index, std::min(count, ring.size - index)};
}

// Copies up to count bytes behind those claimed to data, unless that is null; returns how many.
uint32_t copy_out(const zt_ring_buf_t &ring, uint8_t *data, uint32_t count) {
    const uint32_t claimed = ring.claim_head - ring.head;
    const uint32_t total = std::min(count, stored(ring) - claimed);
    if (total == 0 || data == nullptr) return total;
    const Pieces from = pieces_of(ring, index_at(ring, ring.head, claimed), total);
    zt_memcpy(data, from.first, from.first_count);
    if (total > from.first_count) {
        zt_memcpy(data + from.first_count, ring.buffer, total - from.first_count);
    }
    return total;
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

// As claims until one grants nothing, and a finish, would do it; likewise get and peek.
uint32_t zt_ring_buf_put(zt_ring_buf_t *ring, const uint8_t *data, uint32_t count) {
    const uint32_t claimed = ring->claim_tail - ring->tail;
    const uint32_t total = std::min(count, available(*ring) - claimed);
    const uint32_t tail = tail_after(*ring, total);
    if (total > 0) {
        const Pieces to = pieces_of(*ring, index_at(*ring, ring->tail, claimed), total);
        zt_memcpy(to.first, data, to.first_count);
        if (total > to.first_count) {
            zt_memcpy(ring->buffer, data + to.first_count, total - to.first_count);
        }
    }
    ring->tail = tail;
    ring->claim_tail = tail;
    return total;
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

uint32_t zt_ring_buf_get(zt_ring_buf_t *ring, uint8_t *data, uint32_t count) {
    const uint32_t total = copy_out(*ring, data, count);
    const uint32_t head = head_after(*ring, total);
    ring->head = head;
    ring->claim_head = head;
    return total;
}

uint32_t zt_ring_buf_peek(zt_ring_buf_t *ring, uint8_t *data, uint32_t count) {
    const uint32_t total = copy_out(*ring, data, count);
    const uint32_t head = head_after(*ring, 0);
    ring->head = head;
    ring->claim_head = head;
    return total;
}
