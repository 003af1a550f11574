// ptz_driver.hpp - the camera's side of the PTZ channel: a simulated head and its thread.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_PTZ_DRIVER_HPP
#define CAMERA_PTZ_DRIVER_HPP

#include <atomic>
#include <map>
#include <vector>

#include "config.hpp"
#include "notices.hpp"
#include "ptz_script.hpp"
#include "run.hpp"

namespace camera {

// Moves toward a target, or at a speed, within limits.
class Axis {
  public:
    Axis(float position, float rate) : position_(position), target_(position), rate_(rate) {}
    void request(uint32_t mode, float value, const Limits &limits);
    void tick(float seconds, const Limits &limits);
    float position() const { return position_; }
    float target() const { return speed_ != 0 ? position_ : target_; }

  private:
    float position_, target_;
    float rate_;  // units a second toward a target
    float speed_ = 0;
};

class PtzDriver {
  public:
    struct TrackPoint {
        uint64_t time_us;
        Position position;
    };

    PtzDriver(const Run &run, const Config &config, Notices &notices);
    ~PtzDriver();
    PtzDriver(const PtzDriver &) = delete;
    PtzDriver &operator=(const PtzDriver &) = delete;

    zt_ptz_t *channel() { return &handle_.ptz; }
    void work(Worker &self);              // until finish was called and no command is left
    void finish() { finishing_ = true; }  // no more commands will come

    // For after the thread's end.
    const std::vector<TrackPoint> &track() const { return track_; }

  private:
    struct Handle {
        zt_ptz_t ptz;
        PtzDriver *owner;
    };
    static zt_status_t init_capability(zt_ptz_t *ptz, zt_ptz_capability_t *capability);
    static void command_ready(zt_ptz_t *ptz);
    static void release(zt_ptz_t *ptz);

    const Motion &reach() const { return restricted_ ? config_.restricted : config_.modes[0]; }
    void serve_all();
    zt_status_t execute(uint32_t code, const zt_ptz_params_t &params);
    zt_status_t preset(const zt_ptz_params_t &params);
    zt_status_t restrict(bool on);
    void tick();

    const Run &run_;
    const Config &config_;
    Notices &notices_;
    Handle handle_{};
    zt_event_t wake_{};
    std::atomic<bool> finishing_{false};
    bool restricted_ = false;
    Axis pan_, tilt_, zoom_;
    std::map<uint32_t, Position> presets_;
    uint64_t last_tick_us_ = 0;
    std::vector<TrackPoint> track_;
};

}  // namespace camera

#endif  // CAMERA_PTZ_DRIVER_HPP
