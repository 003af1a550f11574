// Base64 against Python's for every length, and back across line ends.
// SPDX-License-Identifier: MIT
#include "zt/base64.h"

#include "zt/md5.h"

#include "support/test.hpp"

namespace {

std::string encode(const void *data, uint64_t length) {
    static const Guarded room;
    uint64_t needed = 0, written = 0;
    const zt_status_t status = zt_base64_encode(nullptr, 0, &needed, data, length);
    EXPECT_EQ(status, length == 0 ? 0 : 8);
    if (length == 0) return "";
    char *text = room.last(needed);
    EXPECT_EQ(zt_base64_encode(text, needed - 1, &written, data, length), 8);
    EXPECT_EQ(zt_base64_encode(text, needed, &written, data, length), 0);
    EXPECT_EQ(written, strlen(text));
    return text;
}

TEST(Base64, EncodesAsPythonDoes) {
    const Guarded room;
    std::string all;
    for (uint32_t length = 0; length <= 300; ++length) {
        char *data = length % 2 == 0 ? room.last(length) : room.first();
        for (uint32_t i = 0; i < length; ++i) data[i] = static_cast<char>(i * 167 + length * 13);
        all += encode(data, length);
    }
    char digest[33] = {};
    zt_md5_to_hex_string(all.data(), static_cast<uint32_t>(all.size()), digest);
    EXPECT_STREQ(digest, "bc0145c8db339c0c8948c6e44360594a");
    uint64_t needed = 0;
    EXPECT_EQ(zt_base64_encode(nullptr, 0, &needed, "", UINT64_MAX), 8);
    EXPECT_EQ(needed, UINT64_MAX);
}

// Line ends anywhere do no harm; anything else that does not belong there is refused, with nothing
// written. The text ends at an inaccessible page.
TEST(Base64, DecodesAcrossLineEndsAndNothingElse) {
    std::mt19937 random(64);
    const Guarded room;
    const char *const ends[] = {"\n", "\r\n", " \n", "  \r\n"};
    const char *const wrong[] = {" A", "\t", "\r", "-", "\x80", " \r", "===", "=A"};
    for (int round = 0; round < 100'000; ++round) {
        std::string data(1 + random() % 60, 0), bytes(64, 'x');
        for (char &byte : data) byte = static_cast<char>(random());
        std::string text;
        for (const char c : encode(data.data(), data.size())) {
            text += c;
            if (random() % 16 == 0) text += ends[random() % 4];
        }
        text.append(random() % 3, ' ');
        const bool spoilt = random() % 2 == 0;
        if (spoilt) text.insert(random() % 2 == 0 ? 0 : text.size(), wrong[random() % 8]);
        char *source = room.last(text.size());
        std::copy(text.begin(), text.end(), source);
        uint64_t written = 99;
        const zt_status_t status = zt_base64_decode(&bytes[0], 64, &written, source, text.size());
        ASSERT_EQ(status, spoilt ? 7 : 0) << "seed 64: '" << text << "'";
        ASSERT_EQ(written, spoilt ? 99 : data.size());
        ASSERT_EQ(bytes.substr(0, spoilt ? 1 : written), spoilt ? "x" : data);
    }
}

// Text, the size that it asks for, the bytes that it gives.
TEST(Base64, OddTextsHaveTheirAnswers) {
    const struct {
        const char *text;
        uint64_t needed, written;
    } rows[] = {{"QQ", 2, 0}, {"QUJDQ", 4, 3}, {"=", 0, 0}, {"Q=\n= ", 1, 0}, {"QUJDQQ=", 5, 3}};
    for (const auto &[text, size, count] : rows) {
        uint64_t needed = 9, written = 9;
        char bytes[9];
        EXPECT_EQ(zt_base64_decode(nullptr, 9, &needed, text, strlen(text)), 8);
        EXPECT_EQ(zt_base64_decode(bytes, size, &written, text, strlen(text)), 0);
        EXPECT_TRUE(needed == size && written == count) << text << ' ' << needed;
    }
    uint64_t written = 9;
    EXPECT_TRUE(zt_base64_decode(nullptr, 0, &written, " \n\r\n ", 5) == 0 && written == 0);
}

}  // namespace
