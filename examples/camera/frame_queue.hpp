// frame_queue.hpp - frames on their way from the capture thread to the encoder.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_FRAME_QUEUE_HPP
#define CAMERA_FRAME_QUEUE_HPP

#include <functional>
#include <vector>

#include "zt/base.h"

namespace camera {

struct Frame {
    int32_t handle = 0;         // valid from lend to give_back, never used twice
    uint64_t sequence = 0;      // counts from 0
    uint64_t timestamp_us = 0;  // when the sensor's clock says it was taken
    const uint8_t *data = nullptr;
    std::vector<uint8_t> buffer;  // room for frames that are drawn
};

// A bounded queue that carries handles. A producer never waits: when the queue is full the oldest
// frame gives way and its buffer returns to the spare ones.
class FrameQueue {
  public:
    using Dropped = std::function<void(const Frame &)>;
    FrameQueue(uint32_t depth, Dropped dropped);
    ~FrameQueue();
    FrameQueue(const FrameQueue &) = delete;
    FrameQueue &operator=(const FrameQueue &) = delete;

    Frame *lend();                   // an empty frame; there is always one for one producer
    void push(Frame *frame);         // runs dropped for the frame that had to go, if any
    Frame *pop(int32_t timeout_ms);  // null: none came
    void give_back(Frame *frame);
    uint32_t waiting() { return zt_queue_get_num_avail(&queue_); }

  private:
    Frame *resolve(void *item);
    static void discard(zt_queue_t *queue, void *item, void *context);

    zt_queue_t queue_{};      // the handles of the frames that wait
    zt_queue_t spares_{};     // frames without use
    zt_id_pool_t handles_{};  // handle to frame
    std::vector<Frame> frames_;
    Dropped dropped_;
};

}  // namespace camera

#endif  // CAMERA_FRAME_QUEUE_HPP
