// Every code as its page in the manual has it; one bit away from a known code nothing is known.
// SPDX-License-Identifier: MIT
#include "zt/fourcc.h"

#include "support/test.hpp"

static std::string answers_for(uint32_t code) {
    char name[5], row[99];
    zt_fourcc_get_name(code, name);
    const auto word = [](bool yes) { return yes ? "yes" : "no"; };
    snprintf(row, sizeof row, "| `%s` | %s | %s | %d | %d | %s | %d | %d |", name, word(zt_fourcc_is_rgb(code)),
             word(zt_fourcc_is_packed(code)), zt_fourcc_get_bpp(code), zt_fourcc_get_color_depth(code),
             word(zt_fourcc_is_compressed(code)), zt_fourcc_get_sample_size(code), zt_fourcc_get_bit_depth(code));
    return row;
}

// Any code, known ones, and those that differ from them in one bit.
ZT_MODEL(Fourcc, AnswersAsThePageSays, 1, 100'000) {
    static std::map<uint32_t, std::string> page;
    static std::vector<uint32_t> known;
    std::ifstream file(ZT_DOCS "/fourcc.md");
    for (std::string line; page.size() < 79 && std::getline(file, line);)
        if (line.starts_with("| `")) page[known.emplace_back(ZT_FOURCC(line[3], line[4], line[5], line[6]))] = line;
    EXPECT_EQ(page.size(), 79u);
    while (random.more()) {
        const uint64_t kind = random(66);  // above 63: any code, a known one; else one bit away
        const uint32_t code = kind == 64 ? random(1ull << 32) : known[random(79)] ^ (kind < 64 ? 1u << kind % 32 : 0);
        const auto row = page.find(code);
        const std::string name(reinterpret_cast<const char *>(&code), 4), answers = answers_for(code);
        EXPECT_EQ(answers, row != page.end()
                               ? row->second
                               : "| `" + std::string(name.c_str()) + "` | no | yes | 0 | 8 | no | 0 | 0 |");
    }
}
