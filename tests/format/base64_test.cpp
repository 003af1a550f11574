// Base64 against Python's for every length, and decoding of mangled text against a slow grammar.
// SPDX-License-Identifier: MIT
#include "zt/base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bitset>
#include <cstring>
#include <random>
#include <string>

#include "support/guarded.hpp"
#include "zt/md5.h"

namespace {

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encode(const void *data, uint64_t length) {
    const Guarded room;
    uint64_t needed = 0, written = 0;
    const zt_status_t status = zt_base64_encode(nullptr, 0, &needed, data, length);
    EXPECT_EQ(status, length == 0 ? 0 : 8);
    if (length == 0) return "";
    char *text = room.last(needed);
    EXPECT_EQ(zt_base64_encode(text, needed - 1, &written, data, length), 8);
    EXPECT_EQ(text[0], 0) << "nothing is written when the room is too small";
    EXPECT_EQ(zt_base64_encode(text, needed, &written, data, length), 0);
    EXPECT_EQ(written, strlen(text));
    return text;
}

TEST(Base64, EncodesAsPythonDoesAndDecodesBack) {
    const Guarded room, texts;
    std::string all;
    for (uint32_t length = 0; length <= 300; ++length) {
        char *data = length % 2 == 0 ? room.last(length) : room.first();
        for (uint32_t i = 0; i < length; ++i) data[i] = static_cast<char>(i * 167 + length * 13);
        const std::string text = encode(data, length);
        all += text;
        char *source = texts.last(text.size());
        std::copy(text.begin(), text.end(), source);
        std::string bytes(length, 0);
        uint64_t written = 0;
        ASSERT_EQ(zt_base64_decode(&bytes[0], length, &written, source, text.size()), 0);
        ASSERT_EQ(bytes, std::string(data, written));
        ASSERT_EQ(written, length);
    }
    char digest[33] = {};
    zt_md5_to_hex_string(all.data(), static_cast<uint32_t>(all.size()), digest);
    EXPECT_STREQ(digest, "bc0145c8db339c0c8948c6e44360594a");
    uint64_t needed = 0;
    EXPECT_EQ(zt_base64_encode(nullptr, 0, &needed, "", UINT64_MAX), 8);
    EXPECT_EQ(needed, UINT64_MAX);
}

// The text without blanks before line ends and without line ends, or "!" when something else is wrong.
std::string significant(std::string text) {
    text += '\n';
    std::string all;
    for (size_t end; !text.empty(); text.erase(0, end + 1)) {
        end = text.find('\n');
        std::string line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r' && end + 1 < text.size()) line.pop_back();
        while (!line.empty() && line.back() == ' ') line.pop_back();
        all += line;
    }
    const size_t padding = std::count(all.begin(), all.end(), '=');
    const size_t data = all.find_first_not_of(kAlphabet);
    return padding > 2 || (data != std::string::npos && data + padding != all.size()) ? "!" : all;
}

TEST(Base64, DecodesWhatTheGrammarAllows) {
    std::mt19937 random(64);
    const Guarded room;
    const char *const pieces[] = {"QUJD", "QQ", "QUI=", "/+9w", "=",    " ", "\n",
                                  "\r\n", "\r", "\t",   "-",    "\x80", "x", "QUJDQUJDQUJDQUJD"};
    for (int round = 0; round < 200'000; ++round) {
        std::string text;
        for (uint32_t i = random() % 6; i > 0; --i)
            text += pieces[random() % (random() % 3 ? 8 : 14)];
        const std::string wanted = significant(text);
        uint64_t written = 99, needed = 99;
        char bytes[99] = {};
        char *source = room.last(text.size());
        std::copy(text.begin(), text.end(), source);
        const zt_status_t status = zt_base64_decode(bytes, 98, &written, source, text.size());
        ASSERT_EQ(status, wanted == "!" ? 7 : 0) << "seed 64: '" << text << "'";
        if (status != 0) {
            ASSERT_EQ(written, 99u);
            ASSERT_EQ(bytes[0], 0);
            continue;
        }
        std::string bits, mine;  // six for each character, eight for each byte of a whole group
        for (const char c : wanted) {
            bits += std::bitset<6>(c == '=' ? 0 : kAlphabet.find(c)).to_string();
        }
        const size_t n = wanted.size(), whole = n / 4 * 4;
        for (size_t at = 0; at < whole * 6; at += 8) {
            mine += static_cast<char>(std::bitset<8>(bits, at, 8).to_ulong());
        }
        mine.resize(mine.size() - std::count(wanted.begin(), wanted.begin() + whole, '='));
        ASSERT_EQ(std::string(bytes, written), mine) << "'" << text << "'";
        const uint64_t asked = (6 * n + 7) / 8 - std::count(wanted.begin(), wanted.end(), '=');
        ASSERT_EQ(zt_base64_decode(nullptr, 98, &needed, text.data(), text.size()), n ? 8 : 0);
        ASSERT_EQ(needed, n ? asked : 0);
    }
}

}  // namespace
