// Base64 both ways against a slow model, beside inaccessible pages.
// SPDX-License-Identifier: MIT
#include "zt/base64.h"

#include "format/base64_kernels.hpp"
#include "support/test.hpp"

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Bit by bit.
static std::string slow_encode(const std::string &data) {
    std::string text;
    for (size_t bit = 0, value = 0; bit < 8 * data.size(); text += kAlphabet[value % 64])
        for (const size_t end = bit + 6; bit < end; ++bit)
            value = 2 * value + (bit / 8 < data.size() && data[bit / 8] & 128 >> bit % 8);
    return text.append((4 - text.size() % 4) % 4, '=');
}

// The characters of all lines, what they stand for and the size to ask for; false when they are no base64.
static bool slow_decode(const std::string &text, std::string &bytes, uint64_t &size) {
    std::string all;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line); all += line) {
        if (!lines.eof() && line.ends_with('\r')) line.pop_back();
        line.erase(line.find_last_not_of(' ') + 1);
    }
    const size_t data = std::min(all.find_first_not_of(kAlphabet), all.size()), padding = all.size() - data;
    for (size_t i = 0; i + 4 <= all.size(); i += 4)
        for (size_t k = i; k < i + 3 && all[k + 1] != '='; ++k)
            bytes += static_cast<char>(kAlphabet.find(all[k]) << (2 * (k - i) + 2) |
                                       kAlphabet.find(all[k + 1]) >> (4 - 2 * (k - i)));
    size = all.size() / 4 * 3 + (all.size() % 4 * 6 + 7) / 8 - padding;
    return padding <= 2 && all.find_first_not_of('=', data) == all.npos;
}

// Line ends in a text do no harm; what does not belong there is refused, with nothing written.
ZT_MODEL(Base64, GoesBothWaysAsTheModelDoes, 1, 50'000) {
    static const Guarded from, to;
    uint64_t needed = 0, written = 0;
    while (random.more()) {
        const uint64_t kernel = random(3);  // the best, the second best, ... of those that run here
        zt::detail::g_base64_encode.force(kernel);
        zt::detail::g_base64_decode.force(kernel);
        zt::detail::g_base64_count.force(kernel);
        const std::string data = random.text(random(random(8) < 7 ? 40 : random(32) < 31 ? 301 : 1500));
        const auto place = [&](const std::string &bytes) {
            return random(2) ? from.last(bytes) : std::copy(bytes.begin(), bytes.end(), from.first()) - bytes.size();
        };
        const char *source = place(data);
        std::string text = slow_encode(data), bytes;
        EXPECT_EQ(zt_base64_encode(nullptr, 0, &needed, source, data.size()), data.empty() ? 0 : 8);
        EXPECT_EQ(needed, data.empty() ? 0 : text.size() + 1);
        char *out = to.last(needed);
        if (needed > 0) EXPECT_EQ(zt_base64_encode(out, needed - 1, &written, source, data.size()), 8);
        EXPECT_EQ(zt_base64_encode(out, needed, &written, source, data.size()), 0);
        EXPECT_TRUE(written == text.size() && (needed == 0 || out == text));

        for (uint64_t n = random(8); n > 0; --n)
            text.insert(
                text.size() - random(std::min<size_t>(text.size(), random(2) ? 4 : 2000) + 1),  // often the padding
                random.pick({"\n", "\r\n", " \n", "  \r\n", " ", "  ", "Q", "=", "\t", "\r", "-", "\x80", " \r"}));
        text.resize(text.size() - std::min(text.size(), random(4) == 0 ? random(3) : 0));
        const bool right = slow_decode(text, bytes, needed);
        source = place(text);
        needed = right ? needed : 0, written = 99;
        std::memset(out = to.last(needed), 'x', needed);
        const auto decode = [&](void *room, uint64_t size) {
            return zt_base64_decode(room, size, &written, source, text.size());
        };
        EXPECT_EQ(decode(nullptr, 999), !right ? 7 : text.find_first_not_of(" \r\n") != text.npos ? 8 : 0);
        EXPECT_EQ(written, right ? needed : 99) << text;
        if (right && needed > 0) EXPECT_TRUE(decode(out, needed - 1) == 8 && *out == 'x');
        EXPECT_EQ(decode(right ? out : nullptr, needed), right ? 0 : 7);
        if (right) EXPECT_EQ(std::string(out, written), bytes) << text;
    }
}
