// The catalogue of InfoFrames and the rules of their bytes.
// SPDX-License-Identifier: MIT
#include "zt/hdmi_info_frame.h"

#include <algorithm>
#include <array>

#include "zt/memory.h"

namespace {

struct Kind {
    const char *name;
    uint8_t type;
};

// Row number and id are the same.
constexpr std::array<Kind, ZT_HDMI_INFO_FRAME_COUNT> kKinds = {{
    {"AVI", 0x82},
    {"Audio", 0x84},
    {"SPD", 0x83},
    {"MS", 0x85},
    {"VS", 0x81},
    {"ACP", 0x04},
    {"ISRC1", 0x05},
    {"ISRC2", 0x06},
    {"GAMUT", 0x0A},
    {"VBI", 0x86},
    {"HDR", 0x87},
}};

constexpr uint32_t kLengthByte = 2;
constexpr uint32_t kOverhead = 4;  // three bytes of header and the checksum

// May come out as more than the longest frame.
uint32_t size_in_header(const uint8_t *frame) { return (frame[kLengthByte] & 0x1Fu) + kOverhead; }

uint32_t size_of(const uint8_t *frame) {
    return std::min<uint32_t>(size_in_header(frame), ZT_HDMI_INFO_FRAME_MAX_SIZE);
}

uint8_t sum_of(const uint8_t *frame) {
    uint32_t sum = 0;
    for (uint32_t i = 0; i < size_of(frame); ++i) sum += frame[i];
    return static_cast<uint8_t>(sum);
}

}  // namespace

uint8_t zt_hdmi_info_frame_get_type_by_id(uint8_t id) {
    return id < kKinds.size() ? kKinds[id].type : uint8_t{0};
}

const char *zt_hdmi_info_frame_get_name_by_id(uint8_t id) {
    return id < kKinds.size() ? kKinds[id].name : nullptr;
}

int zt_hdmi_info_frame_get_id_by_type(uint8_t type) {
    for (uint32_t id = 0; id < kKinds.size(); ++id) {
        if (kKinds[id].type == type) return static_cast<int>(id);
    }
    return -1;
}

uint8_t zt_hdmi_info_frame_get_type_by_flags(uint32_t flags, uint8_t *types, uint8_t capacity) {
    const uint8_t limit = std::min<uint8_t>(capacity, ZT_HDMI_INFO_FRAME_COUNT);
    uint8_t count = 0;
    for (uint8_t id = 0; id < limit; ++id) {
        if ((flags >> id & 1) != 0) types[count++] = kKinds[id].type;
    }
    if (count < limit) types[count] = 0;
    return count;
}

int zt_hdmi_info_frame_get_size(const uint8_t *frame) { return static_cast<int>(size_of(frame)); }

bool zt_hdmi_info_frame_is_valid(const uint8_t *frame) {
    return size_in_header(frame) <= ZT_HDMI_INFO_FRAME_MAX_SIZE && sum_of(frame) == 0;
}

bool zt_hdmi_info_frame_is_different(const uint8_t *first, const uint8_t *second) {
    // First, so that nothing is read behind the end of the shorter one.
    if (size_in_header(first) != size_in_header(second)) return true;
    return zt_memcmp(first, second, size_of(first)) != 0;
}

uint8_t zt_hdmi_info_frame_calc_checksum(const uint8_t *frame) {
    return static_cast<uint8_t>(-sum_of(frame));
}
