// The catalogue both ways, and frames of every length byte at the very end of their memory.
// SPDX-License-Identifier: MIT
#include "zt/hdmi_info_frame.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/guarded.hpp"

namespace {

const uint8_t kTypes[] = {0x82, 0x84, 0x83, 0x85, 0x81, 0x04, 0x05, 0x06, 0x0A, 0x86, 0x87};

TEST(HdmiInfoFrame, CatalogueAndItsInverse) {
    std::string names;
    for (unsigned i = 0; i < 256; ++i) {
        const auto byte = static_cast<uint8_t>(i);
        const char *name = zt_hdmi_info_frame_get_name_by_id(byte);
        ASSERT_EQ(name != nullptr, i < 11);
        if (name != nullptr) names += std::string(name) + " ";
        EXPECT_EQ(zt_hdmi_info_frame_get_type_by_id(byte), i < 11 ? kTypes[i] : 0);
        const auto *place = std::find(kTypes, kTypes + 11, byte);
        EXPECT_EQ(zt_hdmi_info_frame_get_id_by_type(byte),
                  place == kTypes + 11 ? -1 : place - kTypes);
    }
    EXPECT_EQ(names, "AVI Audio SPD MS VS ACP ISRC1 ISRC2 GAMUT VBI HDR ");
}

TEST(HdmiInfoFrame, TypesOfEverySetAtEveryCapacity) {
    const Guarded room;
    for (const unsigned capacity : {0u, 1u, 3u, 10u, 11u, 12u, 255u})
        for (uint32_t flags = 0; flags < 0x2000; ++flags) {
            const unsigned limit = std::min(capacity, 11u);
            std::string want;
            for (unsigned id = 0; id < limit; ++id)
                if (flags & (1u << id)) want += static_cast<char>(kTypes[id]);
            const size_t count = want.size();
            if (count < limit) want += '\0';
            auto *types = reinterpret_cast<uint8_t *>(room.last(limit));
            ASSERT_EQ(zt_hdmi_info_frame_get_type_by_flags(flags | 0xFFFFE000, types,
                                                           static_cast<uint8_t>(capacity)),
                      count);
            ASSERT_EQ(std::string(types, types + want.size()), want) << flags << "/" << capacity;
        }
}

TEST(HdmiInfoFrame, SizeChecksumAndComparisonForEveryLengthByte) {
    const Guarded room, other_room;
    std::mt19937 random(2);
    for (unsigned length = 0; length < 256; ++length) {
        SCOPED_TRACE(testing::Message() << "seed 2, length byte " << length);
        const unsigned size = std::min((length & 31) + 4, 31u);
        auto *frame = reinterpret_cast<uint8_t *>(room.last(size));
        auto *other = reinterpret_cast<uint8_t *>(other_room.last(size));
        for (unsigned i = 0; i < size; ++i) frame[i] = static_cast<uint8_t>(random());
        frame[2] = static_cast<uint8_t>(length);
        EXPECT_EQ(zt_hdmi_info_frame_get_size(frame), static_cast<int>(size));
        frame[3] = 0;
        frame[3] = zt_hdmi_info_frame_calc_checksum(frame);
        EXPECT_EQ(zt_hdmi_info_frame_calc_checksum(frame), 0);
        EXPECT_EQ(zt_hdmi_info_frame_is_valid(frame), (length & 31) < 28);
        std::copy(frame, frame + size, other);
        EXPECT_FALSE(zt_hdmi_info_frame_is_different(frame, other));
        for (unsigned i = 0; i < size; ++i) {
            const uint8_t flip = i == 2 ? 0x80 : 0x11;  // the length itself stays in its memory
            other[i] ^= flip;
            EXPECT_TRUE(zt_hdmi_info_frame_is_different(frame, other));
            EXPECT_FALSE(zt_hdmi_info_frame_is_valid(other));
            other[i] ^= flip;
        }
        for (unsigned over = 28; size == 31 && over < 32; ++over) {  // all of them 31 bytes
            other[2] = static_cast<uint8_t>((length & 0xE0) | over);
            EXPECT_EQ(zt_hdmi_info_frame_is_different(frame, other), other[2] != length);
        }
    }
}

}  // namespace
