// The steps of the heap, over any order: the public operations call the caller's function, the modules
// that stand on the heap have their own order compiled in.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_CONTAINER_HEAP_OPS_HPP
#define ZT_SRC_CONTAINER_HEAP_OPS_HPP

#include "zt/heap.h"

namespace zt::detail {

struct Children {
    zt_heap_node_t *left;
    zt_heap_node_t *right;
};

inline Children children_of(const zt_heap_node_t *node) { return {node->left, node->right}; }

// The children with `successor` where `old` was. Two selects instead of a branch: nobody can predict
// on which side a path runs.
inline Children with(Children now, const zt_heap_node_t *old, zt_heap_node_t *successor) {
    return {now.left == old ? successor : now.left, now.right == old ? successor : now.right};
}

inline void set_children(zt_heap_node_t *node, Children children) {
    node->left = children.left;
    node->right = children.right;
    if (children.left != nullptr) children.left->parent = node;
    if (children.right != nullptr) children.right->parent = node;
}

// Lets what points down to `old` point to its successor.
inline void replace_child(zt_heap_t *heap, zt_heap_node_t *parent, const zt_heap_node_t *old,
                          zt_heap_node_t *successor) {
    zt_heap_node_t **link = &heap->root;
    if (parent != nullptr) link = parent->left == old ? &parent->left : &parent->right;
    *link = successor;
}

// Lets node rise above every ancestor that must stand below it. First finds its place, then moves
// each ancestor passed one place down, linking every node once.
template <typename Less>
void sift_up(zt_heap_t *heap, zt_heap_node_t *node, Less less) {
    zt_heap_node_t *above = node->parent;
    while (above != nullptr && less(node, above) != 0) above = above->parent;
    if (above == node->parent) return;

    zt_heap_node_t *place = node;
    zt_heap_node_t *sinking = node->parent;
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
template <typename Less>
zt_heap_node_t *bottom_of(zt_heap_node_t *top, Less less) {
    zt_heap_node_t *bottom = top;
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

// Puts node, which may be `old` itself, where `old` was or further down: whoever goes above it moves up.
// A node from the end of the heap belongs far down, so its place is sought from the bottom: that takes
// about half the comparisons of a search from the top and gives the same shape. True when anyone has
// moved up.
template <typename Less, typename GoesAbove>
bool replace_and_sift_down(zt_heap_t *heap, zt_heap_node_t *old, zt_heap_node_t *node, Less less,
                           GoesAbove goes_above) {
    zt_heap_node_t *const above = old->parent;
    zt_heap_node_t *place = bottom_of(old, less);
    while (place != old && !goes_above(place, node)) place = place->parent;

    const bool moved = place != old;
    const Children top = children_of(old);  // which linking node changes, if it is `old`
    zt_heap_node_t *riser = node;
    Children below = children_of(place);
    while (place != old) {
        zt_heap_node_t *parent = place->parent;
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

// Takes a node of the heap, whose record's key has changed, to where it belongs now: what a removal
// and an insertion do, in about half the time. As after these it stands above others only where it
// must, so it is on top only when its key is the first; other equal keys may end in another order.
template <typename Less>
void heap_move(zt_heap_t *heap, zt_heap_node_t *node, Less less) {
    if (node->parent != nullptr && less(node, node->parent) != 0) {
        sift_up(heap, node, less);
    } else {
        const auto goes_above = [&](auto *other, auto *moved) { return less(moved, other) == 0; };
        replace_and_sift_down(heap, node, node, less, goes_above);
    }
}

}  // namespace zt::detail

#endif  // ZT_SRC_CONTAINER_HEAP_OPS_HPP
