// The catalogue both ways, and frames of every length byte at the very end of their memory.
// SPDX-License-Identifier: MIT
#include "zt/hdmi_info_frame.h"

#include "support/test.hpp"

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

// Any bytes, with a right checksum or not, and others that may be the same but for one byte.
ZT_MODEL(HdmiInfoFrame, SizeChecksumAndComparison, 1, 50'000) {
    static const Guarded rooms[2];
    for (std::string frames[2]; random.more();) {
        const uint8_t *bytes[2];
        for (const int i : {0, 1}) {
            std::string &frame = frames[i] = i > 0 && random(8) > 0 ? frames[0] : random.text(31);
            const auto sum = [&] { return std::accumulate(frame.begin(), frame.end(), 0) & 255; };
            if (random(2)) frame[random(frame.size())] ^= 1 << random(8);
            const size_t length = frame[2] & 31;
            frame.resize(std::min<size_t>(length + 4, 31));
            if (random(2)) frame[3] -= sum();
            bytes[i] = reinterpret_cast<uint8_t *>(rooms[i].last(frame));
            EXPECT_EQ(zt_hdmi_info_frame_get_size(bytes[i]), int(frame.size()));
            EXPECT_EQ(zt_hdmi_info_frame_is_valid(bytes[i]), length < 28 && sum() == 0);
            EXPECT_EQ(zt_hdmi_info_frame_calc_checksum(bytes[i]), -sum() & 255);
        }
        EXPECT_EQ(zt_hdmi_info_frame_is_different(bytes[0], bytes[1]), frames[0] != frames[1]);
    }
}
