// device.cpp - the main thread: timers, watchdog checks, and an orderly end.
//
// SPDX-License-Identifier: MIT
#include "device.hpp"

#include <algorithm>
#include <cstdio>

ZT_LOGGING_CATEGORY_DEFINE(app, ZT_LOG_LEVEL_INFO);

namespace camera {
namespace {

constexpr uint32_t kCheckMs = 50;     // how often the watchdogs are checked
constexpr uint32_t kPollMs = 100;     // how often the monitor polls its notices
constexpr uint32_t kReportMs = 1000;  // how often the statistics are shown
constexpr size_t kServers = 3;        // workers before the clients

EncoderOptions encoder_options(const Options &options, const Config &config) {
    return {config.frame_rate, config.window_ms, config.jitter_limit_ms, options.slow_encoder_ms};
}

unsigned long long number(uint64_t value) { return value; }

}  // namespace

Device::Device(const Options &options_given, const Config &config_read,
               const std::vector<ScriptStep> &script)
    : options(options_given),
      config(config_read),
      info_frames(make_info_frames(config)),
      run(options.fault),
      supervisor(config.watchdog_ms),
      source(config.picture, options.frames),
      capture(run, source, notices, config.frame_rate, config.queue_depth),
      encoder(run, config.picture, capture, notices, encoder_options(options, config)),
      driver(run, config, notices) {
    for (const char *name : kClients) clients.emplace_back(run, driver.channel(), name, script);
    require(zt_event_init(&wake_), "event");
}

// Threads still run only when a later one could not be started: they end, and their destructors join.
Device::~Device() {
    run.stop();
    encoder.drain();
    driver.finish();
    zt_event_deinit(&wake_);
}

void Device::interrupt() {
    interrupted_ = true;
    zt_event_set(&wake_);
}

void Device::play() {
    const Picture &picture = config.picture;
    ZT_LOG_INFO(app, "%s, %ux%u, %s, %u frames of %llu bytes a second, queue of %u",
                options.frames.empty() ? "test pattern" : options.frames.c_str(), picture.width,
                picture.height, picture.name().c_str(), config.frame_rate, number(picture.size),
                config.queue_depth);
    start();
    set_timers();
    while (!time_is_up_ && !interrupted_ && supervisor.expired().empty()) timers_.wait(&wake_);
    if (interrupted_) ended_by = "signal";
    if (!supervisor.expired().empty()) ended_by = "watchdog";
    wind_down();
}

void Device::set_timers() {
    const uint32_t run_ms = options.seconds * 1000;
    timers_.every(kCheckMs, [this] { supervisor.check(); });
    timers_.every(kPollMs, [this] {
        const std::string news = notices.poll();
        if (!news.empty()) polled_ = news;
    });
    timers_.every(std::min(kReportMs, run_ms / 2), [this] { show_statistics(); });
    timers_.once(run_ms, [this] { time_is_up_ = true; });
}

void Device::show_statistics() {
    ZT_LOG_INFO(app, "%.1f s: produced %llu, dropped %llu, waiting %u, %s; monitor saw: %s",
                static_cast<double>(run.now_us()) / 1e6, number(capture.produced()),
                number(capture.dropped()), capture.frames().waiting(), encoder.statistics().c_str(),
                polled_.c_str());
    polled_.clear();
}

void Device::start() {
    workers_.emplace_back(run, supervisor, kCapture, [this](Worker &self) { capture.work(self); });
    workers_.emplace_back(run, supervisor, kEncoder, [this](Worker &self) { encoder.work(self); });
    workers_.emplace_back(run, supervisor, kPtzDriver, [this](Worker &self) { driver.work(self); });
    for (PtzClient &client : clients) {
        workers_.emplace_back(run, supervisor, client.name(),
                              [&client](Worker &self) { client.work(self); });
    }
}

// Sources first, then what they feed: nothing that is under way is lost. A stalled thread goes on
// when the run is stopped, so every join comes to an end.
void Device::wind_down() {
    run.stop();
    if (workers_[0].join()) ++joined_;
    for (size_t i = kServers; i < workers_.size(); ++i) {
        if (workers_[i].join()) ++joined_;
    }
    encoder.drain();
    driver.finish();
    for (size_t i = 1; i < kServers; ++i) {
        if (workers_[i].join()) ++joined_;
    }
    notices.poll();
    run_us = run.now_us();
}

bool Device::accounted_for() const {
    const uint64_t encoded = encoder.encoded().size();
    const bool frames = capture.produced() == capture.dropped() + encoded;
    std::printf("frames: %llu produced, %llu dropped, %llu encoded: %s\n",
                number(capture.produced()), number(capture.dropped()), number(encoded),
                frames ? "accounted for" : "NOT ACCOUNTED FOR");

    uint32_t sent = 0, refused = 0, results = 0, unanswered = 0, heard = 0;
    for (const PtzClient &client : clients) {
        sent += client.sent();
        refused += client.refused();
        results += client.results();
        unanswered += client.unanswered();
        heard += client.notices();
        if (client.not_played() != 0) {
            std::printf("%s: %zu lines of the script not played\n", client.name(),
                        client.not_played());
        }
    }
    std::printf("PTZ: %u commands, %u refused, %u with a result, %u unanswered; %u notices heard\n",
                sent, refused, results, unanswered, heard);

    const bool told = notices.complete();
    std::printf(
        "notices: %llu frame, %llu drop, %llu config; called back %llu times, polled %llu: %s\n",
        number(notices.published(Notice::kFrame)), number(notices.published(Notice::kDrop)),
        number(notices.published(Notice::kConfig)), number(notices.called_back()),
        number(notices.polled()), told ? "accounted for" : "NOT ACCOUNTED FOR");
    std::printf(
        "watchdog: fed %llu times, %s%s\n", number(supervisor.feeds()),
        supervisor.expired().empty() ? "no expiry" : "expired: ", supervisor.expired().c_str());
    std::printf("threads: %zu of %zu joined\n", joined_, workers_.size());
    return frames && unanswered == 0 && told && supervisor.expired().empty() &&
           joined_ == workers_.size();
}

}  // namespace camera
