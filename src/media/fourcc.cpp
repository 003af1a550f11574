// The known four-character codes and their properties.
// SPDX-License-Identifier: MIT
#include "zt/fourcc.h"

namespace {

// The initial values are the answers for an unknown code. Small enough to come back in a register.
struct Properties {
    bool is_rgb = false;
    bool is_packed = true;
    bool is_compressed = false;
    uint8_t bpp = 0;
    uint8_t color_depth = 8;
    uint8_t sample_size = 0;
    uint8_t bit_depth = 0;
};

constexpr Properties rgb(uint8_t bpp, uint8_t depth) {
    return {.is_rgb = true, .bpp = bpp, .color_depth = depth};
}
constexpr Properties packed(uint8_t bpp, uint8_t depth) {
    return {.bpp = bpp, .color_depth = depth};
}
constexpr Properties planar(uint8_t bpp, uint8_t depth) {
    return {.is_packed = false, .bpp = bpp, .color_depth = depth};
}
constexpr Properties compressed() { return {.is_compressed = true}; }
constexpr Properties samples(uint8_t size, uint8_t bit_depth) {
    return {.sample_size = size, .bit_depth = bit_depth};
}

// The parameter's type holds every code to four characters.
consteval uint32_t of(const char (&text)[5]) {
    return ZT_FOURCC(text[0], text[1], text[2], text[3]);
}

// The one place that knows the codes. Code that branches rather than a table that is searched: the
// compiler makes a binary decision of it, without a load.
constexpr Properties properties_of(uint32_t code) {
    // clang-format off
    switch (code) {
        // RGB: bits per pixel, colour depth
        case of("RGBA"): case of("BGRA"): case of("ARGB"): case of("ABGR"): return rgb(32, 8);
        case of("RGB "): case of("BGR "):                                   return rgb(24, 8);
        case of("RGB5"): case of("BGR5"): case of("RGB6"): case of("BGR6"): return rgb(16, 8);
        case of("RG10"): case of("BG10"):                                   return rgb(32, 10);

        // Packed YUV and grey: bits per pixel, colour depth
        case of("AYUV"): case of("UYVA"): case of("VYUA"): case of("v408"): return packed(32, 8);
        case of("YUY2"): case of("YUYV"): case of("YVYU"):
        case of("UYVY"): case of("VYUY"):                                   return packed(16, 8);
        case of("IYU2"): case of("YU24"): case of("v308"):                  return packed(24, 8);
        case of("v210"): case of("XV20"):                                   return packed(24, 10);
        case of("v410"): case of("Y410"): case of("M410"):                  return packed(32, 10);
        case of("XV15"):                                                    return packed(16, 10);
        case of("GREY"): case of("Y8  "): case of("Y800"):                  return packed(8, 8);
        case of("Y16 "):                                                    return packed(16, 16);

        // Planar and semi-planar YUV: bits per pixel, colour depth
        case of("I420"): case of("IYUV"): case of("YV12"):
        case of("NV12"): case of("NV21"):                                   return planar(12, 8);
        case of("I422"): case of("YV16"): case of("NV16"): case of("NV61"): return planar(16, 8);
        case of("NV24"): case of("NV42"):                                   return planar(24, 8);
        case of("P010"):                                                    return planar(24, 10);
        case of("P210"):                                                    return planar(32, 10);
        case of("MV15"):                                                    return planar(15, 10);
        case of("MV20"):                                                    return planar(20, 10);
        case of("MV30"):                                                    return planar(30, 10);

        // Compressed
        case of("H264"): case of("HEVC"): case of("JPEG"):
        case of("M264"): case of("WEHO"):                                   return compressed();

        // Samples: bytes in memory, significant bits (0: floating point)
        case of("S16 "): case of("s16 "): case of("IS16"): case of("is16"): return samples(2, 16);
        case of("S24 "): case of("s24 "): case of("IS24"): case of("is24"): return samples(4, 24);
        case of("S243"): case of("s243"): case of("I243"): case of("i243"): return samples(3, 24);
        case of("S32 "): case of("s32 "): case of("IS32"): case of("is32"): return samples(4, 32);
        case of("F32 "): case of("f32 "): case of("IF32"): case of("if32"): return samples(4, 0);
        case of("F64 "): case of("f64 "): case of("IF64"): case of("if64"): return samples(8, 0);

        default: return {};
    }
    // clang-format on
}

}  // namespace

bool zt_fourcc_is_rgb(uint32_t code) { return properties_of(code).is_rgb; }

bool zt_fourcc_is_packed(uint32_t code) { return properties_of(code).is_packed; }

int zt_fourcc_get_bpp(uint32_t code) { return properties_of(code).bpp; }

int zt_fourcc_get_color_depth(uint32_t code) { return properties_of(code).color_depth; }

bool zt_fourcc_is_compressed(uint32_t code) { return properties_of(code).is_compressed; }

int zt_fourcc_get_sample_size(uint32_t code) { return properties_of(code).sample_size; }

int zt_fourcc_get_bit_depth(uint32_t code) { return properties_of(code).bit_depth; }

void zt_fourcc_get_name(uint32_t code, char *name) {
    for (uint32_t i = 0; i < 4; ++i) name[i] = static_cast<char>(code >> (8 * i));
    name[4] = '\0';
}
