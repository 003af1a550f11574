// ptz_client.cpp - sends one command after the other and waits for each result.
//
// SPDX-License-Identifier: MIT
#include "ptz_client.hpp"

#include <algorithm>
#include <cstring>

ZT_LOGGING_CATEGORY_DEFINE(ptz_client, ZT_LOG_LEVEL_INFO);

namespace camera {
namespace {
constexpr int32_t kIdleMs = 100;  // how long the thread waits before it shows that it is alive
constexpr int32_t kRetryMs = 10;  // the channel's queue is full: a pause, then again
constexpr uint64_t kPatienceUs = 10'000'000;  // for a result, after the run's end
}  // namespace

PtzClient::PtzClient(const Run &run, zt_ptz_t *channel, const char *name,
                     const std::vector<ScriptStep> &script)
    : run_(run), channel_(channel), name_(name) {
    std::copy_if(script.begin(), script.end(), std::back_inserter(steps_),
                 [name](const ScriptStep &step) { return step.client == name; });
    require(zt_event_init(&answered_), "event");
    require(zt_ptz_register(channel_, &id_, name, on_message, this), name);
}

PtzClient::~PtzClient() {
    zt_ptz_unregister(channel_, id_);
    zt_event_deinit(&answered_);
}

void PtzClient::work(Worker &self) {
    for (; played_ < steps_.size() && !run_.stopping(); ++played_) {
        const ScriptStep &step = steps_[played_];
        if (step.wait_ms != 0)
            wait(self, step.wait_ms);
        else
            send(self, step);
    }
    while (!run_.stopping()) wait(self, kIdleMs);  // notices still come
}

void PtzClient::wait(Worker &self, uint32_t ms) const {
    const uint64_t until_us = run_.now_us() + uint64_t{ms} * 1000;
    while (!run_.stopping()) {
        self.keep_alive();
        const uint64_t now_us = run_.now_us();
        if (now_us >= until_us) return;
        run_.pause(
            static_cast<int32_t>(std::min<uint64_t>((until_us - now_us + 999) / 1000, kIdleMs)));
    }
}

void PtzClient::send(Worker &self, const ScriptStep &step) {
    const uint32_t expected = results_ + 1;
    zt_status_t status = ZT_STATUS_TRY_AGAIN;
    while (status == ZT_STATUS_TRY_AGAIN) {
        self.keep_alive();
        status = zt_ptz_send_command(channel_, id_, step.code, &step.params, nullptr);
        if (status != ZT_STATUS_TRY_AGAIN) break;
        if (run_.stopping()) return;
        run_.pause(kRetryMs);
    }
    ++sent_;
    if (status != ZT_STATUS_SUCCESS) {
        ++refused_;
        ZT_LOG_INFO(ptz_client, "%-8s  %-18s  refused: %s", name_, step.text.c_str(),
                    zt_get_status_string(status));
        return;
    }
    if (!await_result(self, expected)) {
        ZT_LOG_ERROR(ptz_client, "%-8s  %-18s  no answer", name_, step.text.c_str());
        return;
    }
    Position position;
    std::memcpy(&position, latest_.data, sizeof position);
    ZT_LOG_INFO(ptz_client, "%-8s  %-18s  %s; pan %.0f, tilt %.0f, zoom %.0f", name_,
                step.text.c_str(),
                latest_.status == 0 ? "done" : zt_get_status_string(latest_.status),
                static_cast<double>(position.pan), static_cast<double>(position.tilt),
                static_cast<double>(position.zoom));
}

// Also after the run's end, so that every command is accounted for.
bool PtzClient::await_result(Worker &self, uint32_t expected) {
    uint64_t stopped_us = 0;
    while (results_ != expected) {
        self.keep_alive();
        zt_event_wait(&answered_, kIdleMs);
        if (!run_.stopping()) continue;
        if (stopped_us == 0) stopped_us = run_.now_us();
        if (run_.now_us() - stopped_us > kPatienceUs) break;
    }
    return results_ == expected;
}

// Runs on the driver's thread, with the channel's lock held.
void PtzClient::on_message(zt_ptz_t *, const zt_ptz_msg_t *message, void *client) {
    auto *self = static_cast<PtzClient *>(client);
    switch (message->type) {
        case ZT_PTZ_MSG_RESULT:
            self->latest_ = message->u.result;
            ++self->results_;
            zt_event_set(&self->answered_);
            break;
        case ZT_PTZ_MSG_INDEX:
            ++self->notices_;
            ZT_LOG_INFO(ptz_client, "%-8s  hears: preset %u %s", self->name_,
                        message->u.index.index,
                        message->u.index.name[0] != '\0' ? message->u.index.name : "recalled");
            break;
        case ZT_PTZ_MSG_CAPABILITY:
            ++self->notices_;
            ZT_LOG_INFO(ptz_client, "%-8s  hears: the ranges have changed", self->name_);
            break;
        default:
            break;
    }
}

}  // namespace camera
