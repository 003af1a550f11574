// SPDX-License-Identifier: MIT
#include "zt/heap.h"

#include "support/test.hpp"

struct Record : zt_heap_node_t {
    uint32_t key;
};

// Whoever looks at 8 or 16 bits of the result sees a heap of equal keys.
static int32_t less(zt_heap_node_t *first, zt_heap_node_t *second) {
    return 65536 * (static_cast<Record *>(first)->key < static_cast<Record *>(second)->key);
}

// A heap in an array that swaps its nodes as textbooks do: the node at position k, null where none is.
using Array = std::vector<zt_heap_node_t *>;

static void sift(Array &at, size_t k) {
    size_t top = k;
    for (size_t child : {2 * k, 2 * k + 1})
        if (at[child] && less(at[child], at[top])) top = child;
    if (top == k && k > 1 && less(at[k], at[k / 2])) top = k / 2;
    if (top == k) return;
    std::swap(at[k], at[top]);
    sift(at, top);
}

// Ties decide the shape too. While a heap of few or many nodes grows and shrinks, nodes that are in it
// are inserted and others removed; a removed one keeps its links, but for those that led to the last
// node. Nothing is compared where nothing needs to be.
ZT_MODEL(Heap, HasTheShapeOfAnArrayHeap, 4, 5'000) {
    zt_heap_t heap = {};
    uint32_t count = 0, growing = 1;
    std::vector<Record> records(random.variant(2) ? 12 : 500);
    Array at(2 * records.size() + 2);
    while (random.more()) {
        const uint32_t dice = random(256);
        growing ^= dice == 0;
        Record *node = &records[random(records.size())];
        const Record before = *node;
        zt_heap_node_t *last = before.in_heap ? at[count] : node;
        const auto compare = node != last ? less : nullptr;
        if (growing == (dice % 8 > 0)) {
            if (!before.in_heap) node->key = random(100), at[++count] = node, sift(at, count);
            zt_heap_insert(&heap, node, before.in_heap ? nullptr : less);
        } else {
            if (node == heap.root) zt_heap_dequeue(&heap, compare);
            zt_heap_remove(&heap, node, compare);
            EXPECT_TRUE(!node->in_heap && node->parent == before.parent);
            EXPECT_EQ(node->left, before.left == last ? nullptr : before.left);
            EXPECT_EQ(node->right, before.right == last ? nullptr : before.right);
            const size_t place = std::find(at.begin(), at.end(), node) - at.begin();
            if (before.in_heap) at[place] = last, at[count--] = nullptr;
            if (node != last) sift(at, place);
        }
        if (count == 0) zt_heap_dequeue(&heap, nullptr);
        EXPECT_TRUE(heap.root == at[1] && heap.count == count);
        for (size_t k = 1; k <= count; ++k)
            EXPECT_TRUE(at[k]->parent == at[k / 2] && at[k]->left == at[2 * k] && at[k]->right == at[2 * k + 1]);
    }
}
