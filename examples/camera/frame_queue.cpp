// frame_queue.cpp - the bounded queue carries handles, the id pool resolves them.
//
// SPDX-License-Identifier: MIT
#include "frame_queue.hpp"

#include <utility>

#include "run.hpp"

namespace camera {
namespace {

// Beyond the queue's own: one frame being captured and one being encoded.
constexpr uint32_t kInHands = 2;

// A queue carries pointers and follows none, so a handle can travel as one.
void *item_of(int32_t handle) { return reinterpret_cast<void *>(static_cast<intptr_t>(handle)); }
int32_t handle_of(void *item) { return static_cast<int32_t>(reinterpret_cast<intptr_t>(item)); }

}  // namespace

FrameQueue::FrameQueue(uint32_t depth, Dropped dropped)
    : frames_(depth + kInHands), dropped_(std::move(dropped)) {
    const auto count = static_cast<uint32_t>(frames_.size());
    require(zt_queue_create(&queue_, depth), "frame queue");
    require(zt_queue_create(&spares_, count), "spare frames");
    require(zt_id_pool_create(&handles_, count), "frame handles");
    for (Frame &frame : frames_) require(zt_queue_add_tail(&spares_, &frame, 0), "spare frames");
}

FrameQueue::~FrameQueue() {
    zt_id_pool_destroy(&handles_);
    zt_queue_destroy(&spares_);
    zt_queue_destroy(&queue_);
}

Frame *FrameQueue::lend() {
    auto *frame = static_cast<Frame *>(zt_queue_get_head(&spares_, 0));
    if (frame == nullptr) throw std::logic_error("a frame was not given back");
    require(zt_id_pool_alloc(&handles_, frame, &frame->handle), "frame handle");
    return frame;
}

void FrameQueue::push(Frame *frame) {
    require(zt_queue_add_tail_with_discard(&queue_, item_of(frame->handle), discard, this),
            "frame queue");
}

void FrameQueue::discard(zt_queue_t *, void *item, void *context) {
    auto *self = static_cast<FrameQueue *>(context);
    Frame *frame = self->resolve(item);
    self->dropped_(*frame);
    self->give_back(frame);
}

Frame *FrameQueue::pop(int32_t timeout_ms) {
    void *item = zt_queue_get_head(&queue_, timeout_ms);
    return item == nullptr ? nullptr : resolve(item);
}

Frame *FrameQueue::resolve(void *item) {
    void *frame = nullptr;
    if (!zt_id_pool_lookup(&handles_, handle_of(item), &frame)) {
        throw std::logic_error("a frame's handle is stale");
    }
    return static_cast<Frame *>(frame);
}

// The latest spare is lent first: its memory is still in the processor's cache.
void FrameQueue::give_back(Frame *frame) {
    zt_id_pool_free(&handles_, frame->handle);
    require(zt_queue_add_head(&spares_, frame, 0), "spare frames");
}

}  // namespace camera
