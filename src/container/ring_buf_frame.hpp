// The arithmetic of ring buffer positions: what is stored, what is free, and moving on.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_CONTAINER_RING_BUF_FRAME_HPP
#define ZT_SRC_CONTAINER_RING_BUF_FRAME_HPP

#include <cstdint>

#include "zt/ring_buf.h"

namespace zt::detail {

// What a rebase subtracts: a multiple of the size, so that the addressed unit stays the same.
[[gnu::noinline, gnu::cold]] inline uint32_t rebase_amount(const zt_ring_buf_t &ring) {
    const uint32_t threshold = ring_buf_get_rewind_threshold();
    if (ring.mask != 0) return threshold & ~ring.mask;
    return ring.size == 0 ? 0 : threshold - threshold % ring.size;
}

// The producer has rebased and the consumer has not.
inline bool frames_differ(const zt_ring_buf_t &ring) { return ring.tail < ring.head; }

// Units stored. The subtraction and the amount cancel out modulo 2^32.
inline uint32_t stored(const zt_ring_buf_t &ring) {
    return ring.tail - ring.head + (frames_differ(ring) ? rebase_amount(ring) : 0);
}

// A buffer so large that the amount is its size would look empty, when full, to a consumer that has
// not followed yet. It rebases only when its position would leave 32 bits, and is then kept from
// filling up to the last unit until the consumer has followed.
[[gnu::noinline, gnu::cold]] inline bool amount_is_size(const zt_ring_buf_t &ring) {
    const uint32_t threshold = ring_buf_get_rewind_threshold();
    return ring.size <= threshold && threshold - ring.size < ring.size;
}

inline bool full_would_look_empty(const zt_ring_buf_t &ring) {
    return (frames_differ(ring) || ring.head > UINT32_MAX - ring.size) && amount_is_size(ring);
}

// Units that can still be committed.
inline uint32_t available(const zt_ring_buf_t &ring) {
    const uint32_t space = ring.size - stored(ring);
    return space > 0 && full_would_look_empty(ring) ? space - 1 : space;
}

// The write position after count more units, at most what is available.
inline uint32_t tail_after(const zt_ring_buf_t &ring, uint32_t count) {
    const bool leaves_32_bits = ring.tail > UINT32_MAX - count;
    const bool due = ring.tail > ring_buf_get_rewind_threshold() && !amount_is_size(ring);
    return ring.tail + count - (leaves_32_bits || due ? rebase_amount(ring) : 0);
}

// The read position after count more units, at most what is stored. After the producer's rebase the
// consumer may still be below the amount; it follows once it has come past it.
inline uint32_t head_after(const zt_ring_buf_t &ring, uint32_t count) {
    if (!frames_differ(ring)) return ring.head + count;
    const uint64_t head = uint64_t{ring.head} + count;
    const uint32_t amount = rebase_amount(ring);
    return static_cast<uint32_t>(head >= amount ? head - amount : head);
}

// The storage index of the unit offset (at most the size) behind a position. Their sum may not fit
// 32 bits while the two sides count in different frames, so it is never formed.
inline uint32_t index_at(const zt_ring_buf_t &ring, uint32_t position, uint32_t offset) {
    if (ring.mask != 0) return (position + offset) & ring.mask;
    if (ring.size == 0) return 0;
    const uint32_t start = position % ring.size;
    const uint32_t to_end = ring.size - start;
    return offset < to_end ? start + offset : offset - to_end;
}

}  // namespace zt::detail

#endif  // ZT_SRC_CONTAINER_RING_BUF_FRAME_HPP
