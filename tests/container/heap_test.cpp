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
using Model = std::vector<zt_heap_node_t *>;

static void sift(Model &at, size_t k) {
    size_t top = k;
    if (at[2 * k] && less(at[2 * k], at[top])) top = 2 * k;
    if (at[2 * k + 1] && less(at[2 * k + 1], at[top])) top = 2 * k + 1;
    if (top == k && k > 1 && less(at[k], at[k / 2])) top = k / 2;
    if (top == k) return;
    std::swap(at[k], at[top]);
    sift(at, top);
}

// Ties decide the shape too. While the heap grows and shrinks, nodes that are in it are inserted and
// others removed; a removed one keeps its links, but for those that led to the last node. Nothing is
// compared where nothing needs to be. The second half has a heap of a few nodes.
TEST(Heap, HasTheShapeOfAnArrayHeap) {
    const uint32_t size = 500;
    std::mt19937 random(size);
    zt_heap_t heap = {};
    uint32_t count = 0;
    Model at(2 * size + 2);
    std::vector<Record> records(size);
    for (uint32_t step = 0; step < 20 * size && !HasFailure(); ++step) {
        if (step == 10 * size) heap = {}, count = 0, at.assign(26, nullptr), records.assign(12, {});
        Record *node = &records[random() % records.size()];
        const Record before = *node;
        zt_heap_node_t *last = before.in_heap != 0 ? at[count] : node;
        const auto compare = node != last ? less : nullptr;
        if (random() % size < step % size) {
            if (before.in_heap == 0) node->key = random() % 100;
            zt_heap_insert(&heap, node, before.in_heap == 0 ? less : nullptr);
            if (before.in_heap == 0) at[++count] = node, sift(at, count);
        } else {
            node == heap.root ? zt_heap_dequeue(&heap, compare)
                              : zt_heap_remove(&heap, node, compare);
            EXPECT_TRUE(node->in_heap == 0 && node->parent == before.parent &&
                        node->left == (before.left == last ? nullptr : before.left) &&
                        node->right == (before.right == last ? nullptr : before.right));
            const auto place = std::find(at.begin(), at.end(), node);
            if (before.in_heap != 0) *place = last, at[count--] = nullptr;
            if (node != last) sift(at, static_cast<size_t>(place - at.begin()));
        }
        if (heap.root == nullptr) zt_heap_dequeue(&heap, nullptr);
        EXPECT_TRUE(heap.root == at[1] && heap.count == count);
        for (size_t k = 1; k <= count; ++k)
            EXPECT_TRUE(at[k]->in_heap == 1 && at[k]->parent == at[k / 2] &&
                        at[k]->left == at[2 * k] && at[k]->right == at[2 * k + 1]);
    }
}
