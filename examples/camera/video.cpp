// video.cpp - sizes come from the FourCC module; what it does not know is the order of the samples.
//
// SPDX-License-Identifier: MIT
#include "video.hpp"

#include <algorithm>

#include "run.hpp"

namespace camera {
namespace {

enum class Arrangement { kPlanar, kSemiPlanar, kPacked };

// The order of the components: plane numbers, places within a chroma pair, or byte offsets within a
// group of packed samples.
struct Format {
    char name[5];
    ColourModel model;
    Arrangement arrangement;
    uint8_t components;
    uint8_t shift_x, shift_y;  // of the chroma
    uint8_t order[4];
};

constexpr auto kRgb = ColourModel::kRgb;
constexpr auto kYuv = ColourModel::kYuv;
constexpr auto kGrey = ColourModel::kGrey;
constexpr auto kPlanar = Arrangement::kPlanar;
constexpr auto kSemi = Arrangement::kSemiPlanar;
constexpr auto kPacked = Arrangement::kPacked;

constexpr Format kFormats[] = {
    {"NV12", kYuv, kSemi, 3, 1, 1, {0, 0, 1}},      {"NV21", kYuv, kSemi, 3, 1, 1, {0, 1, 0}},
    {"P010", kYuv, kSemi, 3, 1, 1, {0, 0, 1}},      {"I420", kYuv, kPlanar, 3, 1, 1, {0, 1, 2}},
    {"IYUV", kYuv, kPlanar, 3, 1, 1, {0, 1, 2}},    {"YV12", kYuv, kPlanar, 3, 1, 1, {0, 2, 1}},
    {"NV16", kYuv, kSemi, 3, 1, 0, {0, 0, 1}},      {"NV61", kYuv, kSemi, 3, 1, 0, {0, 1, 0}},
    {"P210", kYuv, kSemi, 3, 1, 0, {0, 0, 1}},      {"I422", kYuv, kPlanar, 3, 1, 0, {0, 1, 2}},
    {"YV16", kYuv, kPlanar, 3, 1, 0, {0, 2, 1}},    {"NV24", kYuv, kSemi, 3, 0, 0, {0, 0, 1}},
    {"NV42", kYuv, kSemi, 3, 0, 0, {0, 1, 0}},      {"YUYV", kYuv, kPacked, 3, 1, 0, {0, 1, 3}},
    {"YUY2", kYuv, kPacked, 3, 1, 0, {0, 1, 3}},    {"YVYU", kYuv, kPacked, 3, 1, 0, {0, 3, 1}},
    {"UYVY", kYuv, kPacked, 3, 1, 0, {1, 0, 2}},    {"VYUY", kYuv, kPacked, 3, 1, 0, {1, 2, 0}},
    {"GREY", kGrey, kPacked, 1, 0, 0, {0}},         {"Y8  ", kGrey, kPacked, 1, 0, 0, {0}},
    {"Y800", kGrey, kPacked, 1, 0, 0, {0}},         {"RGB ", kRgb, kPacked, 3, 0, 0, {0, 1, 2}},
    {"BGR ", kRgb, kPacked, 3, 0, 0, {2, 1, 0}},    {"RGBA", kRgb, kPacked, 4, 0, 0, {0, 1, 2, 3}},
    {"BGRA", kRgb, kPacked, 4, 0, 0, {2, 1, 0, 3}}, {"ARGB", kRgb, kPacked, 4, 0, 0, {1, 2, 3, 0}},
    {"ABGR", kRgb, kPacked, 4, 0, 0, {3, 2, 1, 0}},
};

// White, yellow, cyan, green, magenta, red, blue and black at 75 %, then the square: R G B A, and Y
// Cb Cr of BT.601 with footroom and headroom.
struct Colour {
    uint8_t rgb[4];
    uint8_t yuv[3];
};
constexpr Colour kColours[] = {
    {{191, 191, 191, 255}, {180, 128, 128}}, {{191, 191, 0, 255}, {162, 44, 142}},
    {{0, 191, 191, 255}, {131, 156, 44}},    {{0, 191, 0, 255}, {112, 72, 58}},
    {{191, 0, 191, 255}, {84, 184, 198}},    {{191, 0, 0, 255}, {65, 100, 212}},
    {{0, 0, 191, 255}, {35, 212, 114}},      {{0, 0, 0, 255}, {16, 128, 128}},
    {{255, 255, 255, 255}, {235, 128, 128}},
};
constexpr uint32_t kBars = 8;
constexpr uint32_t kBarStep = 4, kSquareStep = 6;  // pixels a frame

const Format *find(uint32_t fourcc) {
    for (const Format &format : kFormats) {
        if (fourcc_of(format.name) == fourcc) return &format;
    }
    return nullptr;
}

Component component(const Picture &picture, const Format &format, uint32_t index) {
    const uint32_t bytes = picture.sample_bytes;
    const bool chroma = format.model == kYuv && index > 0;
    const uint8_t sx = chroma ? format.shift_x : uint8_t{0};
    const uint8_t sy = chroma ? format.shift_y : uint8_t{0};
    const uint64_t luma = uint64_t{picture.width} * picture.height * bytes;
    const uint64_t plane_width = picture.width >> sx;
    if (format.arrangement == kPacked) {
        const uint32_t bpp = static_cast<uint32_t>(zt_fourcc_get_bpp(picture.fourcc)) / 8;
        return {format.order[index], uint64_t{picture.width} * bpp, bpp << sx, sx, sy};
    }
    if (!chroma) return {0, plane_width * bytes, bytes, 0, 0};
    if (format.arrangement == kSemi) {
        return {luma + uint64_t{format.order[index]} * bytes, plane_width * 2 * bytes, 2 * bytes,
                sx, sy};
    }
    const uint64_t plane = plane_width * (picture.height >> sy) * bytes;
    return {luma + (format.order[index] - 1) * plane, plane_width * bytes, bytes, sx, sy};
}

// Where a component of a pixel is, from the start of the frame; of two bytes the upper one.
uint64_t offset_of(const Picture &picture, uint32_t index, uint32_t x, uint32_t y) {
    const Component &c = picture.components[index];
    return c.base + (y >> c.shift_y) * c.stride + uint64_t{x >> c.shift_x} * c.step +
           picture.sample_bytes - 1;
}

}  // namespace

std::string Picture::name() const {
    char text[5];
    zt_fourcc_get_name(fourcc, text);
    return text;
}

uint32_t fourcc_of(const std::string &name) {
    if (name.empty() || name.size() > 4) return 0;
    const std::string padded = (name + "   ").substr(0, 4);
    return ZT_FOURCC(padded[0], padded[1], padded[2], padded[3]);
}

Picture lay_out(uint32_t fourcc, uint32_t width, uint32_t height) {
    Picture picture;
    picture.fourcc = fourcc;
    picture.width = width;
    picture.height = height;
    const std::string name = "\"" + picture.name() + "\"";
    if (zt_fourcc_is_compressed(fourcc)) throw BadInput(name + " is compressed");
    if (zt_fourcc_get_bpp(fourcc) == 0) throw BadInput(name + " is no pixel format");
    const Format *format = find(fourcc);
    if (format == nullptr) throw BadInput(name + " is not drawn or read by this program");
    if ((width & format->shift_x) != 0 || (height & format->shift_y) != 0) {
        throw BadInput(name + " needs an even width, and with 4:2:0 an even height");
    }
    picture.size = uint64_t{width} * height * static_cast<uint32_t>(zt_fourcc_get_bpp(fourcc)) / 8;
    picture.sample_bytes = zt_fourcc_get_color_depth(fourcc) > 8 ? 2 : 1;
    picture.model = format->model;
    picture.component_count = format->components;
    for (uint32_t i = 0; i < format->components; ++i) {
        picture.components[i] = component(picture, *format, i);
    }
    return picture;
}

void draw_pattern(const Picture &picture, uint64_t sequence, uint8_t *frame) {
    const uint32_t shift = static_cast<uint32_t>(sequence * kBarStep % picture.width);
    const uint32_t side = std::min(picture.width, picture.height) / 4 + 1;
    const uint32_t left = static_cast<uint32_t>(sequence * kSquareStep % picture.width);
    const uint32_t top = (picture.height - side) / 2;
    for (uint32_t i = 0; i < picture.component_count; ++i) {
        const Component &c = picture.components[i];
        for (uint32_t y = 0; y < picture.height; y += 1U << c.shift_y) {
            const bool square_row = y - top < side;  // unsigned: above the square it is huge
            for (uint32_t x = 0; x < picture.width; x += 1U << c.shift_x) {
                const bool square = square_row && x - left < side;
                const uint32_t bar = (x + shift) % picture.width * kBars / picture.width;
                const Colour &colour = kColours[square ? kBars : bar];
                uint8_t *place = frame + offset_of(picture, i, x, y);
                *place = picture.model == kRgb ? colour.rgb[i] : colour.yuv[i];
                if (picture.sample_bytes == 2) place[-1] = 0;
            }
        }
    }
}

Thumbnail make_thumbnail(const Picture &picture, const uint8_t *frame) {
    Thumbnail small;
    small.width = std::min(picture.width, 96U);
    small.height = std::max(1U, small.width * picture.height / picture.width);
    small.pixels.reserve(size_t{small.width} * small.height);
    const auto value = [&](uint32_t index, uint32_t x, uint32_t y) -> uint32_t {
        return frame[offset_of(picture, index, x, y)];
    };
    for (uint32_t row = 0; row < small.height; ++row) {
        const uint32_t y = row * picture.height / small.height;
        for (uint32_t column = 0; column < small.width; ++column) {
            const uint32_t x = column * picture.width / small.width;
            const uint32_t grey =
                picture.model == kRgb
                    ? (value(0, x, y) * 77 + value(1, x, y) * 150 + value(2, x, y) * 29) / 256
                    : value(0, x, y);
            small.pixels.push_back(static_cast<uint8_t>(grey));
        }
    }
    return small;
}

FrameSource::FrameSource(const Picture &picture, const std::string &clip) : picture_(picture) {
    if (clip.empty()) return;
    const zt_status_t status = zt_mmap_create(&clip_, clip.c_str());
    if (status != ZT_STATUS_SUCCESS) throw BadInput(clip + ": " + zt_get_status_string(status));
    clip_frames_ = clip_.size / picture.size;
    const uint64_t rest = clip_.size % picture.size;
    if (rest == 0) return;
    zt_mmap_destroy(&clip_);
    throw BadInput(clip + ": not a whole number of frames: " + std::to_string(clip_frames_) +
                   " of " + std::to_string(picture.size) + " bytes and " + std::to_string(rest) +
                   " bytes more");
}

const uint8_t *FrameSource::get(uint64_t sequence, std::vector<uint8_t> *buffer) const {
    if (clip_frames_ != 0) {
        return static_cast<const uint8_t *>(clip_.addr) + sequence % clip_frames_ * picture_.size;
    }
    buffer->resize(picture_.size);
    draw_pattern(picture_, sequence, buffer->data());
    return buffer->data();
}

}  // namespace camera
