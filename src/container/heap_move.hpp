// Re-ordering within a heap, for the modules that stand on it.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_CONTAINER_HEAP_MOVE_HPP
#define ZT_SRC_CONTAINER_HEAP_MOVE_HPP

#include "zt/heap.h"

namespace zt::detail {

// Takes a node of the heap, whose record's key has changed, to where it belongs now: what a removal
// and an insertion do, in about half the time. Equal keys may end in another order than theirs.
void heap_move(zt_heap_t *heap, zt_heap_node_t *node, zt_heap_less_t less);

}  // namespace zt::detail

#endif  // ZT_SRC_CONTAINER_HEAP_MOVE_HPP
