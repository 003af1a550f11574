// The driver's side of the pan-tilt-zoom channel, and its creation.
// SPDX-License-Identifier: MIT
#include "zt/ptz_internal.h"

#include "base/list_ops.hpp"
#include "os/mutex_guard.hpp"
#include "service/ptz_channel.hpp"
#include "service/ptz_validate.hpp"
#include "zt/memory.h"
#include "zt/string.h"

using namespace zt::detail;

namespace {

constexpr uint32_t kDefaultCommands = 16;

// A zeroed array of count records linked into the list in its order; null when there is no memory.
template <typename Slot>
Slot *allocate_slots(uint32_t count, zt_list_head_t *list) {
    list_init(list);
    const uint64_t bytes = uint64_t{count} * sizeof(Slot);
    if (bytes > UINT32_MAX) return nullptr;
    auto *slots = static_cast<Slot *>(zt_zalloc(static_cast<uint32_t>(bytes)));
    for (uint32_t i = 0; slots != nullptr && i < count; ++i)
        list_insert_before(list, &slots[i].link);
    return slots;
}

// Fills the zeroed channel; what it got by then is released on failure, the channel itself is not.
zt_status_t set_up(zt_ptz_t *ptz, zt_ptz_channel_t *channel) {
    zt_ptz_default_capability(&channel->capability);
    zt_status_t status = ptz->init_capability(ptz, &channel->capability);
    if (status == ZT_STATUS_SUCCESS) status = zt_mutex_init(&channel->lock);
    if (status != ZT_STATUS_SUCCESS) return status;

    list_init(&channel->pending);
    list_init(&channel->clients);
    channel->cmd_slots =
        allocate_slots<zt_ptz_cmd_slot_t>(channel->cmd_capacity, &channel->free_cmds);
    if (channel->cmd_slots != nullptr) {
        channel->client_slots =
            allocate_slots<zt_ptz_client_slot_t>(channel->client_capacity, &channel->free_clients);
        if (channel->client_slots != nullptr) return ZT_STATUS_SUCCESS;
    }
    zt_free(channel->cmd_slots);
    zt_mutex_destroy(&channel->lock);
    return ZT_STATUS_OUT_OF_MEMORY;
}

// Calls visit with each client that is registered now and still is, with a callback, when its turn
// comes, until visit returns false. Callbacks may register and unregister anybody: ids are never given
// twice, so an id that is found again is the same client.
template <typename Visit>
void for_each_client(zt_ptz_channel_t *channel, Visit visit) {
    uint32_t ids[ZT_PTZ_MAX_CLIENTS];
    uint32_t count = 0;
    for (zt_list_head_t *p = channel->clients.next; p != &channel->clients; p = p->next) {
        ids[count++] = ZT_CONTAINER_OF(p, zt_ptz_client_slot_t, link)->id;
    }
    for (uint32_t i = 0; i < count; ++i) {
        const zt_ptz_client_slot_t *client = find_client(channel, ids[i]);
        if (client == nullptr || client->cb == nullptr) continue;
        if (!visit(*client)) return;
    }
}

void deliver_result(zt_ptz_t *ptz, const zt_ptz_client_slot_t &client,
                    const zt_ptz_result_t &result) {
    zt_ptz_msg_t msg;
    zt_memset(&msg, 0, sizeof msg);
    msg.type = ZT_PTZ_MSG_RESULT;
    msg.u.result = result;
    client.cb(ptz, &msg, client.user);
}

void deliver_index(zt_ptz_t *ptz, const zt_ptz_client_slot_t &client,
                   const zt_ptz_params_t &params) {
    zt_ptz_msg_t msg;
    zt_memset(&msg, 0, sizeof msg);
    msg.type = ZT_PTZ_MSG_INDEX;
    msg.u.index.index = params.index.index;
    if (params.index.operation == ZT_PTZ_INDEX_NAME) {
        // Pads with zeros: what the sender's block holds behind the name is nobody else's business.
        zt_strncpy(msg.u.index.name, params.index.name, sizeof msg.u.index.name);
    }
    client.cb(ptz, &msg, client.user);
}

}  // namespace

void zt_ptz_internal_get_default_param(zt_ptz_internal_param_t *param) {
    param->cmd_capacity = kDefaultCommands;
}

zt_status_t zt_ptz_internal_create(zt_ptz_t *ptz, const zt_ptz_internal_param_t *param) {
    if (channel_of(ptz) != nullptr) return ZT_STATUS_NOT_INITIALIZED;
    if (ptz == nullptr || param == nullptr || ptz->command_ready == nullptr ||
        ptz->init_capability == nullptr || ptz->release == nullptr) {
        return ZT_STATUS_INVALID_ARGUMENT;
    }
    auto *channel = static_cast<zt_ptz_channel_t *>(zt_zalloc(sizeof(zt_ptz_channel_t)));
    if (channel == nullptr) return ZT_STATUS_OUT_OF_MEMORY;
    channel->cmd_capacity = param->cmd_capacity != 0 ? param->cmd_capacity : kDefaultCommands;
    channel->client_capacity = ZT_PTZ_MAX_CLIENTS;
    const zt_status_t status = set_up(ptz, channel);
    if (status != ZT_STATUS_SUCCESS) {
        zt_free(channel);
        return status;
    }
    ptz->priv = channel;
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ptz_internal_get_command(zt_ptz_t *ptz, uint32_t *client_id, uint32_t *seq,
                                        uint32_t *code, zt_ptz_params_t *params) {
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return ZT_STATUS_WRONG_STATE;
    const MutexGuard guard(&channel->lock);
    if (list_empty(&channel->pending)) return ZT_STATUS_TRY_AGAIN;
    const auto *slot = ZT_CONTAINER_OF(channel->pending.next, zt_ptz_cmd_slot_t, link);
    if (client_id != nullptr) *client_id = slot->client_id;
    if (seq != nullptr) *seq = slot->seq;
    if (code != nullptr) *code = slot->code;
    if (params != nullptr) zt_memcpy(params, &slot->params, sizeof *params);
    recycle_oldest_command(channel);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ptz_internal_put_result(zt_ptz_t *ptz, const zt_ptz_result_t *result,
                                       const zt_ptz_params_t *params) {
    if (result == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return ZT_STATUS_WRONG_STATE;
    // Copies: a callback may get at the driver's own records.
    const zt_ptz_result_t copy = *result;
    zt_ptz_params_t block;
    const bool is_private = (copy.code & ZT_PTZ_COMMAND_PRIVATE) != 0;
    const bool tells_others = copy.status == 0 && copy.code == ZT_PTZ_COMMAND_INDEX &&
                              params != nullptr && params->index.operation != ZT_PTZ_INDEX_SILENT;
    if (tells_others) zt_memcpy(&block, params, sizeof block);

    const MutexGuard guard(&channel->lock);
    for_each_client(channel, [&](const zt_ptz_client_slot_t &client) {
        if (client.id == copy.client_id) {
            deliver_result(ptz, client, copy);
            return !is_private;
        }
        if (tells_others) deliver_index(ptz, client, block);
        return true;
    });
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ptz_internal_update_capability(zt_ptz_t *ptz,
                                              const zt_ptz_capability_t *capability) {
    if (capability == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return ZT_STATUS_WRONG_STATE;
    const MutexGuard guard(&channel->lock);
    zt_memcpy(&channel->capability, capability, sizeof channel->capability);
    for_each_client(channel, [ptz](const zt_ptz_client_slot_t &client) {
        zt_ptz_msg_t msg;
        zt_memset(&msg, 0, sizeof msg);
        msg.type = ZT_PTZ_MSG_CAPABILITY;
        client.cb(ptz, &msg, client.user);
        return true;
    });
    return ZT_STATUS_SUCCESS;
}
