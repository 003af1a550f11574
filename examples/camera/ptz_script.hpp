// ptz_script.hpp - what the PTZ clients do, line by line, and the commands' meanings.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_PTZ_SCRIPT_HPP
#define CAMERA_PTZ_SCRIPT_HPP

#include <string>
#include <vector>

#include "zt/base.h"

namespace camera {

// The contract between our clients and our driver, where the library leaves it to them.
inline constexpr uint32_t kModeTo = ZT_PTZ_MODE_1;
inline constexpr uint32_t kModeBy = ZT_PTZ_MODE_2;
inline constexpr uint32_t kModeSpeed = ZT_PTZ_MODE_3;
inline constexpr uint32_t kCommandMove = ZT_PTZ_COMMAND_AXES;  // first axis pan, second tilt
inline constexpr uint32_t kCommandZoom = ZT_PTZ_COMMAND_VALUE;
inline constexpr uint32_t kCommandPreset = ZT_PTZ_COMMAND_INDEX;   // name it, or recall it
inline constexpr uint32_t kCommandRestrict = ZT_PTZ_COMMAND_FREE;  // bytes[0]: 1 on, 0 off
inline constexpr uint32_t kCommandPosition = ZT_PTZ_COMMAND_PRIVATE;
inline constexpr uint32_t kPresetRecall = 1;

// Where the camera looks; the first bytes of every result's data.
struct Position {
    float pan, tilt, zoom;
};
static_assert(sizeof(Position) <= sizeof(zt_ptz_result_t::data));

struct ScriptStep {
    std::string client;
    std::string text;      // the line without the client, for the log
    uint32_t wait_ms = 0;  // 0: a command
    uint32_t code = 0;
    zt_ptz_params_t params{};
};

// Throws BadInput with file and line for what it does not understand.
std::vector<ScriptStep> read_script(const std::string &path);

}  // namespace camera

#endif  // CAMERA_PTZ_SCRIPT_HPP
