/* zt/list_sort.h - stable sort of a linked list in place.
 *
 * SPDX-License-Identifier: MIT
 *
 * Memory   Elements are relinked, never copied; nothing is allocated. The stack holds a fixed array
 *          of 21 pointers, whatever the length of the list: no recursion.
 * Threads  No lock: the list is the caller's for the duration. The comparison runs on the calling
 *          thread, while the links are in disorder: it must not touch them.
 * Failure  Cannot fail.
 */
#ifndef ZT_LIST_SORT_H
#define ZT_LIST_SORT_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/list.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Greater than 0: second goes before first; 0 or less: first, which came earlier in the list, stays
 * before second. All 32 bits count. context is what the caller gave to zt_list_sort. */
typedef int32_t (*zt_list_compare_t)(void *context, zt_list_head_t *first, zt_list_head_t *second);

/* Sorts the elements behind head into ascending order. Equal elements keep their order. O(n log n)
 * comparisons, best for lists of up to 2^20 elements.
 *
 * The comparison must cope with the same element as both arguments: while the end of a long list is
 * relinked it is called so once every 256 elements, its result ignored, which gives it a chance to
 * yield the processor or to show progress. */
ZT_API void zt_list_sort(void *context, zt_list_head_t *head, zt_list_compare_t compare);

#ifdef __cplusplus
}
#endif

#endif /* ZT_LIST_SORT_H */
