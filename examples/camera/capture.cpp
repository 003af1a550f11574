// capture.cpp - a sensor's clock in software.
//
// SPDX-License-Identifier: MIT
#include "capture.hpp"

#include <algorithm>

ZT_LOGGING_CATEGORY_DEFINE(capture, ZT_LOG_LEVEL_INFO);

namespace camera {
namespace {
constexpr uint64_t kSecondUs = 1'000'000;
constexpr uint64_t kLongestWaitMs = 50;  // then the thread shows that it is alive
}  // namespace

Capture::Capture(const Run &run, const FrameSource &source, Notices &notices, uint32_t frame_rate,
                 uint32_t queue_depth)
    : run_(run),
      source_(source),
      notices_(notices),
      frame_rate_(frame_rate),
      frames_(queue_depth, [this](const Frame &frame) { drop(frame); }) {}

void Capture::work(Worker &self) {
    const uint64_t period_us = kSecondUs / frame_rate_;
    uint64_t base_us = run_.now_us();
    uint64_t since_base = 0;  // frames; counted so that no rounding adds up
    for (uint64_t sequence = 0;; ++sequence, ++since_base) {
        uint64_t due_us = base_us + since_base * kSecondUs / frame_rate_;
        wait_until(self, due_us);
        if (run_.stopping()) break;
        // Late by a whole frame or more: the clock starts again, so that no burst makes up for it.
        if (const uint64_t now_us = run_.now_us(); now_us > due_us + period_us) {
            due_us = base_us = now_us;
            since_base = 0;
        }
        Frame *frame = frames_.lend();
        frame->sequence = sequence;
        frame->timestamp_us = due_us;
        frame->data = source_.get(sequence, &frame->buffer);
        ++produced_;
        frames_.push(frame);
    }
    ZT_LOG_INFO(capture, "took %llu frames, %llu were dropped",
                static_cast<unsigned long long>(produced_),
                static_cast<unsigned long long>(dropped_));
}

void Capture::wait_until(Worker &self, uint64_t due_us) const {
    for (;;) {
        self.keep_alive();
        const uint64_t now_us = run_.now_us();
        if (now_us >= due_us || run_.stopping()) return;
        const uint64_t left_ms = (due_us - now_us + 999) / 1000;
        run_.pause(static_cast<int32_t>(std::min(left_ms, kLongestWaitMs)));
    }
}

void Capture::drop(const Frame &frame) {
    ++dropped_;
    ZT_LOG_DEBUG(capture, "the encoder is slow: frame %llu dropped",
                 static_cast<unsigned long long>(frame.sequence));
    notices_.publish(Notice::kDrop);
}

}  // namespace camera
