// Subscribing, publishing and reading flags, under the application's locking hooks.
// SPDX-License-Identifier: MIT
#include "zt/ntf_mgr.h"

#include <cstddef>
#include <type_traits>

#include "service/ntf_mgr_state.hpp"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_ntf_mgr_t> && offsetof(zt_ntf_mgr_t, priv) == 0);
static_assert(sizeof(zt_ntf_mgr_ops_t) == 6 * sizeof(void *));

using namespace zt::detail;

namespace {

constexpr int64_t kWordBits = 64;

// Holds one of the pairs of hooks for the length of a scope.
class HookGuard {
  public:
    HookGuard(zt_ntf_mgr_t *manager, zt_ntf_mgr_hook_t lock, zt_ntf_mgr_hook_t unlock)
        : manager_(manager), unlock_(unlock) {
        if (lock != nullptr) lock(manager);
    }
    ~HookGuard() {
        if (unlock_ != nullptr) unlock_(manager_);
    }
    HookGuard(const HookGuard &) = delete;
    HookGuard &operator=(const HookGuard &) = delete;

  private:
    zt_ntf_mgr_t *manager_;
    zt_ntf_mgr_hook_t unlock_;
};

HookGuard hold_read(zt_ntf_mgr_t *manager) {
    const zt_ntf_mgr_ops_t &ops = manager->priv->ops;
    return {manager, ops.read_lock, ops.read_unlock};
}

HookGuard hold_write(zt_ntf_mgr_t *manager) {
    const zt_ntf_mgr_ops_t &ops = manager->priv->ops;
    return {manager, ops.write_lock, ops.write_unlock};
}

HookGuard hold_flags(zt_ntf_mgr_t *manager) {
    const zt_ntf_mgr_ops_t &ops = manager->priv->ops;
    return {manager, ops.flags_lock, ops.flags_unlock};
}

bool initialised(const zt_ntf_mgr_t *manager) {
    return manager != nullptr && manager->priv != nullptr;
}

uint64_t low_bits(int64_t count) {
    return count < kWordBits ? (uint64_t{1} << count) - 1 : ~uint64_t{0};
}

// A filled record that is in no tree yet; null when there is no memory. count is at most 64.
zt_ntf_subscriber_t *new_subscriber(uint64_t id, const uint64_t *ids, uint32_t count,
                                    zt_ntf_cb_t cb) {
    const auto ids_size = static_cast<uint32_t>(count * sizeof(uint64_t));
    auto *subscriber = static_cast<zt_ntf_subscriber_t *>(
        zt_zalloc(static_cast<uint32_t>(sizeof(zt_ntf_subscriber_t)) + ids_size));
    if (subscriber == nullptr) return nullptr;
    subscriber->id = id;
    subscriber->cb = cb;
    subscriber->ntf_ids = reinterpret_cast<uint64_t *>(subscriber + 1);
    subscriber->ntf_count = static_cast<int32_t>(count);
    zt_memcpy(subscriber->ntf_ids, ids, ids_size);
    return subscriber;
}

void remove_links(zt_ntf_mgr_priv_t *priv, const zt_ntf_subscriber_t *subscriber) {
    for (int32_t i = 0; i < subscriber->ntf_count; ++i) {
        remove_link(priv, subscriber->ntf_ids[i], subscriber->id);
    }
}

// Calls use with the subscriber's record under both locks.
template <typename Use>
zt_status_t with_subscriber(zt_ntf_mgr_t *manager, uint64_t id, Use use) {
    const HookGuard reading = hold_read(manager);
    zt_ntf_subscriber_t *subscriber = find_subscriber(manager->priv, id);
    if (subscriber == nullptr) return ZT_STATUS_NOT_EXIST;
    const HookGuard changing = hold_flags(manager);
    use(subscriber);
    return ZT_STATUS_SUCCESS;
}

void raise_bit(zt_ntf_mgr_t *manager, zt_ntf_subscriber_t *subscriber, uint64_t bit,
               uint64_t ntf_id) {
    subscriber->raw_flags |= bit;
    const uint64_t effective = subscriber->raw_flags & subscriber->en_mask;
    if (effective == subscriber->flags) return;
    subscriber->flags = effective;
    if (subscriber->cb == nullptr || !subscriber->cb(manager, subscriber->id, ntf_id)) return;
    // On the words as the callback has left them.
    subscriber->raw_flags &= ~bit;
    subscriber->flags &= ~bit;
}

}  // namespace

zt_status_t zt_ntf_mgr_init(const zt_ntf_mgr_ops_t *ops, zt_ntf_mgr_t *manager) {
    if (manager == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    auto *priv = static_cast<zt_ntf_mgr_priv_t *>(zt_zalloc(sizeof(zt_ntf_mgr_priv_t)));
    if (priv == nullptr) return ZT_STATUS_OUT_OF_MEMORY;
    priv->notifications.compare = compare_entries;
    priv->subscribers.compare = compare_subscribers;
    if (ops != nullptr) priv->ops = *ops;
    manager->priv = priv;
    return ZT_STATUS_SUCCESS;
}

void zt_ntf_mgr_deinit(zt_ntf_mgr_t *manager) {
    if (!initialised(manager)) return;
    zt_ntf_mgr_priv_t *priv = manager->priv;
    {
        const HookGuard writing = hold_write(manager);
        while (priv->notifications.root != nullptr) {
            delete_entry(priv, ZT_CONTAINER_OF(priv->notifications.root, zt_ntf_entry_t, node));
        }
        while (priv->subscribers.root != nullptr) {
            delete_subscriber(priv,
                              ZT_CONTAINER_OF(priv->subscribers.root, zt_ntf_subscriber_t, node));
        }
    }
    zt_free(priv);
    manager->priv = nullptr;
}

zt_status_t zt_ntf_mgr_subscribe(zt_ntf_mgr_t *manager, uint64_t subscriber_id, int32_t first_bit,
                                 const uint64_t *ids, int32_t count, zt_ntf_cb_t cb) {
    const int64_t used_bits = int64_t{first_bit} + count;
    if (first_bit < 0 || count < 0 || used_bits > kWordBits || ids == nullptr ||
        !initialised(manager)) {
        return ZT_STATUS_INVALID_ARGUMENT;
    }
    zt_ntf_mgr_priv_t *priv = manager->priv;
    const HookGuard writing = hold_write(manager);
    if (find_subscriber(priv, subscriber_id) != nullptr) return ZT_STATUS_FILE_EXISTS;

    zt_ntf_subscriber_t *subscriber =
        new_subscriber(subscriber_id, ids, static_cast<uint32_t>(count), cb);
    if (subscriber == nullptr) return ZT_STATUS_OUT_OF_MEMORY;
    subscriber->en_mask = low_bits(used_bits);
    for (int32_t i = 0; i < count; ++i) {
        if (add_link(priv, ids[i], subscriber_id, static_cast<uint8_t>(first_bit + i))) continue;
        remove_links(priv, subscriber);
        zt_free(subscriber);
        return ZT_STATUS_OUT_OF_MEMORY;
    }
    zt_rbtree_insert(&priv->subscribers, &subscriber->node);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ntf_mgr_unsubscribe(zt_ntf_mgr_t *manager, uint64_t subscriber_id) {
    if (!initialised(manager)) return ZT_STATUS_INVALID_ARGUMENT;
    zt_ntf_mgr_priv_t *priv = manager->priv;
    const HookGuard writing = hold_write(manager);
    zt_ntf_subscriber_t *subscriber = find_subscriber(priv, subscriber_id);
    if (subscriber == nullptr) return ZT_STATUS_NOT_EXIST;
    remove_links(priv, subscriber);
    delete_subscriber(priv, subscriber);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ntf_mgr_get_en_mask(zt_ntf_mgr_t *manager, uint64_t subscriber_id, uint64_t *mask) {
    if (!initialised(manager) || mask == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    return with_subscriber(manager, subscriber_id, [mask](const zt_ntf_subscriber_t *subscriber) {
        *mask = subscriber->en_mask;
    });
}

zt_status_t zt_ntf_mgr_set_en_mask(zt_ntf_mgr_t *manager, uint64_t subscriber_id, uint64_t mask) {
    if (!initialised(manager)) return ZT_STATUS_INVALID_ARGUMENT;
    return with_subscriber(manager, subscriber_id,
                           [mask](zt_ntf_subscriber_t *subscriber) { subscriber->en_mask = mask; });
}

zt_status_t zt_ntf_mgr_get_flags(zt_ntf_mgr_t *manager, uint64_t subscriber_id, uint64_t *flags) {
    if (!initialised(manager) || flags == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    return with_subscriber(manager, subscriber_id, [flags](zt_ntf_subscriber_t *subscriber) {
        *flags = subscriber->flags;
        subscriber->raw_flags &= ~subscriber->flags;
        subscriber->flags = 0;
    });
}

zt_status_t zt_ntf_mgr_get_raw_flags(zt_ntf_mgr_t *manager, uint64_t subscriber_id,
                                     uint64_t *flags) {
    if (!initialised(manager) || flags == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    return with_subscriber(manager, subscriber_id, [flags](zt_ntf_subscriber_t *subscriber) {
        *flags = subscriber->raw_flags;
        subscriber->raw_flags = 0;
        subscriber->flags = 0;
    });
}

zt_status_t zt_ntf_mgr_publish(zt_ntf_mgr_t *manager, uint64_t ntf_id) {
    if (!initialised(manager)) return ZT_STATUS_INVALID_ARGUMENT;
    const HookGuard reading = hold_read(manager);
    const zt_ntf_entry_t *entry = find_entry(manager->priv, ntf_id);
    if (entry == nullptr) return ZT_STATUS_SUCCESS;
    const HookGuard changing = hold_flags(manager);
    for (zt_list_head_t *p = entry->links.next; p != &entry->links; p = p->next) {
        const zt_ntf_link_t *link = ZT_CONTAINER_OF(p, zt_ntf_link_t, link);
        zt_ntf_subscriber_t *subscriber = find_subscriber(manager->priv, link->subscriber_id);
        raise_bit(manager, subscriber, uint64_t{1} << link->bit, ntf_id);
    }
    return ZT_STATUS_SUCCESS;
}
