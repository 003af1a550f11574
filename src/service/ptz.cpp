// The clients' side of the pan-tilt-zoom channel.
// SPDX-License-Identifier: MIT
#include "zt/ptz.h"

#include <atomic>
#include <cstddef>
#include <type_traits>

#include "base/list_ops.hpp"
#include "os/mutex_guard.hpp"
#include "service/ptz_channel.hpp"
#include "service/ptz_validate.hpp"
#include "zt/memory.h"
#include "zt/string.h"

static_assert(std::is_standard_layout_v<zt_ptz_t> && sizeof(zt_ptz_t) == 7 * sizeof(void *));
static_assert(offsetof(zt_ptz_t, init_capability) == 16 && offsetof(zt_ptz_t, release) == 32);
static_assert(offsetof(zt_ptz_t, peek_command) == 40 && offsetof(zt_ptz_t, clear_commands) == 48);
static_assert(sizeof(zt_ptz_result_t) == 40 && offsetof(zt_ptz_result_t, client_id) == 0x0c);
static_assert(offsetof(zt_ptz_result_t, status) == 0x00 && offsetof(zt_ptz_result_t, code) == 0x04);
static_assert(offsetof(zt_ptz_result_t, other) == 0x08 && offsetof(zt_ptz_result_t, data) == 0x10);
static_assert(offsetof(zt_ptz_t, priv) == 0 && offsetof(zt_ptz_t, reserved) == 8);
static_assert(offsetof(zt_ptz_t, command_ready) == 24);
static_assert(offsetof(zt_ptz_msg_t, type) == 0 && offsetof(zt_ptz_msg_t, u.index) == 0x08);
static_assert(sizeof(zt_ptz_msg_t) == 144 && offsetof(zt_ptz_msg_t, u.result) == 0x08);
static_assert(offsetof(zt_ptz_msg_t, u.index.name) == 0x0c);
static_assert(offsetof(zt_ptz_msg_t, u.index.index) == 0x8c);

using namespace zt::detail;

namespace {

// Counters of the process, shared by all channels; a number is never given twice.
constinit std::atomic<uint64_t> g_next_client_id{1};
constinit std::atomic<uint64_t> g_next_seq{1};

uint32_t draw(std::atomic<uint64_t> *counter) {
    return static_cast<uint32_t>(counter->fetch_add(1, std::memory_order_relaxed));
}

zt_list_head_t *peek_command(zt_ptz_t *ptz) {
    const zt_ptz_channel_t *channel = channel_of(ptz);
    return channel != nullptr ? channel->pending.next : nullptr;
}

void clear_commands(zt_ptz_t *ptz) {
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return;
    const MutexGuard guard(&channel->lock);
    while (!list_empty(&channel->pending)) recycle_oldest_command(channel);
}

}  // namespace

namespace zt::detail {

void recycle_oldest_command(zt_ptz_channel_t *channel) {
    auto *slot = ZT_CONTAINER_OF(channel->pending.next, zt_ptz_cmd_slot_t, link);
    list_remove(&slot->link);
    zt_memset(slot, 0, sizeof *slot);
    list_insert_before(&channel->free_cmds, &slot->link);
    --channel->pending_count;
}

zt_ptz_client_slot_t *find_client(zt_ptz_channel_t *channel, uint32_t id) {
    for (zt_list_head_t *p = channel->clients.next; p != &channel->clients; p = p->next) {
        auto *client = ZT_CONTAINER_OF(p, zt_ptz_client_slot_t, link);
        if (client->id == id) return client;
    }
    return nullptr;
}

}  // namespace zt::detail

void zt_ptz_init(zt_ptz_t *ptz) {
    zt_memset(ptz, 0, sizeof *ptz);
    ptz->peek_command = peek_command;
    ptz->clear_commands = clear_commands;
}

void zt_ptz_destroy(zt_ptz_t *ptz) {
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return;
    if (ptz->release != nullptr) ptz->release(ptz);
    ptz->priv = nullptr;
    zt_free(channel->cmd_slots);
    zt_free(channel->client_slots);
    zt_mutex_destroy(&channel->lock);
    zt_free(channel);
}

zt_status_t zt_ptz_register(zt_ptz_t *ptz, uint32_t *client_id, const char *name,
                            zt_ptz_client_cb_t cb, void *user) {
    if (client_id == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return ZT_STATUS_WRONG_STATE;
    const uint32_t id = draw(&g_next_client_id);
    const MutexGuard guard(&channel->lock);
    if (list_empty(&channel->free_clients)) return ZT_STATUS_TRY_AGAIN;

    auto *client = ZT_CONTAINER_OF(channel->free_clients.next, zt_ptz_client_slot_t, link);
    list_remove(&client->link);
    list_insert_before(&channel->clients, &client->link);
    ++channel->client_count;
    client->id = id;
    client->cb = cb;
    client->user = user;
    if (name != nullptr) zt_strncpy(client->name, name, sizeof client->name);
    *client_id = id;
    return ZT_STATUS_SUCCESS;
}

void zt_ptz_unregister(zt_ptz_t *ptz, uint32_t client_id) {
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return;
    const MutexGuard guard(&channel->lock);
    zt_ptz_client_slot_t *client = find_client(channel, client_id);
    if (client == nullptr) return;
    list_remove(&client->link);
    zt_memset(client, 0, sizeof *client);
    list_insert_before(&channel->free_clients, &client->link);
    --channel->client_count;
}

zt_status_t zt_ptz_send_command(zt_ptz_t *ptz, uint32_t client_id, uint32_t code,
                                const zt_ptz_params_t *params, uint32_t *seq) {
    if (params == nullptr && (code & ZT_PTZ_COMMAND_NEEDS_PARAMS) != 0) {
        return ZT_STATUS_INVALID_ARGUMENT;
    }
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return ZT_STATUS_WRONG_STATE;
    const MutexGuard guard(&channel->lock);
    const zt_status_t status = zt_ptz_validate_command(code, params, &channel->capability);
    if (status != ZT_STATUS_SUCCESS) return status;
    // Drawn under the lock, so that numbers grow along the queue.
    const uint32_t drawn = draw(&g_next_seq);
    if (list_empty(&channel->free_cmds)) return ZT_STATUS_TRY_AGAIN;

    auto *slot = ZT_CONTAINER_OF(channel->free_cmds.next, zt_ptz_cmd_slot_t, link);
    list_remove(&slot->link);
    list_insert_before(&channel->pending, &slot->link);
    ++channel->pending_count;
    slot->code = code;
    slot->seq = drawn;
    slot->client_id = client_id;
    if (params != nullptr) zt_memcpy(&slot->params, params, sizeof slot->params);
    if (seq != nullptr) *seq = drawn;
    ptz->command_ready(ptz);
    return ZT_STATUS_SUCCESS;
}

zt_status_t zt_ptz_get_capability(zt_ptz_t *ptz, zt_ptz_capability_t *capability) {
    if (capability == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    zt_memset(capability, 0, sizeof *capability);
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return ZT_STATUS_WRONG_STATE;
    const MutexGuard guard(&channel->lock);
    zt_memcpy(capability, &channel->capability, sizeof *capability);
    return ZT_STATUS_SUCCESS;
}

int32_t zt_ptz_get_register_num(zt_ptz_t *ptz) {
    zt_ptz_channel_t *channel = channel_of(ptz);
    if (channel == nullptr) return ZT_STATUS_WRONG_STATE;
    const MutexGuard guard(&channel->lock);
    return static_cast<int32_t>(channel->client_count);
}

zt_status_t zt_ptz_clear(zt_ptz_t *ptz) {
    if (channel_of(ptz) == nullptr) return ZT_STATUS_WRONG_STATE;
    if (ptz->clear_commands != nullptr) ptz->clear_commands(ptz);
    return ZT_STATUS_SUCCESS;
}
