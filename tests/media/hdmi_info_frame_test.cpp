// The catalogue both ways, and frames of every length byte at the very end of their memory.
// SPDX-License-Identifier: MIT
#include "zt/hdmi_info_frame.h"

#include "support/test.hpp"

namespace {

TEST(HdmiInfoFrame, CatalogueAndSets) {
    const std::string types = "\x82\x84\x83\x85\x81\x04\x05\x06\x0A\x86\x87";
    std::string names, found;
    for (int i = 0; i < 256; ++i) {
        const char *name = zt_hdmi_info_frame_get_name_by_id(static_cast<uint8_t>(i));
        names += name != nullptr ? name : "-";
        found += static_cast<char>(zt_hdmi_info_frame_get_type_by_id(static_cast<uint8_t>(i)));
        EXPECT_EQ(zt_hdmi_info_frame_get_id_by_type(static_cast<uint8_t>(i)),
                  static_cast<int>(types.find(static_cast<char>(i))));  // npos is -1, too
    }
    EXPECT_EQ(names, "AVIAudioSPDMSVSACPISRC1ISRC2GAMUTVBIHDR" + std::string(245, '-'));
    EXPECT_EQ(found, types + std::string(245, '\0'));
    for (uint32_t set = 0; set < 0x10000; ++set) {
        const uint8_t capacity = set % 14, limit = std::min<uint8_t>(capacity, 11);
        std::string want, got(limit + 2u, '#');
        for (unsigned id = 0; id < limit; ++id) want.append(set >> id & 1, types[id]);
        auto *out = reinterpret_cast<uint8_t *>(got.data());
        ASSERT_EQ(zt_hdmi_info_frame_get_type_by_flags(set, out, capacity), want.size()) << set;
        want.append(want.size() < limit, '\0').resize(got.size(), '#');
        ASSERT_EQ(got, want) << set;
    }
}

TEST(HdmiInfoFrame, SizeChecksumAndComparison) {
    const Guarded rooms[2];
    for (int length = 0; length < 256; ++length) {
        const int size = std::min(length % 32 + 4, 31);
        auto *frame = reinterpret_cast<uint8_t *>(rooms[0].last(size));
        auto *other = reinterpret_cast<uint8_t *>(rooms[1].last(size));
        for (int i = 0; i < size; ++i) frame[i] = static_cast<uint8_t>(i == 2 ? length : i * 37);
        EXPECT_EQ(zt_hdmi_info_frame_get_size(frame), size);
        frame[3] += zt_hdmi_info_frame_calc_checksum(frame);
        EXPECT_EQ(zt_hdmi_info_frame_is_valid(frame), length % 32 < 28);
        auto *shortest = reinterpret_cast<uint8_t *>(memcpy(rooms[1].last(4), frame, 4));
        shortest[2] &= 0xE0;
        EXPECT_EQ(zt_hdmi_info_frame_is_different(frame, shortest), length % 32 != 0);
        for (int i = 0; i < size; ++i) {
            memcpy(other, frame, size);
            EXPECT_FALSE(zt_hdmi_info_frame_is_different(frame, other));
            other[i] ^= i == 2 ? 0x80 : 0x11;  // the length itself stays in its memory
            EXPECT_TRUE(zt_hdmi_info_frame_is_different(frame, other));
            EXPECT_FALSE(zt_hdmi_info_frame_is_valid(other)) << length;
        }
    }
}

}  // namespace
