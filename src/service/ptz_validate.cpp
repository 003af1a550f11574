// Which field of a command is checked against which range of the capability: two tables.
// SPDX-License-Identifier: MIT
#include "service/ptz_validate.hpp"

#include <cstddef>
#include <cstring>

#include "zt/memory.h"

static_assert(sizeof(zt_ptz_range_t) == 12 && sizeof(zt_ptz_capability_t) == 336);
static_assert(offsetof(zt_ptz_range_t, supported) == 0);
static_assert(offsetof(zt_ptz_range_t, min) == 4 && offsetof(zt_ptz_range_t, max) == 8);
static_assert(sizeof(zt_ptz_pair_range_t) == 20 && offsetof(zt_ptz_pair_range_t, supported) == 0);
static_assert(offsetof(zt_ptz_pair_range_t, min1) == 4 && offsetof(zt_ptz_pair_range_t, max1) == 8);
static_assert(offsetof(zt_ptz_pair_range_t, min2) == 12 &&
              offsetof(zt_ptz_pair_range_t, max2) == 16);
static_assert(offsetof(zt_ptz_capability_t, first_axis) == 0x000);
static_assert(offsetof(zt_ptz_capability_t, second_axis) == 0x024);
static_assert(offsetof(zt_ptz_capability_t, value) == 0x048);
static_assert(offsetof(zt_ptz_capability_t, reserved1) == 0x06c);
static_assert(offsetof(zt_ptz_capability_t, selected) == 0x070);
static_assert(offsetof(zt_ptz_capability_t, reserved2) == 0x094);
static_assert(offsetof(zt_ptz_capability_t, group_one) == 0x098);
static_assert(offsetof(zt_ptz_capability_t, group_three) == 0x0bc);
static_assert(offsetof(zt_ptz_capability_t, reserved3) == 0x128);
static_assert(offsetof(zt_ptz_capability_t, pair) == 0x12c);
static_assert(offsetof(zt_ptz_capability_t, index_value) == 0x140);
static_assert(offsetof(zt_ptz_capability_t, index_limit) == 0x14c);
static_assert(sizeof(zt_ptz_params_t) == 144);
static_assert(sizeof(zt_ptz_move_t) == 12 && offsetof(zt_ptz_move_t, mode) == 0);
static_assert(offsetof(zt_ptz_move_t, value) == 8);
static_assert(offsetof(zt_ptz_params_t, axes.first) == 0x00);
static_assert(offsetof(zt_ptz_params_t, axes.second.mode) == 0x0c);
static_assert(offsetof(zt_ptz_params_t, axes.second.value) == 0x14);
static_assert(offsetof(zt_ptz_params_t, value.value) == 0x08);
static_assert(offsetof(zt_ptz_params_t, selected.mode) == 0x04);
static_assert(offsetof(zt_ptz_params_t, group.one.mode) == 0x04);
static_assert(offsetof(zt_ptz_params_t, pair.value1) == 0x04);
static_assert(offsetof(zt_ptz_params_t, index.name) == 0x04);
static_assert(offsetof(zt_ptz_params_t, selected.value) == 0x08);
static_assert(offsetof(zt_ptz_params_t, group.one.value) == 0x0c);
static_assert(offsetof(zt_ptz_params_t, group.three) == 0x10);
static_assert(offsetof(zt_ptz_params_t, pair.value2) == 0x08);
static_assert(offsetof(zt_ptz_params_t, index.value) == 0x84);
static_assert(offsetof(zt_ptz_params_t, index.index) == 0x88);

namespace zt::detail {
namespace {

struct DefaultGroup {
    size_t at;  // of three ranges, for modes 1 to 3
    float min[3];
};

// Every default maximum is 1.
constexpr DefaultGroup kDefaultGroups[] = {
    {0x000, {-1, -1, -1}}, {0x024, {-1, -1, -1}}, {0x048, {0, -1, -1}}, {0x070, {0, -1, -1}},
    {0x098, {0, -1, 0}},   {0x0bc, {0, -1, 0}},   {0x0e0, {0, -1, 0}},  {0x104, {0, -1, 0}},
};
constexpr uint32_t kDefaultIndexLimit = 256;

constexpr uint32_t kAnySelector = 0;  // the block's first word is not a selector

struct ModeCheck {
    uint32_t code;
    uint32_t selector;  // the block's first word must be this
    size_t mode_at;     // in the block
    size_t value_at;    // in the block
    size_t group_at;    // in the capability: the ranges for modes 1 to 3
};

// In the order in which they are made; the first that fails decides.
constexpr ModeCheck kModeChecks[] = {
    {ZT_PTZ_COMMAND_AXES, kAnySelector, 0x0c, 0x14, 0x024},
    {ZT_PTZ_COMMAND_AXES, kAnySelector, 0x00, 0x08, 0x000},
    {ZT_PTZ_COMMAND_VALUE, kAnySelector, 0x00, 0x08, 0x048},
    {ZT_PTZ_COMMAND_SELECTED, ZT_PTZ_SELECTED_VALUE, 0x04, 0x08, 0x070},
    {ZT_PTZ_COMMAND_GROUP, ZT_PTZ_GROUP_ONE, 0x04, 0x0c, 0x098},
    {ZT_PTZ_COMMAND_GROUP, ZT_PTZ_GROUP_THREE, 0x10, 0x18, 0x0bc},
    {ZT_PTZ_COMMAND_GROUP, ZT_PTZ_GROUP_THREE, 0x1c, 0x24, 0x0e0},
    {ZT_PTZ_COMMAND_GROUP, ZT_PTZ_GROUP_THREE, 0x28, 0x30, 0x104},
};

template <typename Field>
Field read_at(const void *record, size_t offset) {
    Field field;
    std::memcpy(&field, static_cast<const uint8_t *>(record) + offset, sizeof field);
    return field;
}

// False for a value, or a bound, that is not a number.
bool within(float value, float min, float max) { return min <= value && value <= max; }

bool passes(const ModeCheck &check, const zt_ptz_params_t *params,
            const zt_ptz_capability_t *capability) {
    if (check.selector != kAnySelector && read_at<uint32_t>(params, 0) != check.selector)
        return true;
    const auto mode = read_at<uint32_t>(params, check.mode_at);
    if (mode < ZT_PTZ_MODE_1 || mode > ZT_PTZ_MODE_3) return true;
    const size_t range_at = check.group_at + (mode - ZT_PTZ_MODE_1) * sizeof(zt_ptz_range_t);
    const auto range = read_at<zt_ptz_range_t>(capability, range_at);
    return range.supported != 0 &&
           within(read_at<float>(params, check.value_at), range.min, range.max);
}

bool pair_passes(const zt_ptz_params_t *params, const zt_ptz_pair_range_t &range) {
    if (params->pair.selector != ZT_PTZ_PAIR_VALUES) return true;
    return range.supported != 0 && within(params->pair.value2, range.min2, range.max2) &&
           within(params->pair.value1, range.min1, range.max1);
}

bool index_passes(const zt_ptz_params_t *params, const zt_ptz_capability_t *capability) {
    const zt_ptz_range_t &range = capability->index_value;
    if (params->index.operation == ZT_PTZ_INDEX_VALUE &&
        !within(params->index.value, range.min, range.max)) {
        return false;
    }
    return params->index.index < capability->index_limit;
}

bool all_pass(uint32_t code, const zt_ptz_params_t *params, const zt_ptz_capability_t *capability) {
    if (code == ZT_PTZ_COMMAND_PAIR) return pair_passes(params, capability->pair);
    if (code == ZT_PTZ_COMMAND_INDEX) return index_passes(params, capability);
    for (const ModeCheck &check : kModeChecks) {
        if (check.code == code && !passes(check, params, capability)) return false;
    }
    return true;
}

}  // namespace

void zt_ptz_default_capability(zt_ptz_capability_t *capability) {
    zt_memset(capability, 0, sizeof *capability);
    for (const DefaultGroup &group : kDefaultGroups) {
        for (size_t i = 0; i < 3; ++i) {
            const zt_ptz_range_t range = {0, {}, group.min[i], 1};
            zt_memcpy(reinterpret_cast<uint8_t *>(capability) + group.at + i * sizeof range, &range,
                      sizeof range);
        }
    }
    capability->pair = {0, {}, 0, 1, 0, 1};
    capability->index_value = {0, {}, 0, 1};
    capability->index_limit = kDefaultIndexLimit;
}

zt_status_t zt_ptz_validate_command(uint32_t code, const zt_ptz_params_t *params,
                                    const zt_ptz_capability_t *capability) {
    if (params == nullptr) {
        const bool needed = (code & ZT_PTZ_COMMAND_NEEDS_PARAMS) != 0;
        return needed ? ZT_STATUS_INVALID_ARGUMENT : ZT_STATUS_SUCCESS;
    }
    return all_pass(code, params, capability) ? ZT_STATUS_SUCCESS : ZT_STATUS_INVALID_ARGUMENT;
}

}  // namespace zt::detail
