// config.hpp - the configuration file.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_CONFIG_HPP
#define CAMERA_CONFIG_HPP

#include <array>
#include <cstdint>
#include <string>

#include "video.hpp"

namespace camera {

struct Limits {
    float min = 0, max = 0;
};

// What pan, tilt and zoom may be asked for in one mode.
struct Motion {
    Limits pan, tilt, zoom;
};

struct Config {
    Picture picture;
    uint32_t frame_rate = 0;
    uint32_t queue_depth = 0;
    uint32_t window_ms = 0;
    uint32_t jitter_limit_ms = 0;
    int32_t watchdog_ms = 0;
    uint32_t presets = 0;
    std::array<Motion, 3> modes;  // 1 to 3
    Motion restricted;            // in place of mode 1
};

// Reads the file and sets the log levels that it asks for. Throws BadInput with one line that names
// file, section and key.
Config read_config(const std::string &path);

}  // namespace camera

#endif  // CAMERA_CONFIG_HPP
