// SPDX-License-Identifier: MIT
#include "zt/rbtree.h"

#include "support/test.hpp"

struct Record : zt_rbtree_node_t {
    uint32_t key;
};

static uint32_t key_of(zt_rbtree_node_t *node) { return static_cast<Record *>(node)->key; }

// Whoever looks at 8 or 16 bits of the results takes all keys for equal.
static int32_t by_key(zt_rbtree_node_t *a, zt_rbtree_node_t *b) {
    return key_of(a) < key_of(b) ? INT32_MIN : 65536 * (key_of(a) > key_of(b));
}

// Compares a subtree with the model from `next` on and returns its black height.
static int walk(zt_rbtree_node_t *node, const void *parent, bool below_red, auto &next) {
    if (node == nullptr) return 0;
    const bool black = node->parent_color % 2 != 0;
    EXPECT_EQ(node->parent_color - black, reinterpret_cast<uintptr_t>(parent));
    EXPECT_TRUE(black || !below_red);
    const int left = walk(node->left, node, !black, next);
    EXPECT_EQ(node, next++->second);
    EXPECT_EQ(left, walk(node->right, node, !black, next));
    return left + black;
}

// Keys come at random or in a row, while the tree grows and shrinks, of few nodes or many. Neither a
// refused node nor a deleted one is touched, and deleting compares nothing.
ZT_MODEL(RbTree, KeepsOrderAndColoursLikeAMap, 4, 5'000) {
    const uint32_t kind = random.variant(4), size = kind % 2 ? 20 : 1000;
    zt_rbtree_t tree = {};
    std::map<uint32_t, Record *> model;
    std::vector<Record> records(size);
    for (uint32_t step = 0, growing = 1; random.more(); ++step) {
        const uint32_t dice = random(256), i = (kind < 2 ? random(size) : step) % size;
        growing ^= dice == 0;
        const bool insert = growing == (dice % 8 > 0), known = model.count(i);
        records[i].key = i;
        Record before = records[i], twin = before, *node = insert && known ? &twin : &records[i];
        tree.compare = insert ? by_key : nullptr;
        if (!insert && known) zt_rbtree_delete(&tree, node);
        EXPECT_TRUE(!insert || zt_rbtree_insert(&tree, node) == (node == &twin ? &records[i] : nullptr));
        EXPECT_TRUE(!known || std::memcmp(node, &before, sizeof *tree.root) == 0);
        insert ? void(model[i] = &records[i]) : void(model.erase(i));
        auto next = model.begin();
        walk(tree.root, nullptr, true, next);  // true: a root is black
        EXPECT_EQ(next, model.end());
    }
}
