/* zt/ptz_internal.h - pan-tilt-zoom commands: the camera driver's side.
 *
 * SPDX-License-Identifier: MIT
 *
 * zt_ptz_init, then set init_capability, command_ready and release in the handle, then create. From then
 * on the driver takes commands, oldest first, whenever command_ready has been called, carries them out
 * on a thread of its own and hands back their results.
 *
 * Memory, threads and failure are as zt/ptz.h says.
 */
#ifndef ZT_PTZ_INTERNAL_H
#define ZT_PTZ_INTERNAL_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/ptz.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Parameters of a channel. */
typedef struct zt_ptz_internal_param_t {
    uint32_t cmd_capacity; /* commands that can be queued; 0 means 16 */
} zt_ptz_internal_param_t;

/* Sets cmd_capacity to 16. */
ZT_API void zt_ptz_internal_get_default_param(zt_ptz_internal_param_t *param);

/* Creates the channel. The driver's init_capability gets a capability with usual ranges in which nothing
 * is supported yet, and completes it.
 * NotInitialized (35): there is a channel already.  InvalidArgument (7): a null argument, or one of the
 * three operations is missing.  OutOfmemory (8): no memory.  Otherwise what init_capability or
 * zt_mutex_init report. A failed creation leaves priv null and has called nothing but init_capability. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ptz_internal_create(zt_ptz_t *ptz,
                                                        const zt_ptz_internal_param_t *param);

/* Takes the oldest command off the queue. Outputs that are null are not wanted.
 * TryAgain (4): nothing is queued.  WrongState (38): no channel. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ptz_internal_get_command(zt_ptz_t *ptz, uint32_t *client_id,
                                                             uint32_t *seq, uint32_t *code,
                                                             zt_ptz_params_t *params);

/* Hands a result to the client that it names, as a ZT_PTZ_MSG_RESULT. When a ZT_PTZ_COMMAND_INDEX has
 * succeeded, with params the command's block and an operation other than ZT_PTZ_INDEX_SILENT, every
 * other client gets a ZT_PTZ_MSG_INDEX; without params nobody else does. Callbacks run before the call
 * returns, once for each client that was registered at its start and still is when its turn comes.
 * InvalidArgument (7): result is null.  WrongState (38): no channel. */
ZT_API zt_status_t zt_ptz_internal_put_result(zt_ptz_t *ptz, const zt_ptz_result_t *result,
                                              const zt_ptz_params_t *params);

/* Replaces the capability and tells every client with a ZT_PTZ_MSG_CAPABILITY. Commands that are queued
 * already are not checked again.
 * InvalidArgument (7): capability is null.  WrongState (38): no channel. */
ZT_API zt_status_t zt_ptz_internal_update_capability(zt_ptz_t *ptz,
                                                     const zt_ptz_capability_t *capability);

#ifdef __cplusplus
}
#endif

#endif /* ZT_PTZ_INTERNAL_H */
