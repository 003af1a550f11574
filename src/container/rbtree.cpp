// Red-black tree with the colour in the low bit of the parent's address.
// SPDX-License-Identifier: MIT
#include "zt/rbtree.h"

#include <cstddef>
#include <type_traits>

static_assert(std::is_standard_layout_v<zt_rbtree_t> && sizeof(zt_rbtree_t) == 16);
static_assert(offsetof(zt_rbtree_t, root) == 0);
static_assert(offsetof(zt_rbtree_t, compare) == 8);
static_assert(std::is_standard_layout_v<zt_rbtree_node_t> && sizeof(zt_rbtree_node_t) == 24);
static_assert(offsetof(zt_rbtree_node_t, parent_color) == 0);
static_assert(offsetof(zt_rbtree_node_t, right) == 8);
static_assert(offsetof(zt_rbtree_node_t, left) == 16);

namespace {

using Tree = zt_rbtree_t;
using Node = zt_rbtree_node_t;

// One of the two child links. Whatever treats both sides alike is written once, for a near side and
// the far side across from it. Which side that is, is a value and no branch: nobody can predict it.
using Link = Node *Node::*;

struct Sides {
    Link near, far;

    Sides swapped() const { return {far, near}; }
};

Sides sides(bool left_is_near) {
    return {left_is_near ? &Node::left : &Node::right, left_is_near ? &Node::right : &Node::left};
}

constexpr uintptr_t kRed = 0;
constexpr uintptr_t kBlack = 1;
constexpr uintptr_t kAddressMask = ~uintptr_t{3};

Node *parent_of(const Node *node) {
    // The word holds the colour as well.  NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<Node *>(node->parent_color & kAddressMask);
}

// A missing child counts as black.
bool is_red(const Node *node) { return node != nullptr && (node->parent_color & kBlack) == kRed; }

uintptr_t word_of(const Node *parent, uintptr_t colour) {
    return reinterpret_cast<uintptr_t>(parent) | colour;
}

void set_parent(Node *node, const Node *parent) {
    node->parent_color = word_of(parent, node->parent_color & kBlack);
}

// Lets what points down to `old` point to its successor.
void replace_child(Tree *tree, Node *parent, const Node *old, Node *successor) {
    if (parent == nullptr) {
        tree->root = successor;
    } else {
        parent->*sides(parent->left == old).near = successor;
    }
}

// The far child rises over top, which becomes its near child. The riser takes top's parent and
// colour, top gets the colour given.
void rotate(Tree *tree, Node *top, Sides side, uintptr_t colour) {
    Node *riser = top->*side.far;
    Node *handed_over = riser->*side.near;
    top->*side.far = handed_over;
    if (handed_over != nullptr) set_parent(handed_over, top);
    riser->*side.near = top;
    replace_child(tree, parent_of(top), top, riser);
    riser->parent_color = top->parent_color;
    top->parent_color = word_of(riser, colour);
}

// node, its parent and that one's parent: the first two are both red. True when that is settled; false when
// grand has become red and may clash with its own parent.
bool settle_red_pair(Tree *tree, const Node *node, Node *parent, Node *grand) {
    const Sides side = sides(grand->left == parent);
    Node *uncle = grand->*side.far;
    if (is_red(uncle)) {
        parent->parent_color = word_of(grand, kBlack);
        uncle->parent_color = word_of(grand, kBlack);
        grand->parent_color &= ~kBlack;
        return false;
    }
    if (parent->*side.far == node) rotate(tree, parent, side, kRed);
    rotate(tree, grand, side.swapped(), kRed);
    return true;
}

void rebalance_insert(Tree *tree, Node *node, Node *parent) {
    while (is_red(parent)) {
        Node *grand = parent_of(parent);  // there is one: a root is black
        if (settle_red_pair(tree, node, parent, grand)) return;
        node = grand;
        parent = parent_of(node);
    }
    if (parent == nullptr) node->parent_color = word_of(nullptr, kBlack);
}

// Paths through parent's near side lack a black node. True when that is settled; false when all
// paths through parent lack one now. The far side holds a black node more, so there are a sibling
// and, where it is asked for, its child: an analyzer cannot count blacks.
// NOLINTBEGIN(clang-analyzer-core.NullDereference)
bool settle_lack(Tree *tree, Node *parent, Sides side) {
    if (is_red(parent->*side.far)) rotate(tree, parent, side, kRed);
    Node *sibling = parent->*side.far;
    if (!is_red(sibling->*side.far)) {
        if (!is_red(sibling->*side.near)) {
            sibling->parent_color = word_of(parent, kRed);
            if (!is_red(parent)) return false;
            parent->parent_color |= kBlack;
            return true;
        }
        rotate(tree, sibling, side.swapped(), kRed);
        sibling = parent->*side.far;
    }
    (sibling->*side.far)->parent_color = word_of(sibling, kBlack);
    rotate(tree, parent, side, kBlack);
    return true;
}
// NOLINTEND(clang-analyzer-core.NullDereference)

// The subtree at node (null: the vacated place itself) below parent lacks a black node.
void rebalance_delete(Tree *tree, const Node *node, Node *parent) {
    while (parent != nullptr) {
        if (settle_lack(tree, parent, sides(parent->left == node))) return;
        node = parent;
        parent = parent_of(node);
    }
}

// Takes a node with two children out by putting its successor there.
void delete_inner(Tree *tree, Node *node) {
    Node *successor = node->right;
    Node *hole_parent = nullptr;
    while (successor->left != nullptr) {
        hole_parent = successor;
        successor = successor->left;
    }
    Node *orphan = successor->right;
    const bool lost_black = !is_red(successor);

    if (hole_parent == nullptr) {
        hole_parent = successor;  // node's own right child: what it keeps on its right is short
    } else {
        hole_parent->left = orphan;
        successor->right = node->right;
        set_parent(successor->right, successor);
    }
    successor->left = node->left;
    set_parent(successor->left, successor);
    replace_child(tree, parent_of(node), node, successor);
    successor->parent_color = node->parent_color;
    if (orphan != nullptr) {
        orphan->parent_color = word_of(hole_parent, kBlack);
    } else if (lost_black) {
        rebalance_delete(tree, nullptr, hole_parent);
    }
}

}  // namespace

zt_rbtree_node_t *zt_rbtree_insert(zt_rbtree_t *tree, zt_rbtree_node_t *node) {
    const zt_rbtree_compare_t compare = tree->compare;
    Node *parent = nullptr;
    int32_t order = 0;
    for (Node *next = tree->root; next != nullptr;) {
        parent = next;
        // Both children are on their way while the keys are compared, and choosing one of two values
        // needs no branch, which random keys would mispredict half of the time.
        Node *left = parent->left;
        Node *right = parent->right;
        __builtin_prefetch(left);
        __builtin_prefetch(right);
        order = compare(node, parent);
        if (order == 0) return parent;
        next = order < 0 ? left : right;
    }
    node->right = nullptr;
    node->left = nullptr;
    if (parent == nullptr) {
        node->parent_color = word_of(nullptr, kBlack);
        tree->root = node;
        return nullptr;
    }
    node->parent_color = word_of(parent, kRed);
    parent->*sides(order < 0).near = node;
    rebalance_insert(tree, node, parent);
    return nullptr;
}

void zt_rbtree_delete(zt_rbtree_t *tree, zt_rbtree_node_t *node) {
    if (node->left != nullptr && node->right != nullptr) {
        delete_inner(tree, node);
        return;
    }
    Node *child = node->left != nullptr ? node->left : node->right;
    Node *parent = parent_of(node);
    replace_child(tree, parent, node, child);
    if (child != nullptr) {
        child->parent_color = node->parent_color;
    } else if (!is_red(node)) {
        rebalance_delete(tree, nullptr, parent);
    }
}
