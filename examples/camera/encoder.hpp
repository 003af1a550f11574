// encoder.hpp - the thread that takes frames off the queue, digests them and watches their timing.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_ENCODER_HPP
#define CAMERA_ENCODER_HPP

#include <atomic>
#include <string>
#include <vector>

#include "capture.hpp"

namespace camera {

// What is kept of each encoded frame; times in microseconds, since the start of the run.
struct EncodedFrame {
    uint64_t sequence;
    uint64_t time_us;
    uint64_t interval_us;  // since the frame before; 0 for the first
    int64_t jitter_us;
    uint32_t queue_depth;         // frames that were still waiting
    int64_t largest_interval_us;  // of the last second
    uint32_t crc32;
};

struct EncoderOptions {
    uint32_t frame_rate;
    uint32_t window_ms;
    uint32_t jitter_limit_ms;
    uint32_t delay_ms;  // makes the encoder slow
};

class Encoder {
  public:
    Encoder(const Run &run, const Picture &picture, Capture &capture, Notices &notices,
            const EncoderOptions &options);
    ~Encoder();
    Encoder(const Encoder &) = delete;
    Encoder &operator=(const Encoder &) = delete;

    void work(Worker &self);            // until drain was called and the queue is empty
    void drain() { draining_ = true; }  // no more frames will come
    std::string statistics() const;     // one line; on any thread

    // The rest is for after the thread's end.
    const std::vector<EncodedFrame> &encoded() const { return encoded_; }
    uint64_t bytes() const { return bytes_; }
    uint32_t crc32() const { return crc32_; }
    std::string md5() const;
    int64_t delta_us() const { return delta_us_; }
    int64_t jitter_us() const { return jitter_us_; }
    uint64_t discontinuities() const { return discontinuities_; }
    const Thumbnail &thumbnail() const { return thumbnail_; }

  private:
    void encode(const Frame &frame);
    void take_time(const Frame &frame, EncodedFrame *record);
    void digest(const Frame &frame, EncodedFrame *record);
    void dawdle(Worker &self) const;

    const Run &run_;
    const Picture &picture_;
    Capture &capture_;
    Notices &notices_;
    EncoderOptions options_;
    std::atomic<bool> draining_{false};

    zt_tsw_t timestamps_{};
    zt_heap_window_t intervals_{};
    zt_md5_ctx_t md5_{};
    uint32_t crc32_ = 0;
    uint64_t bytes_ = 0;
    uint64_t discontinuities_ = 0;
    std::vector<EncodedFrame> encoded_;
    Thumbnail thumbnail_;  // of the latest frame

    // What the statistics line reads while the thread works.
    std::atomic<uint64_t> count_{0};
    std::atomic<int64_t> delta_us_{0}, jitter_us_{0}, largest_interval_us_{0};
};

}  // namespace camera

#endif  // CAMERA_ENCODER_HPP
