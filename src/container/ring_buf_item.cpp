// Item mode of the ring buffer: records of 32-bit words under a one-word header.
// SPDX-License-Identifier: MIT
#include <algorithm>

#include "container/ring_buf_frame.hpp"
#include "zt/memory.h"
#include "zt/ring_buf.h"

using namespace zt::detail;

namespace {

// The header word, a stored format: type in bits 0 to 15, length in 16 to 23, value in 24 to 31.
struct ItemHeader {
    uint16_t type;
    uint8_t length;
    uint8_t value;
};

uint32_t encode(ItemHeader header) {
    return header.type | uint32_t{header.length} << 16 | uint32_t{header.value} << 24;
}

ItemHeader decode(uint32_t word) {
    return {static_cast<uint16_t>(word), static_cast<uint8_t>(word >> 16),
            static_cast<uint8_t>(word >> 24)};
}

// The words from position + offset on: one piece up to the end of the storage, the rest at its
// front.
struct WordRange {
    uint32_t *first;
    uint32_t first_count;
    uint32_t *rest;
    uint32_t rest_count;
};

WordRange words_at(const zt_ring_buf_t &ring, uint32_t position, uint32_t offset, uint32_t count) {
    auto *storage = static_cast<uint32_t *>(ring.buffer);
    const uint32_t index = index_at(ring, position, offset);
    const uint32_t to_end = std::min(count, ring.size - index);
    return {storage + index, to_end, storage, count - to_end};
}

constexpr uint32_t bytes_of(uint32_t words) { return words * sizeof(uint32_t); }

}  // namespace

zt_status_t zt_ring_buf_item_put(zt_ring_buf_t *ring, uint16_t type, uint8_t value,
                                 const uint32_t *data, uint8_t length) {
    const uint32_t needed = uint32_t{length} + 1;
    if (needed > available(*ring)) {
        ++ring->dropped_puts;
        return ZT_STATUS_TOO_LARGE;
    }
    *words_at(*ring, ring->tail, 0, 1).first = encode({type, length, value});
    if (length > 0) {
        const WordRange words = words_at(*ring, ring->tail, 1, length);
        zt_memcpy(words.first, data, bytes_of(words.first_count));
        if (words.rest_count > 0) {
            zt_memcpy(words.rest, data + words.first_count, bytes_of(words.rest_count));
        }
    }
    ring->tail = tail_after(*ring, needed);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ring_buf_item_get(zt_ring_buf_t *ring, uint16_t *type, uint8_t *value,
                                 uint32_t *data, uint8_t *length) {
    if (stored(*ring) == 0) return ZT_STATUS_TRY_AGAIN;
    const ItemHeader header = decode(*words_at(*ring, ring->head, 0, 1).first);
    const uint8_t room = *length;
    *length = header.length;
    if (data != nullptr) {
        if (room < header.length) return ZT_STATUS_TOO_LARGE;
        const WordRange words = words_at(*ring, ring->head, 1, header.length);
        zt_memcpy(data, words.first, bytes_of(words.first_count));
        if (words.rest_count > 0) {
            zt_memcpy(data + words.first_count, words.rest, bytes_of(words.rest_count));
        }
    }
    *type = header.type;
    *value = header.value;
    ring->head = head_after(*ring, uint32_t{header.length} + 1);
    return ZT_STATUS_SUCCESS;
}
