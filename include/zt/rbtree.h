/* zt/rbtree.h - an intrusive red-black tree: ordered records without an allocation.
 *
 * SPDX-License-Identifier: MIT
 *
 * Callers embed a node in each record. The library inserts and deletes; looking up and walking are
 * the caller's, directly on the node's links: `left` leads to smaller records, `right` to greater
 * ones, and left subtree, node, right subtree is the ascending order.
 *
 *     zt_rbtree_node_t *p = tree.root;
 *     while (p != NULL && key != ZT_CONTAINER_OF(p, session_t, node)->key) {
 *         p = key < ZT_CONTAINER_OF(p, session_t, node)->key ? p->left : p->right;
 *     }
 *
 * Memory   The caller owns the tree record and every node. A node stays where it is while it is in
 *          a tree. Nothing is allocated or freed.
 * Threads  No lock: guard a tree with your own mutex. The comparison runs on the inserting thread
 *          and must not change the tree.
 * Failure  Nothing fails. A record that equals one in the tree is handed back, not inserted.
 */
#ifndef ZT_RBTREE_H
#define ZT_RBTREE_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/list.h" /* ZT_CONTAINER_OF */

#ifdef __cplusplus
extern "C" {
#endif

/* Embedded in the caller's record, at least 4-byte aligned. Needs no preparation before an insert;
 * written by the library only, read by anyone who walks the tree. */
typedef struct zt_rbtree_node_t {
    uintptr_t parent_color; /* address of the parent (0 in the root); bit 0: 1 black, 0 red */
    struct zt_rbtree_node_t *right; /* subtree of greater records, or null */
    struct zt_rbtree_node_t *left;  /* subtree of smaller records, or null */
} zt_rbtree_node_t;

/* Negative: the node being inserted belongs before the one in the tree; positive: behind it; 0:
 * they are equal. All 32 bits count. Compare keys; a difference of keys can overflow. */
typedef int32_t (*zt_rbtree_compare_t)(zt_rbtree_node_t *inserted, zt_rbtree_node_t *in_tree);

/* The tree: both fields are set by the caller before the first insert. */
typedef struct zt_rbtree_t {
    /* Null: the tree is empty, as it must be at first; then the library's. */
    zt_rbtree_node_t *root;
    /* The order of the records; not changed while nodes are in the tree. */
    zt_rbtree_compare_t compare;
} zt_rbtree_t;

/* Links the node into its place. Returns null when it was linked, or the node in the tree that
 * compares equal; then the tree and the new node are untouched. O(log n): at most one comparison a
 * level, at most two rotations. */
ZT_API zt_rbtree_node_t *zt_rbtree_insert(zt_rbtree_t *tree, zt_rbtree_node_t *node);

/* Unlinks the node, which must be in this tree: that is not checked. Its in-order successor takes
 * the place of a node with two children. The node's own fields stay as they were. O(log n) without
 * a comparison, at most three rotations. */
ZT_API void zt_rbtree_delete(zt_rbtree_t *tree, zt_rbtree_node_t *node);

#ifdef __cplusplus
}
#endif

#endif /* ZT_RBTREE_H */
