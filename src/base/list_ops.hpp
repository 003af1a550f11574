// The list operations of the whole library: nobody links or unlinks by hand elsewhere.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_BASE_LIST_OPS_HPP
#define ZT_SRC_BASE_LIST_OPS_HPP

#include "zt/list.h"

namespace zt::detail {

// Makes a head empty, or an element one that is on no list.
inline void list_init(zt_list_head_t *head) {
    head->next = head;
    head->prev = head;
}

inline bool list_empty(const zt_list_head_t *head) { return head->next == head; }

// Links an element that is on no list right behind, or right before, a place on a list. The head is
// a place too: behind it is the front of the list, before it the end.
inline void list_insert_after(zt_list_head_t *place, zt_list_head_t *element) {
    element->next = place->next;
    element->prev = place;
    place->next->prev = element;
    place->next = element;
}

inline void list_insert_before(zt_list_head_t *place, zt_list_head_t *element) {
    list_insert_after(place->prev, element);
}

// Takes an element off its list and leaves it pointing to itself. Harmless on an element that is on
// no list.
inline void list_remove(zt_list_head_t *element) {
    element->prev->next = element->next;
    element->next->prev = element->prev;
    list_init(element);
}

// Lets second follow first. For building a list anew, element by element: the head comes first, and
// last once more.
inline void list_join(zt_list_head_t *first, zt_list_head_t *second) {
    first->next = second;
    second->prev = first;
}

// Turns the elements of a list into a chain that runs through `next` alone and ends with null, and
// returns its first one: null for an empty list. Until list_join has built the list again, its head
// and the prev links are stale.
inline zt_list_head_t *list_to_chain(zt_list_head_t *head) {
    head->prev->next = nullptr;
    return head->next;
}

}  // namespace zt::detail

#endif  // ZT_SRC_BASE_LIST_OPS_HPP
