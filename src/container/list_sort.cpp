// Bottom-up merge sort of a linked list with a fixed set of partial lists.
// SPDX-License-Identifier: MIT
#include "zt/list_sort.h"

#include <cstddef>
#include <utility>

#include "base/list_ops.hpp"

namespace {

using zt::detail::list_empty;
using zt::detail::list_join;
using zt::detail::list_to_chain;
using Link = zt_list_head_t;

// A run is a sorted chain: linked through `next` alone, its end marked by null.

// The run at level k has 2^k elements; the one at the top level takes all that is beyond.
constexpr size_t kLevels = 20;

// How many elements pass between two calls of the comparison while the end is relinked.
constexpr size_t kCallInterval = 256;

struct Order {
    zt_list_compare_t compare;
    void *context;

    bool reversed(Link *first, Link *second) const { return compare(context, first, second) > 0; }
};

// Two runs to be merged. Elements of `early` were before those of `late` in the list.
struct Runs {
    Link *early;
    Link *late;

    bool both() const { return early != nullptr && late != nullptr; }
    Link *rest() const { return early != nullptr ? early : late; }
};

// Takes the element that goes first off its run.
Link *take_first(const Order &order, Runs &runs) {
    if (order.reversed(runs.early, runs.late)) return std::exchange(runs.late, runs.late->next);
    return std::exchange(runs.early, runs.early->next);
}

Link *merge(const Order &order, Link *early, Link *late) {
    Runs runs = {early, late};
    Link *first;
    Link **end = &first;
    while (runs.both()) {
        *end = take_first(order, runs);
        end = &(*end)->next;
    }
    *end = runs.rest();
    return first;
}

// Makes the elements behind head a list again while merging the last two runs; late may be empty.
void merge_into_list(const Order &order, Link *head, Link *early, Link *late) {
    Runs runs = {early, late};
    Link *last = head;
    while (runs.both()) {
        Link *element = take_first(order, runs);
        list_join(last, element);
        last = element;
    }
    size_t passed = 0;
    for (Link *element = runs.rest(); element != nullptr; element = element->next) {
        if (++passed % kCallInterval == 0) order.compare(order.context, element, element);
        list_join(last, element);
        last = element;
    }
    list_join(last, head);
}

}  // namespace

void zt_list_sort(void *context, zt_list_head_t *head, zt_list_compare_t compare) {
    if (list_empty(head)) return;
    const Order order = {compare, context};
    Link *runs[kLevels + 1] =
        {};  // the last one stays empty: it ends every search for a free level
    size_t top = 0;

    for (Link *rest = list_to_chain(head); rest != nullptr;) {
        Link *run = std::exchange(rest, rest->next);
        run->next = nullptr;
        size_t level = 0;
        for (; runs[level] != nullptr; ++level) {
            run = merge(order, std::exchange(runs[level], nullptr), run);
        }
        if (level == kLevels) --level;
        if (level > top) top = level;
        runs[level] = run;
    }

    Link *late = nullptr;
    for (size_t level = 0; level < top; ++level) {
        if (runs[level] != nullptr) late = merge(order, runs[level], late);
    }
    merge_into_list(order, head, runs[top], late);
}
