// ptz_client.hpp - a camera-control client: plays its part of the script and keeps the accounts.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_PTZ_CLIENT_HPP
#define CAMERA_PTZ_CLIENT_HPP

#include <atomic>
#include <string>
#include <vector>

#include "ptz_script.hpp"
#include "run.hpp"

namespace camera {

class PtzClient {
  public:
    PtzClient(const Run &run, zt_ptz_t *channel, const char *name,
              const std::vector<ScriptStep> &script);
    ~PtzClient();
    PtzClient(const PtzClient &) = delete;
    PtzClient &operator=(const PtzClient &) = delete;

    void work(Worker &self);

    // For after the thread's end. Every command that was sent has been refused or has a result.
    const char *name() const { return name_; }
    uint32_t sent() const { return sent_; }
    uint32_t refused() const { return refused_; }
    uint32_t results() const { return results_; }
    uint32_t notices() const { return notices_; }
    uint32_t unanswered() const { return sent_ - refused_ - results_; }
    size_t not_played() const { return steps_.size() - played_; }

  private:
    static void on_message(zt_ptz_t *ptz, const zt_ptz_msg_t *message, void *client);
    void wait(Worker &self, uint32_t ms) const;
    void send(Worker &self, const ScriptStep &step);
    bool await_result(Worker &self, uint32_t expected);

    const Run &run_;
    zt_ptz_t *channel_;
    const char *name_;
    std::vector<ScriptStep> steps_;
    size_t played_ = 0;
    uint32_t id_ = 0;
    zt_event_t answered_{};
    uint32_t sent_ = 0, refused_ = 0;
    // Written by the callback on the driver's thread. The result is complete before the count that
    // announces it has grown.
    zt_ptz_result_t latest_{};
    std::atomic<uint32_t> results_{0}, notices_{0};
};

}  // namespace camera

#endif  // CAMERA_PTZ_CLIENT_HPP
