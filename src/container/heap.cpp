// Binary heap of linked nodes in the shape of a complete tree.
// SPDX-License-Identifier: MIT
#include "zt/heap.h"

#include <bit>
#include <cstddef>
#include <type_traits>

#include "container/heap_ops.hpp"

static_assert(std::is_standard_layout_v<zt_heap_t> && sizeof(zt_heap_t) == 16);
static_assert(offsetof(zt_heap_t, root) == 0);
static_assert(offsetof(zt_heap_t, count) == 8);
static_assert(std::is_standard_layout_v<zt_heap_node_t> && sizeof(zt_heap_node_t) == 32);
static_assert(offsetof(zt_heap_node_t, in_heap) == 0);
static_assert(offsetof(zt_heap_node_t, left) == 8);
static_assert(offsetof(zt_heap_node_t, right) == 16);
static_assert(offsetof(zt_heap_node_t, parent) == 24);

namespace {

using namespace zt::detail;

// The node at a position: the binary digits behind the leading 1 are the way, 0 left and 1 right.
zt_heap_node_t *node_at(const zt_heap_t *heap, uint32_t position) {
    zt_heap_node_t *node = heap->root;
    for (uint32_t digit = std::bit_floor(position) >> 1; digit != 0; digit >>= 1) {
        node = (position & digit) != 0 ? node->right : node->left;
    }
    return node;
}

}  // namespace

void zt_heap_insert(zt_heap_t *heap, zt_heap_node_t *node, zt_heap_less_t less) {
    if (node->in_heap != 0) return;
    node->in_heap = 1;
    node->left = nullptr;
    node->right = nullptr;
    node->parent = nullptr;

    const uint32_t position = ++heap->count;
    if (position == 1) {
        heap->root = node;
        return;
    }
    zt_heap_node_t *parent = node_at(heap, position / 2);
    (position % 2 == 0 ? parent->left : parent->right) = node;
    node->parent = parent;
    sift_up(heap, node, less);
}

void zt_heap_remove(zt_heap_t *heap, zt_heap_node_t *node, zt_heap_less_t less) {
    if (heap->count == 0 || node->in_heap == 0) return;

    zt_heap_node_t *last = node_at(heap, heap->count);
    replace_child(heap, last->parent, last, nullptr);
    --heap->count;
    node->in_heap = 0;
    if (last == node) return;

    const auto goes_above = [less](auto *other, auto *moved) { return less(other, moved) != 0; };
    if (!replace_and_sift_down(heap, node, last, less, goes_above)) sift_up(heap, last, less);
}

void zt_heap_dequeue(zt_heap_t *heap, zt_heap_less_t less) {
    zt_heap_remove(heap, heap->root, less);
}
