// The notification manager's records: two trees, and the links between what they hold.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_SERVICE_NTF_MGR_STATE_HPP
#define ZT_SRC_SERVICE_NTF_MGR_STATE_HPP

#include <cstdint>

#include "zt/list.h"
#include "zt/ntf_mgr.h"
#include "zt/rbtree.h"

struct zt_ntf_mgr_priv_t {
    zt_rbtree_t notifications;  // of entries, by the id right before the node
    zt_rbtree_t subscribers;    // by the id right behind the node
    zt_ntf_mgr_ops_t ops;
};

// One allocation together with the copy of its id list.
struct zt_ntf_subscriber_t {
    zt_rbtree_node_t node;
    uint64_t id;
    uint64_t en_mask;
    uint64_t flags;      // raw and enabled when last recomputed, not yet fetched
    uint64_t raw_flags;  // published and not yet cleared
    zt_ntf_cb_t cb;
    uint64_t *ntf_ids;  // right behind the record
    int32_t ntf_count;
};

// A notification that somebody listed.
struct zt_ntf_entry_t {
    uint64_t id;
    zt_rbtree_node_t node;
    zt_list_head_t links;  // in order of subscription; never empty
};

struct zt_ntf_link_t {
    zt_list_head_t link;
    uint64_t subscriber_id;
    uint8_t bit;
};

namespace zt::detail {

// The comparisons of the two trees.
int32_t compare_entries(zt_rbtree_node_t *inserted, zt_rbtree_node_t *in_tree);
int32_t compare_subscribers(zt_rbtree_node_t *inserted, zt_rbtree_node_t *in_tree);

// The entry, or the subscriber, with this id; null when there is none.
zt_ntf_entry_t *find_entry(const zt_ntf_mgr_priv_t *priv, uint64_t id);
zt_ntf_subscriber_t *find_subscriber(const zt_ntf_mgr_priv_t *priv, uint64_t id);

// Links the subscriber to a notification, which gets its entry if it has none. False: no memory, the
// entry may have been left without links.
bool add_link(zt_ntf_mgr_priv_t *priv, uint64_t ntf_id, uint64_t subscriber_id, uint8_t bit);

// Takes the subscriber's first link to a notification away, if there is one, and the entry with its last
// link.
void remove_link(zt_ntf_mgr_priv_t *priv, uint64_t ntf_id, uint64_t subscriber_id);

// Takes an entry and its links, or a subscriber alone, out of its tree and frees it.
void delete_entry(zt_ntf_mgr_priv_t *priv, zt_ntf_entry_t *entry);
void delete_subscriber(zt_ntf_mgr_priv_t *priv, zt_ntf_subscriber_t *subscriber);

}  // namespace zt::detail

#endif  // ZT_SRC_SERVICE_NTF_MGR_STATE_HPP
