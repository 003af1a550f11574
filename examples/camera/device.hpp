// device.hpp - one run of the camera: its parts, its threads, and the order in which they end.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_DEVICE_HPP
#define CAMERA_DEVICE_HPP

#include <deque>

#include "capture.hpp"
#include "config.hpp"
#include "encoder.hpp"
#include "info_frames.hpp"
#include "notices.hpp"
#include "options.hpp"
#include "ptz_client.hpp"
#include "ptz_driver.hpp"
#include "run.hpp"
#include "timers.hpp"

namespace camera {

class Device {
  public:
    // What cannot be read or makes no sense is found here, before any thread runs.
    Device(const Options &options, const Config &config, const std::vector<ScriptStep> &script);
    ~Device();
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;

    void play();                 // until the time is up, a signal comes or a thread is overdue
    bool accounted_for() const;  // prints the sums; true when they come out
    void interrupt();            // ends play; may be called by a signal handler

    Options options;
    Config config;
    std::vector<InfoFrame> info_frames;
    const char *ended_by = "timer";
    uint64_t run_us = 0;

    Run run;
    Supervisor supervisor;
    Notices notices;
    FrameSource source;
    Capture capture;
    Encoder encoder;
    PtzDriver driver;
    std::deque<PtzClient> clients;

  private:
    void set_timers();
    void start();
    void wind_down();
    void show_statistics();

    zt_event_t wake_{};
    std::atomic<bool> interrupted_{false};
    bool time_is_up_ = false;
    Timers timers_;
    size_t joined_ = 0;
    std::string polled_;
    std::deque<Worker> workers_;  // capture, encoder, driver, then the clients
};

}  // namespace camera

#endif  // CAMERA_DEVICE_HPP
