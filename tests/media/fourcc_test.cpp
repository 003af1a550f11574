// Every code as its page in the manual has it; one bit away from a known code nothing is known.
// SPDX-License-Identifier: MIT
#include "zt/fourcc.h"

#include "support/test.hpp"

namespace {

std::string answers_for(uint32_t code) {
    char name[5], row[99];
    zt_fourcc_get_name(code, name);
    const auto word = [](bool yes) { return yes ? "yes" : "no"; };
    snprintf(row, sizeof row, "| `%s` | %s | %s | %d | %d | %s | %d | %d |", name, word(zt_fourcc_is_rgb(code)),
             word(zt_fourcc_is_packed(code)), zt_fourcc_get_bpp(code), zt_fourcc_get_color_depth(code),
             word(zt_fourcc_is_compressed(code)), zt_fourcc_get_sample_size(code), zt_fourcc_get_bit_depth(code));
    return row;
}

TEST(Fourcc, AnswersAsThePageSays) {
    std::map<uint32_t, std::string> page;
    std::ifstream file(ZT_DOCS "/fourcc.md");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("| `")) page[ZT_FOURCC(line[3], line[4], line[5], line[6])] = line;
    EXPECT_EQ(page.size(), 79u);
    for (const auto &[code, row] : page) {
        EXPECT_EQ(answers_for(code), row);
        for (uint32_t other = code ^ 1, bit = 1; bit != 0; bit <<= 1, other = code ^ bit)
            if (!page.contains(other)) EXPECT_TRUE(answers_for(other).ends_with("` | no | yes | 0 | 8 | no | 0 | 0 |"));
    }
}

}  // namespace
