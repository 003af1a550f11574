// info_frames.hpp - the HDMI InfoFrames that a source of this format would send.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_INFO_FRAMES_HPP
#define CAMERA_INFO_FRAMES_HPP

#include <array>
#include <string>
#include <vector>

#include "config.hpp"

namespace camera {

struct InfoFrame {
    std::string name;  // of the kind, in lower case
    std::array<uint8_t, ZT_HDMI_INFO_FRAME_MAX_SIZE> bytes{};

    int size() const { return zt_hdmi_info_frame_get_size(bytes.data()); }
    std::string hex() const;
};

// AVI, audio, SPD and vendor-specific, with 10-bit formats also HDR; each with its checksum.
std::vector<InfoFrame> make_info_frames(const Config &config);

// Prints them; true when every one of them is valid.
bool show_info_frames(const std::vector<InfoFrame> &frames);

}  // namespace camera

#endif  // CAMERA_INFO_FRAMES_HPP
