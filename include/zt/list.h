/* zt/list.h - the one circular doubly-linked list of the library.
 *
 * SPDX-License-Identifier: MIT
 *
 * A link that callers embed in their records and the sentinel head of a list are the same type. An
 * empty head, and an element that is on no list, point to themselves with both links.
 *
 * Memory   Whoever owns the record owns its links. The library allocates no list elements here.
 * Threads  No lock: a list is guarded by whatever guards the object that holds its head.
 *
 * Walk a list from its head's `next` until the head comes round again:
 *
 *     for (zt_list_head_t *p = queue.items.next; p != &queue.items; p = p->next) {
 *         zt_queue_node_t *node = ZT_CONTAINER_OF(p, zt_queue_node_t, link);
 *     }
 */
#ifndef ZT_LIST_H
#define ZT_LIST_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A link in a record, or the head of a list. */
typedef struct zt_list_head_t {
    struct zt_list_head_t *next; /* first element of a head, successor of an element */
    struct zt_list_head_t *prev; /* last element of a head, predecessor of an element */
} zt_list_head_t;

/* Initialiser of an empty head, or of an element on no list:
 *
 *     zt_list_head_t head = ZT_LIST_HEAD_INIT(head);
 */
/* clang-format off */
#define ZT_LIST_HEAD_INIT(name) { &(name), &(name) }
/* clang-format on */

/* The record of the given type that holds *ptr as its member: steps from a link, tree node or heap
 * node back to the record around it. */
#define ZT_CONTAINER_OF(ptr, type, member) ((type *)(void *)((char *)(ptr)-offsetof(type, member)))

#ifdef __cplusplus
}
#endif

#endif /* ZT_LIST_H */
