// The state behind a zt_ptz_t, shared by the clients' and the driver's side.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_SERVICE_PTZ_CHANNEL_HPP
#define ZT_SRC_SERVICE_PTZ_CHANNEL_HPP

#include <cstdint>

#include "zt/list.h"
#include "zt/mutex.h"
#include "zt/ptz.h"

// A command on its way from a client to the driver.
struct zt_ptz_cmd_slot_t {
    zt_list_head_t link;
    uint32_t code;
    zt_ptz_params_t params;
    uint32_t seq;
    uint32_t client_id;
};

struct zt_ptz_client_slot_t {
    zt_list_head_t link;
    uint32_t id;
    zt_ptz_client_cb_t cb;
    void *user;
    char name[64];
};

// Every record is allocated at creation and is on exactly one of the lists ever after.
struct zt_ptz_channel_t {
    zt_mutex_t lock;         // recursive: callbacks run with it held and may call the channel again
    zt_list_head_t pending;  // oldest first
    uint32_t pending_count;
    zt_list_head_t free_cmds;
    uint32_t cmd_capacity;
    zt_ptz_cmd_slot_t *cmd_slots;
    zt_list_head_t clients;  // in order of registration
    uint32_t client_count;
    zt_list_head_t free_clients;
    uint32_t client_capacity;
    zt_ptz_client_slot_t *client_slots;
    zt_ptz_capability_t capability;
};

namespace zt::detail {

// Null while the handle has none.
inline zt_ptz_channel_t *channel_of(const zt_ptz_t *ptz) {
    return ptz != nullptr ? ptz->priv : nullptr;
}

// Takes the oldest command, of which there must be one, off the queue; cleared once copied.
void recycle_oldest_command(zt_ptz_channel_t *channel);

// The registered client with this id, or null. Under the lock.
zt_ptz_client_slot_t *find_client(zt_ptz_channel_t *channel, uint32_t id);

}  // namespace zt::detail

#endif  // ZT_SRC_SERVICE_PTZ_CHANNEL_HPP
