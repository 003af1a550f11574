// capture.hpp - the thread that takes frames at the configured rate.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_CAPTURE_HPP
#define CAMERA_CAPTURE_HPP

#include <atomic>

#include "frame_queue.hpp"
#include "notices.hpp"
#include "run.hpp"
#include "video.hpp"

namespace camera {

class Capture {
  public:
    Capture(const Run &run, const FrameSource &source, Notices &notices, uint32_t frame_rate,
            uint32_t queue_depth);

    void work(Worker &self);  // until the run is being stopped
    FrameQueue &frames() { return frames_; }
    uint64_t produced() const { return produced_; }
    uint64_t dropped() const { return dropped_; }

  private:
    void wait_until(Worker &self, uint64_t due_us) const;
    void drop(const Frame &frame);

    const Run &run_;
    const FrameSource &source_;
    Notices &notices_;
    uint32_t frame_rate_;
    FrameQueue frames_;
    std::atomic<uint64_t> produced_{0};
    std::atomic<uint64_t> dropped_{0};
};

}  // namespace camera

#endif  // CAMERA_CAPTURE_HPP
