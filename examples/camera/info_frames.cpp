// info_frames.cpp - payloads by CEA-861 and the HDMI specification; sizes, kinds and checksums by
// the library.
//
// SPDX-License-Identifier: MIT
#include "info_frames.hpp"

#include <algorithm>
#include <cstdio>

namespace camera {
namespace {

constexpr uint32_t kHeader = 4;  // payload bytes are counted from 1, behind the checksum

struct Mode {
    uint32_t width, height, rate;
    uint8_t code;
};
constexpr Mode kModes[] = {
    {640, 480, 60, 1},    {720, 480, 60, 3},    {720, 576, 50, 18},   {1280, 720, 24, 60},
    {1280, 720, 25, 61},  {1280, 720, 30, 62},  {1280, 720, 50, 19},  {1280, 720, 60, 4},
    {1920, 1080, 24, 32}, {1920, 1080, 25, 33}, {1920, 1080, 30, 34}, {1920, 1080, 50, 31},
    {1920, 1080, 60, 16}, {3840, 2160, 24, 93}, {3840, 2160, 25, 94}, {3840, 2160, 30, 95},
    {3840, 2160, 50, 96}, {3840, 2160, 60, 97},
};

uint8_t video_code(const Config &config) {
    for (const Mode &mode : kModes) {
        if (mode.width == config.picture.width && mode.height == config.picture.height &&
            mode.rate == config.frame_rate) {
            return mode.code;
        }
    }
    return 0;  // no mode with a number
}

// RGB, 4:2:2, 4:4:4, 4:2:0. There is no grey: it goes out as 4:4:4.
uint8_t colour_space(const Picture &picture) {
    if (picture.model == ColourModel::kRgb) return 0;
    if (picture.model == ColourModel::kGrey) return 2;
    const Component &chroma = picture.components[1];
    if (chroma.shift_y != 0) return 3;
    return chroma.shift_x != 0 ? 1 : 2;
}

InfoFrame start(uint8_t id, uint8_t version, uint8_t length) {
    InfoFrame frame;
    frame.name = zt_hdmi_info_frame_get_name_by_id(id);
    zt_strlwr(frame.name.data());
    if (id == ZT_HDMI_INFO_FRAME_VS) frame.name = "vendor";
    frame.bytes[0] = zt_hdmi_info_frame_get_type_by_id(id);
    frame.bytes[1] = version;
    frame.bytes[2] = length;
    return frame;
}

InfoFrame avi(const Config &config) {
    InfoFrame frame = start(ZT_HDMI_INFO_FRAME_AVI, 2, 13);
    const Picture &picture = config.picture;
    const bool wide = picture.width * 3 > picture.height * 4;
    const bool high_definition = picture.height >= 720;
    uint8_t *payload = frame.bytes.data() + kHeader;
    payload[0] = static_cast<uint8_t>(colour_space(picture) << 5 | 1 << 4);  // active format given
    payload[1] = static_cast<uint8_t>((wide ? 2 : 1) << 4 | 8);              // as the picture is
    if (picture.model != ColourModel::kRgb) payload[1] |= high_definition ? 2 << 6 : 1 << 6;
    if (picture.model == ColourModel::kRgb) payload[2] = 2 << 2;  // full range
    payload[3] = video_code(config);
    return frame;
}

InfoFrame audio() {
    InfoFrame frame = start(ZT_HDMI_INFO_FRAME_AUDIO, 1, 10);
    frame.bytes[kHeader] = 1;  // two channels; the rest as in the stream's own header
    return frame;
}

InfoFrame product() {
    InfoFrame frame = start(ZT_HDMI_INFO_FRAME_SPD, 1, 25);
    zt_memcpy(&frame.bytes[kHeader], "example", 7);     // vendor, 8 bytes
    zt_memcpy(&frame.bytes[kHeader + 8], "camera", 6);  // product, 16 bytes
    frame.bytes[kHeader + 24] = 5;                      // a video camera
    return frame;
}

InfoFrame vendor() {
    InfoFrame frame = start(ZT_HDMI_INFO_FRAME_VS, 1, 4);
    frame.bytes[kHeader] = 0x03;  // HDMI's own number, 00-0C-03, low byte first
    frame.bytes[kHeader + 1] = 0x0C;
    return frame;  // no stereo and no extended resolution
}

InfoFrame dynamic_range() {
    InfoFrame frame = start(ZT_HDMI_INFO_FRAME_HDR, 1, 26);
    frame.bytes[kHeader] = 3;  // hybrid log-gamma; the static metadata is unknown
    return frame;
}

}  // namespace

std::string InfoFrame::hex() const {
    std::string text;
    for (int i = 0; i < size(); ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", bytes[static_cast<size_t>(i)]);
        text += digits;
    }
    return text;
}

std::vector<InfoFrame> make_info_frames(const Config &config) {
    std::vector<InfoFrame> frames = {avi(config), audio(), product(), vendor()};
    if (zt_fourcc_get_color_depth(config.picture.fourcc) == 10) frames.push_back(dynamic_range());
    for (InfoFrame &frame : frames) {
        frame.bytes[3] = zt_hdmi_info_frame_calc_checksum(frame.bytes.data());
    }
    return frames;
}

bool show_info_frames(const std::vector<InfoFrame> &frames) {
    bool all_valid = true;
    for (const InfoFrame &frame : frames) {
        const bool valid = zt_hdmi_info_frame_is_valid(frame.bytes.data()) &&
                           zt_hdmi_info_frame_get_id_by_type(frame.bytes[0]) >= 0;
        std::printf("InfoFrame %s, %d bytes, %s\n", frame.name.c_str(), frame.size(),
                    valid ? "valid" : "NOT VALID");
        zt_print_hex(0, ZT_HEX_PREFIX_OFFSET, ZT_HEX_GROUP_8BIT, frame.bytes.data(), frame.size());
        all_valid = all_valid && valid;
    }
    return all_valid;
}

}  // namespace camera
