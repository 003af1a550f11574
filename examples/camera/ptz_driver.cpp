// ptz_driver.cpp - takes commands off the channel, moves the simulated head, answers.
//
// SPDX-License-Identifier: MIT
#include "ptz_driver.hpp"

#include <algorithm>
#include <cmath>

ZT_LOGGING_CATEGORY_DEFINE(ptz_driver, ZT_LOG_LEVEL_INFO);

namespace camera {
namespace {

constexpr int32_t kTickMs = 50;
constexpr float kHeadRate = 180;  // degrees a second
constexpr float kZoomRate = 10;

void publish_range(const Limits &limits, zt_ptz_range_t *range) {
    range->supported = 1;
    range->min = limits.min;
    range->max = limits.max;
}

void publish_motion(const Motion &motion, uint32_t mode, zt_ptz_capability_t *capability) {
    publish_range(motion.pan, &capability->first_axis[mode - 1]);
    publish_range(motion.tilt, &capability->second_axis[mode - 1]);
    publish_range(motion.zoom, &capability->value[mode - 1]);
}

float within(float value, const Limits &limits) {
    return std::min(std::max(value, limits.min), limits.max);
}

bool contains(const Motion &motion, const Position &position) {
    return position.pan == within(position.pan, motion.pan) &&
           position.tilt == within(position.tilt, motion.tilt) &&
           position.zoom == within(position.zoom, motion.zoom);
}

}  // namespace

void Axis::request(uint32_t mode, float value, const Limits &limits) {
    if (mode == kModeTo) target_ = value;
    if (mode == kModeBy) target_ = within(target() + value, limits);
    if (mode == kModeSpeed) target_ = position_;
    speed_ = mode == kModeSpeed ? value : 0;
}

void Axis::tick(float seconds, const Limits &limits) {
    const float furthest = rate_ * seconds;
    const float step =
        speed_ != 0 ? speed_ * seconds : within(target_ - position_, {-furthest, furthest});
    position_ = within(position_ + step, limits);
}

PtzDriver::PtzDriver(const Run &run, const Config &config, Notices &notices)
    : run_(run),
      config_(config),
      notices_(notices),
      pan_(within(0, config.modes[0].pan), kHeadRate),
      tilt_(within(0, config.modes[0].tilt), kHeadRate),
      zoom_(config.modes[0].zoom.min, kZoomRate) {
    require(zt_event_init(&wake_), "event");
    zt_ptz_init(&handle_.ptz);
    handle_.owner = this;
    handle_.ptz.init_capability = init_capability;
    handle_.ptz.command_ready = command_ready;
    handle_.ptz.release = release;
    zt_ptz_internal_param_t param;
    zt_ptz_internal_get_default_param(&param);
    require(zt_ptz_internal_create(&handle_.ptz, &param), "PTZ channel");
}

PtzDriver::~PtzDriver() {
    zt_ptz_destroy(&handle_.ptz);
    zt_event_deinit(&wake_);
}

zt_status_t PtzDriver::init_capability(zt_ptz_t *ptz, zt_ptz_capability_t *capability) {
    const Config &config = ZT_CONTAINER_OF(ptz, Handle, ptz)->owner->config_;
    for (uint32_t mode = kModeTo; mode <= kModeSpeed; ++mode) {
        publish_motion(config.modes[mode - 1], mode, capability);
    }
    capability->index_limit = config.presets;
    return ZT_STATUS_SUCCESS;
}

// Runs on the client's thread: the driver's own does the work.
void PtzDriver::command_ready(zt_ptz_t *ptz) {
    zt_event_set(&ZT_CONTAINER_OF(ptz, Handle, ptz)->owner->wake_);
}

void PtzDriver::release(zt_ptz_t *) { ZT_LOG_DEBUG(ptz_driver, "the channel is closed"); }

void PtzDriver::work(Worker &self) {
    last_tick_us_ = run_.now_us();
    for (;;) {
        self.keep_alive();
        const bool last =
            finishing_;  // read first: what was sent before it was set is still served
        zt_event_wait(&wake_, last ? 0 : kTickMs);
        serve_all();
        tick();
        if (last) return;
    }
}

void PtzDriver::serve_all() {
    uint32_t client = 0, sequence = 0, code = 0;
    zt_ptz_params_t params;
    while (zt_ptz_internal_get_command(&handle_.ptz, &client, &sequence, &code, &params) ==
           ZT_STATUS_SUCCESS) {
        zt_ptz_result_t result{};
        result.status = execute(code, params);
        result.code = code;
        result.other = sequence;
        result.client_id = client;
        const Position position = {pan_.target(), tilt_.target(), zoom_.target()};
        zt_memcpy(result.data, &position, sizeof position);
        ZT_LOG_DEBUG(ptz_driver, "command %u, code 0x%x: %s", sequence, code,
                     zt_get_status_string(result.status));
        zt_ptz_internal_put_result(&handle_.ptz, &result, &params);
    }
}

// The channel has checked the values against what the driver has published.
zt_status_t PtzDriver::execute(uint32_t code, const zt_ptz_params_t &params) {
    switch (code) {
        case kCommandMove:
            pan_.request(params.axes.first.mode, params.axes.first.value, reach().pan);
            tilt_.request(params.axes.second.mode, params.axes.second.value, reach().tilt);
            return ZT_STATUS_SUCCESS;
        case kCommandZoom:
            zoom_.request(params.value.mode, params.value.value, reach().zoom);
            return ZT_STATUS_SUCCESS;
        case kCommandPreset:
            return preset(params);
        case kCommandRestrict:
            return restrict(params.bytes[0] != 0);
        case kCommandPosition:
            return ZT_STATUS_SUCCESS;  // every result carries the position
        default:
            return ZT_STATUS_UNSUPPORTED;
    }
}

zt_status_t PtzDriver::preset(const zt_ptz_params_t &params) {
    const auto &block = params.index;
    if (block.operation == ZT_PTZ_INDEX_NAME) {
        presets_[block.index] = {pan_.target(), tilt_.target(), zoom_.target()};
        return ZT_STATUS_SUCCESS;
    }
    if (block.operation != kPresetRecall) return ZT_STATUS_UNSUPPORTED;
    const auto found = presets_.find(block.index);
    if (found == presets_.end()) return ZT_STATUS_NOT_EXIST;
    if (!contains(reach(), found->second)) return ZT_STATUS_OUT_OF_RANGE;
    pan_.request(kModeTo, found->second.pan, reach().pan);
    tilt_.request(kModeTo, found->second.tilt, reach().tilt);
    zoom_.request(kModeTo, found->second.zoom, reach().zoom);
    return ZT_STATUS_SUCCESS;
}

zt_status_t PtzDriver::restrict(bool on) {
    zt_ptz_capability_t capability;
    zt_status_t status = zt_ptz_get_capability(&handle_.ptz, &capability);
    if (status != ZT_STATUS_SUCCESS) return status;
    restricted_ = on;
    publish_motion(reach(), kModeTo, &capability);
    status = zt_ptz_internal_update_capability(&handle_.ptz, &capability);
    notices_.publish(Notice::kConfig);
    return status;
}

// Every pass leaves a point of the track.
void PtzDriver::tick() {
    const uint64_t now_us = run_.now_us();
    const float seconds = static_cast<float>(now_us - last_tick_us_) / 1e6F;
    last_tick_us_ = now_us;
    pan_.tick(seconds, reach().pan);
    tilt_.tick(seconds, reach().tilt);
    zoom_.tick(seconds, reach().zoom);
    track_.push_back({now_us, {pan_.position(), tilt_.position(), zoom_.position()}});
}

}  // namespace camera
