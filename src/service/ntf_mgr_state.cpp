// Finding, linking and deleting the notification manager's records.
// SPDX-License-Identifier: MIT
#include "service/ntf_mgr_state.hpp"

#include <cstddef>

#include "base/list_ops.hpp"
#include "zt/memory.h"

static_assert(offsetof(zt_ntf_mgr_priv_t, subscribers) == 16 &&
              offsetof(zt_ntf_mgr_priv_t, ops) == 32);
static_assert(offsetof(zt_ntf_subscriber_t, id) == 24 &&
              offsetof(zt_ntf_subscriber_t, en_mask) == 32);
static_assert(offsetof(zt_ntf_subscriber_t, flags) == 40);
static_assert(offsetof(zt_ntf_subscriber_t, raw_flags) == 48 &&
              offsetof(zt_ntf_subscriber_t, cb) == 56);
static_assert(offsetof(zt_ntf_subscriber_t, ntf_ids) == 64);
static_assert(offsetof(zt_ntf_subscriber_t, ntf_count) == 72 && sizeof(zt_ntf_subscriber_t) == 80);
static_assert(offsetof(zt_ntf_entry_t, node) == 8 && offsetof(zt_ntf_entry_t, links) == 32);
static_assert(offsetof(zt_ntf_link_t, subscriber_id) == 16 && offsetof(zt_ntf_link_t, bit) == 24);

namespace zt::detail {
namespace {

zt_ntf_entry_t *entry_of(zt_rbtree_node_t *node) {
    return ZT_CONTAINER_OF(node, zt_ntf_entry_t, node);
}

zt_ntf_subscriber_t *subscriber_of(zt_rbtree_node_t *node) {
    return ZT_CONTAINER_OF(node, zt_ntf_subscriber_t, node);
}

zt_ntf_link_t *link_of(zt_list_head_t *link) { return ZT_CONTAINER_OF(link, zt_ntf_link_t, link); }

int32_t compare_ids(uint64_t first, uint64_t second) {
    if (first == second) return 0;
    return first < second ? -1 : 1;
}

// The node with this id in a tree whose records are reached by record_of; null when there is none.
template <typename RecordOf>
auto find(const zt_rbtree_t &tree, uint64_t id, RecordOf record_of)
    -> decltype(record_of(tree.root)) {
    zt_rbtree_node_t *node = tree.root;
    while (node != nullptr) {
        auto *record = record_of(node);
        if (record->id == id) return record;
        node = id < record->id ? node->left : node->right;
    }
    return nullptr;
}

zt_ntf_entry_t *add_entry(zt_ntf_mgr_priv_t *priv, uint64_t id) {
    auto *entry = static_cast<zt_ntf_entry_t *>(zt_zalloc(sizeof(zt_ntf_entry_t)));
    if (entry == nullptr) return nullptr;
    entry->id = id;
    list_init(&entry->links);
    zt_rbtree_insert(&priv->notifications, &entry->node);
    return entry;
}

void delete_link(zt_ntf_link_t *link) {
    list_remove(&link->link);
    zt_free(link);
}

}  // namespace

int32_t compare_entries(zt_rbtree_node_t *inserted, zt_rbtree_node_t *in_tree) {
    return compare_ids(entry_of(inserted)->id, entry_of(in_tree)->id);
}

int32_t compare_subscribers(zt_rbtree_node_t *inserted, zt_rbtree_node_t *in_tree) {
    return compare_ids(subscriber_of(inserted)->id, subscriber_of(in_tree)->id);
}

zt_ntf_entry_t *find_entry(const zt_ntf_mgr_priv_t *priv, uint64_t id) {
    return find(priv->notifications, id, entry_of);
}

zt_ntf_subscriber_t *find_subscriber(const zt_ntf_mgr_priv_t *priv, uint64_t id) {
    return find(priv->subscribers, id, subscriber_of);
}

bool add_link(zt_ntf_mgr_priv_t *priv, uint64_t ntf_id, uint64_t subscriber_id, uint8_t bit) {
    zt_ntf_entry_t *entry = find_entry(priv, ntf_id);
    if (entry == nullptr) entry = add_entry(priv, ntf_id);
    if (entry == nullptr) return false;
    auto *link = static_cast<zt_ntf_link_t *>(zt_zalloc(sizeof(zt_ntf_link_t)));
    if (link == nullptr) return false;
    link->subscriber_id = subscriber_id;
    link->bit = bit;
    list_insert_before(&entry->links, &link->link);
    return true;
}

void remove_link(zt_ntf_mgr_priv_t *priv, uint64_t ntf_id, uint64_t subscriber_id) {
    zt_ntf_entry_t *entry = find_entry(priv, ntf_id);
    if (entry == nullptr) return;
    for (zt_list_head_t *p = entry->links.next; p != &entry->links; p = p->next) {
        if (link_of(p)->subscriber_id != subscriber_id) continue;
        delete_link(link_of(p));
        break;
    }
    if (list_empty(&entry->links)) delete_entry(priv, entry);
}

void delete_entry(zt_ntf_mgr_priv_t *priv, zt_ntf_entry_t *entry) {
    while (!list_empty(&entry->links)) delete_link(link_of(entry->links.next));
    zt_rbtree_delete(&priv->notifications, &entry->node);
    zt_free(entry);
}

void delete_subscriber(zt_ntf_mgr_priv_t *priv, zt_ntf_subscriber_t *subscriber) {
    zt_rbtree_delete(&priv->subscribers, &subscriber->node);
    zt_free(subscriber);
}

}  // namespace zt::detail
