// The properties column by column, as lists of codes; everything around the known codes is unknown.
// SPDX-License-Identifier: MIT
#include "zt/fourcc.h"

#include <gtest/gtest.h>

#include <random>
#include <string_view>

namespace {

// The value that the list with this code is for, or the default. Codes in a list take 5 characters.
struct List {
    int value;
    std::string_view codes;
};
template <size_t n>
int value_in(const List (&lists)[n], std::string_view name, int otherwise) {
    for (const List &list : lists)
        for (size_t at = 0; at < list.codes.size(); at += 5)
            if (list.codes.substr(at, 4) == name) return list.value;
    return otherwise;
}

const List kRgb[] = {{1, "RGBA|BGRA|ARGB|ABGR|RGB |BGR |RGB5|BGR5|RGB6|BGR6|RG10|BG10"}};
const List kPlanar[] = {
    {0, "I420|IYUV|YV12|NV12|NV21|I422|YV16|NV16|NV61|NV24|NV42|P010|P210|MV15|MV20|MV30"}};
const List kCompressed[] = {{1, "H264|HEVC|JPEG|M264|WEHO"}};
const List kBpp[] = {
    {8, "GREY|Y8  |Y800"},
    {12, "I420|IYUV|YV12|NV12|NV21"},
    {15, "MV15"},
    {16, "RGB5|BGR5|RGB6|BGR6|YUY2|YUYV|YVYU|UYVY|VYUY|XV15|Y16 |I422|YV16|NV16|NV61"},
    {20, "MV20"},
    {24, "RGB |BGR |IYU2|YU24|v308|v210|XV20|NV24|NV42|P010"},
    {30, "MV30"},
    {32, "RGBA|BGRA|ARGB|ABGR|RG10|BG10|AYUV|UYVA|VYUA|v408|v410|Y410|M410|P210"},
};
const List kDepth[] = {{10, "RG10|BG10|v210|v410|Y410|M410|XV15|XV20|P010|P210|MV15|MV20|MV30"},
                       {16, "Y16 "}};
const List kSampleSize[] = {{2, "S16 |s16 |IS16|is16"},
                            {3, "S243|s243|I243|i243"},
                            {4, "S24 |s24 |IS24|is24|S32 |s32 |IS32|is32|F32 |f32 |IF32|if32"},
                            {8, "F64 |f64 |IF64|if64"}};
const List kBitDepth[] = {{16, kSampleSize[0].codes},
                          {24, "S24 |s24 |IS24|is24|S243|s243|I243|i243"},
                          {32, "S32 |s32 |IS32|is32"}};

void expect_as_listed(uint32_t code) {
    char name[6] = "?????";
    zt_fourcc_get_name(code, name);
    const std::string_view text(name, 4);
    SCOPED_TRACE(testing::Message() << "code " << code << " '" << text << "'");
    EXPECT_EQ(ZT_FOURCC(name[0], name[1], name[2], name[3]), code);
    EXPECT_EQ(std::string_view(name + 4, 2), std::string_view("\0", 2));
    EXPECT_EQ(zt_fourcc_is_rgb(code), value_in(kRgb, text, 0));
    EXPECT_EQ(zt_fourcc_is_packed(code), value_in(kPlanar, text, 1));
    EXPECT_EQ(zt_fourcc_is_compressed(code), value_in(kCompressed, text, 0));
    EXPECT_EQ(zt_fourcc_get_bpp(code), value_in(kBpp, text, 0));
    EXPECT_EQ(zt_fourcc_get_color_depth(code), value_in(kDepth, text, 8));
    EXPECT_EQ(zt_fourcc_get_sample_size(code), value_in(kSampleSize, text, 0));
    EXPECT_EQ(zt_fourcc_get_bit_depth(code), value_in(kBitDepth, text, 0));
}

TEST(Fourcc, AnswersAsListedAndDefaultsElsewhere) {
    int known = 0;
    const auto walk = [&](const auto &lists) {
        for (const List &list : lists)
            for (size_t at = 0; at < list.codes.size(); at += 5, ++known) {
                const char *c = &list.codes[at];
                const uint32_t code = ZT_FOURCC(c[0], c[1], c[2], c[3]);
                expect_as_listed(code);
                for (uint32_t bit = 0; bit < 32; ++bit) expect_as_listed(code ^ (1u << bit));
            }
    };
    walk(kBpp), walk(kCompressed), walk(kSampleSize);
    EXPECT_EQ(known, 79);
    std::mt19937 random(1);
    for (int i = 0; i < 10'000; ++i) expect_as_listed(static_cast<uint32_t>(random()));
    EXPECT_EQ(ZT_FOURCC('N', 'V', '1', '2'), 0x3231564Eu);
    expect_as_listed(0);
}

}  // namespace
