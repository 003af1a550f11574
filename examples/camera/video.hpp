// video.hpp - raw pictures: their layout by FourCC, a moving test pattern, clips, small grey copies.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_VIDEO_HPP
#define CAMERA_VIDEO_HPP

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "zt/base.h"

namespace camera {

enum class ColourModel { kRgb, kYuv, kGrey };

// Where the samples of one component lie: sample (x, y) is at
// base + (y >> shift_y) * stride + (x >> shift_x) * step.
struct Component {
    uint64_t base;
    uint64_t stride;
    uint32_t step;
    uint8_t shift_x, shift_y;
};

// How a frame of one format and size is laid out.
struct Picture {
    uint32_t fourcc = 0;
    uint32_t width = 0, height = 0;
    uint64_t size = 0;  // bytes of a frame
    ColourModel model = ColourModel::kGrey;
    uint32_t component_count = 0;
    uint32_t sample_bytes = 1;              // 2: the value is in the upper bits, low byte first
    std::array<Component, 4> components{};  // R G B A, or Y Cb Cr, or Y

    std::string name() const;
};

// The code of a name of one to four characters; 0 for another.
uint32_t fourcc_of(const std::string &name);

// The layout, or BadInput with the reason why there is none.
Picture lay_out(uint32_t fourcc, uint32_t width, uint32_t height);

// Colour bars that move to the left, a square that moves to the right: a function of the sequence
// number alone.
void draw_pattern(const Picture &picture, uint64_t sequence, uint8_t *frame);

struct Thumbnail {
    uint32_t width = 0, height = 0;
    std::vector<uint8_t> pixels;  // 8-bit grey
};
Thumbnail make_thumbnail(const Picture &picture, const uint8_t *frame);

// Where frames come from: a raw clip that is played over and over, or the pattern.
class FrameSource {
  public:
    FrameSource(const Picture &picture, const std::string &clip);  // "": the pattern
    ~FrameSource() { zt_mmap_destroy(&clip_); }
    FrameSource(const FrameSource &) = delete;
    FrameSource &operator=(const FrameSource &) = delete;

    uint64_t clip_frames() const { return clip_frames_; }  // 0: the pattern

    // The bytes of a frame: within the mapped clip, or drawn into buffer.
    const uint8_t *get(uint64_t sequence, std::vector<uint8_t> *buffer) const;

  private:
    Picture picture_;
    zt_mmap_t clip_{-1, nullptr, 0};
    uint64_t clip_frames_ = 0;
};

}  // namespace camera

#endif  // CAMERA_VIDEO_HPP
