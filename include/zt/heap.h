/* zt/heap.h - an intrusive priority queue from which any node can be taken.
 *
 * SPDX-License-Identifier: MIT
 *
 * A complete binary tree of nodes that callers embed in their records. Records never move, and any
 * of them can be removed, not only the top one. Read the top from `root` and the size from `count`.
 *
 * Numbered breadth first from 1 at the top (the children of k are 2k on the left and 2k + 1 on the
 * right), the nodes always hold exactly the positions 1 to count.
 *
 * Memory   The caller owns the heap record and every node. A zeroed heap is empty, a zeroed node is
 *          in no heap. Nothing is allocated; an abandoned heap needs no clean-up.
 * Threads  No lock: guard a heap with your own mutex. The ordering runs inside insert, remove and
 *          dequeue and must not change the heap.
 * Failure  Nothing fails: inserting a node that is in a heap, and removing one that is in none, are
 *          ignored.
 */
#ifndef ZT_HEAP_H
#define ZT_HEAP_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/list.h" /* ZT_CONTAINER_OF */

#ifdef __cplusplus
extern "C" {
#endif

/* Embedded in the caller's record; written by the library only. */
typedef struct zt_heap_node_t {
    uint8_t in_heap;               /* 1 while in a heap, 0 otherwise: 0 before the first insert */
    struct zt_heap_node_t *left;   /* this and the next two mean nothing while in_heap is 0 */
    struct zt_heap_node_t *right;  /* null: no right child */
    struct zt_heap_node_t *parent; /* null in the top node */
} zt_heap_node_t;

/* The heap: zeroed by the caller before its first use, then written by the library only. */
typedef struct zt_heap_t {
    zt_heap_node_t *root; /* the top node; null: the heap is empty */
    uint32_t count;       /* number of nodes */
} zt_heap_t;

/* Not 0 when first must stand above second, nearer the top: a less-than of keys gives a min-heap, a
 * greater-than a max-heap. 0 for equal keys. All 32 bits count. The same ordering goes into every
 * call on one heap. */
typedef int32_t (*zt_heap_less_t)(zt_heap_node_t *first, zt_heap_node_t *second);

/* Inserts the node at the end and lets it rise: among equal keys the newcomer stays below. O(log
 * count), two comparisons on average for random keys. */
ZT_API void zt_heap_insert(zt_heap_t *heap, zt_heap_node_t *node, zt_heap_less_t less);

/* Takes the node, anywhere in this heap, out; the last node takes its place and sinks or rises. The
 * removed node's links are left as they are. O(log count), about log2(count) comparisons for the top
 * node, two on average for any other. */
ZT_API void zt_heap_remove(zt_heap_t *heap, zt_heap_node_t *node, zt_heap_less_t less);

/* Takes the top node out. Does nothing when the heap is empty. O(log count). */
ZT_API void zt_heap_dequeue(zt_heap_t *heap, zt_heap_less_t less);

#ifdef __cplusplus
}
#endif

#endif /* ZT_HEAP_H */
