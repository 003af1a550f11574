/* zt/ring_buf.h - a ring buffer of bytes, or of tagged records of 32-bit words.
 *
 * SPDX-License-Identifier: MIT
 *
 * A record is used in one of two modes, never both:
 *
 * items  zt_ring_buf_item_put and zt_ring_buf_item_get move records of up to 255 words, each under a
 *        16-bit type and an 8-bit value of the caller's; sizes count 32-bit words
 * bytes  put, get and peek copy; claim and finish let a caller fill or read the storage in place;
 *        sizes count bytes
 *
 * An item in the storage is a header word, with the type in bits 0 to 15, the length in bits 16 to 23
 * and the value in bits 24 to 31, and its data words behind it.
 *
 * The positions are free-running counters. Before they can leave 32 bits the producer subtracts a
 * multiple of the size from its own ("rebases"), and the consumer follows when it has come past
 * that amount; in between the two sides count in different frames, and every operation allows for
 * it.
 *
 * Memory   The caller owns the record and the storage. Nothing is allocated.
 * Threads  No lock. The put side writes tail and claim_tail only, the get side head and claim_head
 *          only, but with plain stores: callers that share a buffer between threads bring a lock.
 * Failure  A status other than success leaves the buffer as it was (a refused item is counted).
 */
#ifndef ZT_RING_BUF_H
#define ZT_RING_BUF_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The buffer; initialised by zt_ring_buf_init, read it through the operations below. */
typedef struct zt_ring_buf_t {
    uint32_t head; /* read position in units; written by the get side */
    uint32_t tail; /* write position in units; written by the put side */
    __extension__ union {
        uint32_t claim_tail;   /* bytes: end of what the put side has claimed */
        uint32_t dropped_puts; /* items: number of refused zt_ring_buf_item_put calls */
    };
    uint32_t claim_head; /* bytes: end of what the get side has claimed */
    uint32_t size;       /* capacity in units; 0 when init was given a size out of range */
    void *buffer;        /* borrowed storage of size units */
    uint32_t mask;       /* size - 1 when size is a power of two, else 0 */
} zt_ring_buf_t;

/* Makes an empty buffer over size units of storage: bytes, or 32-bit words aligned as such for
 * items. Sizes that are powers of two are faster. A size of 0 or above 2^31 gives a buffer that is
 * empty and full at once: nothing can be put or got. */
ZT_API void zt_ring_buf_init(zt_ring_buf_t *ring, uint32_t size, void *buffer);

/* True when no unit is stored. */
ZT_API bool zt_ring_buf_is_empty(const zt_ring_buf_t *ring);

/* The number of units stored (of items: headers included). */
ZT_API uint32_t zt_ring_buf_size_get(const zt_ring_buf_t *ring);

/* The number of units free: size minus stored. */
ZT_API uint32_t zt_ring_buf_space_get(const zt_ring_buf_t *ring);

/* Stores an item: one header word and length data words (0 to 255; data may be null for 0).
 * TooLarge (18): length + 1 words are not free; dropped_puts is counted up, nothing is stored. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ring_buf_item_put(zt_ring_buf_t *ring, uint16_t type,
                                                      uint8_t value, const uint32_t *data,
                                                      uint8_t length);

/* Takes the oldest item. *length says how many words fit into data and becomes the item's length.
 * With data null the item is skipped: type, value and length are reported, *length is not read.
 * TryAgain (4): there is no item.
 * TooLarge (18): the item is longer than *length, which now holds its length; the item stays. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ring_buf_item_get(zt_ring_buf_t *ring, uint16_t *type,
                                                      uint8_t *value, uint32_t *data,
                                                      uint8_t *length);

/* Claims up to requested free bytes in one piece behind earlier claims and points *data at them;
 * returns how many. At the end of the storage a claim is cut short: the next one starts at its
 * front. */
ZT_API uint32_t zt_ring_buf_put_claim(zt_ring_buf_t *ring, uint8_t **data, uint32_t requested);

/* Stores the first count of the claimed bytes and gives up the rest of the claims.
 * InvalidArgument (7): count is more than is free. */
ZT_API zt_status_t zt_ring_buf_put_finish(zt_ring_buf_t *ring, uint32_t count);

/* Copies up to count bytes in; returns how many, fewer than count when the buffer is full then.
 * Finish your own claims first. */
ZT_API uint32_t zt_ring_buf_put(zt_ring_buf_t *ring, const uint8_t *data, uint32_t count);

/* Claims up to requested stored bytes in one piece behind earlier claims and points *data at them;
 * returns how many. They stay stored until zt_ring_buf_get_finish. */
ZT_API uint32_t zt_ring_buf_get_claim(zt_ring_buf_t *ring, uint8_t **data, uint32_t requested);

/* Removes the oldest count bytes and gives up the rest of the claims.
 * InvalidArgument (7): count is more than is stored. */
ZT_API zt_status_t zt_ring_buf_get_finish(zt_ring_buf_t *ring, uint32_t count);

/* Takes up to count bytes out, into data, or nowhere when data is null; returns how many. Finish
 * your own claims first. */
ZT_API uint32_t zt_ring_buf_get(zt_ring_buf_t *ring, uint8_t *data, uint32_t count);

/* Copies up to count of the oldest bytes and leaves them stored; returns how many. Gives up claims
 * of the get side. */
ZT_API uint32_t zt_ring_buf_peek(zt_ring_buf_t *ring, uint8_t *data, uint32_t count);

/* The position beyond which the put side rebases: 0x80000000. Called by every operation that needs
 * it; a test puts a small number in its place to see rebasing at work. */
ZT_API uint32_t ring_buf_get_rewind_threshold(void);

#ifdef __cplusplus
}
#endif

#endif /* ZT_RING_BUF_H */
