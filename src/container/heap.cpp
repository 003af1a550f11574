// Binary heap of linked nodes in the shape of a complete tree.
// SPDX-License-Identifier: MIT
#include "zt/heap.h"

#include <bit>
#include <cstddef>
#include <type_traits>

#include "container/heap_move.hpp"

static_assert(std::is_standard_layout_v<zt_heap_t> && sizeof(zt_heap_t) == 16);
static_assert(offsetof(zt_heap_t, root) == 0);
static_assert(offsetof(zt_heap_t, count) == 8);
static_assert(std::is_standard_layout_v<zt_heap_node_t> && sizeof(zt_heap_node_t) == 32);
static_assert(offsetof(zt_heap_node_t, in_heap) == 0);
static_assert(offsetof(zt_heap_node_t, left) == 8);
static_assert(offsetof(zt_heap_node_t, right) == 16);
static_assert(offsetof(zt_heap_node_t, parent) == 24);

namespace {

using Heap = zt_heap_t;
using Node = zt_heap_node_t;
using Less = zt_heap_less_t;

// The node at a position: the binary digits behind the leading 1 are the way, 0 left and 1 right.
Node *node_at(const Heap *heap, uint32_t position) {
    Node *node = heap->root;
    for (uint32_t digit = std::bit_floor(position) >> 1; digit != 0; digit >>= 1) {
        node = (position & digit) != 0 ? node->right : node->left;
    }
    return node;
}

struct Children {
    Node *left;
    Node *right;
};

Children children_of(const Node *node) { return {node->left, node->right}; }

// The children with `successor` where `old` was. Two selects instead of a branch: nobody can predict
// on which side a path runs.
Children with(Children now, const Node *old, Node *successor) {
    return {now.left == old ? successor : now.left, now.right == old ? successor : now.right};
}

void set_children(Node *node, Children children) {
    node->left = children.left;
    node->right = children.right;
    if (children.left != nullptr) children.left->parent = node;
    if (children.right != nullptr) children.right->parent = node;
}

// Lets what points down to `old` point to its successor.
void replace_child(Heap *heap, Node *parent, const Node *old, Node *successor) {
    Node **link = &heap->root;
    if (parent != nullptr) link = parent->left == old ? &parent->left : &parent->right;
    *link = successor;
}

// Lets node rise above every ancestor that must stand below it. First finds its place, then moves
// each ancestor passed one place down, linking every node once.
void sift_up(Heap *heap, Node *node, Less less) {
    Node *above = node->parent;
    while (above != nullptr && less(node, above) != 0) above = above->parent;
    if (above == node->parent) return;

    Node *place = node;
    Node *sinking = node->parent;
    Children below = children_of(node);
    do {
        const Children next = with(children_of(sinking), place, sinking);
        set_children(sinking, below);
        below = next;
        place = sinking;
        sinking = sinking->parent;
    } while (sinking != above);
    set_children(node, below);
    node->parent = above;
    replace_child(heap, above, place, node);
}

// Where the way down from `top` along the upper one of each two children (of equal ones the left)
// reaches the bottom. One comparison a level; what may be needed two levels on is fetched ahead.
Node *bottom_of(Node *top, Less less) {
    Node *bottom = top;
    Children next = children_of(top);
    while (next.right != nullptr) {
        __builtin_prefetch(next.left->left);
        __builtin_prefetch(next.left->right);
        __builtin_prefetch(next.right->left);
        __builtin_prefetch(next.right->right);
        bottom = less(next.right, next.left) != 0 ? next.right : next.left;
        next = children_of(bottom);
    }
    return next.left != nullptr ? next.left : bottom;
}

// Puts node, which may be `old` itself, where `old` was or further down: whoever must stand above it
// moves up. A node from the end of the heap belongs far down, so its place is sought from the bottom:
// that takes about half the comparisons of a search from the top and gives the same shape. True when
// anyone has moved up.
bool replace_and_sift_down(Heap *heap, Node *old, Node *node, Less less) {
    Node *const above = old->parent;
    Node *place = bottom_of(old, less);
    while (place != old && less(place, node) == 0) place = place->parent;

    const bool moved = place != old;
    const Children top = children_of(old);  // which linking node changes, if it is `old`
    Node *riser = node;
    Children below = children_of(place);
    while (place != old) {
        Node *parent = place->parent;
        const Children next = with(parent == old ? top : children_of(parent), place, riser);
        set_children(riser, below);
        below = next;
        riser = place;
        place = parent;
    }
    set_children(riser, below);
    riser->parent = above;
    replace_child(heap, above, old, riser);
    return moved;
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
    Node *parent = node_at(heap, position / 2);
    (position % 2 == 0 ? parent->left : parent->right) = node;
    node->parent = parent;
    sift_up(heap, node, less);
}

void zt_heap_remove(zt_heap_t *heap, zt_heap_node_t *node, zt_heap_less_t less) {
    if (heap->count == 0 || node->in_heap == 0) return;

    Node *last = node_at(heap, heap->count);
    replace_child(heap, last->parent, last, nullptr);
    --heap->count;
    node->in_heap = 0;
    if (last == node) return;

    if (!replace_and_sift_down(heap, node, last, less)) sift_up(heap, last, less);
}

void zt_heap_dequeue(zt_heap_t *heap, zt_heap_less_t less) {
    zt_heap_remove(heap, heap->root, less);
}

void zt::detail::heap_move(zt_heap_t *heap, zt_heap_node_t *node, zt_heap_less_t less) {
    if (node->parent != nullptr && less(node, node->parent) != 0) {
        sift_up(heap, node, less);
    } else {
        replace_and_sift_down(heap, node, node, less);
    }
}
