// The default capability and the checks of a command against a capability.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_SERVICE_PTZ_VALIDATE_HPP
#define ZT_SRC_SERVICE_PTZ_VALIDATE_HPP

#include "zt/ptz.h"

namespace zt::detail {

// Usual ranges, nothing supported.
void zt_ptz_default_capability(zt_ptz_capability_t *capability);

// Success when the command may be queued, else InvalidArgument. params may be null.
zt_status_t zt_ptz_validate_command(uint32_t code, const zt_ptz_params_t *params,
                                    const zt_ptz_capability_t *capability);

}  // namespace zt::detail

#endif  // ZT_SRC_SERVICE_PTZ_VALIDATE_HPP
