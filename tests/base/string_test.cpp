// SPDX-License-Identifier: MIT
#include "zt/string.h"

#include "support/test.hpp"

static size_t g_huge_length = 0;  // unless 0: what zt_strlen says of a text that starts with 'h'
static std::string g_command;     // what the last call of system() was to run

// In place of the library's own and the C library's.
extern "C" size_t zt_strlen(const char *string) {
    return g_huge_length != 0 && *string == 'h' ? g_huge_length : std::strlen(string);
}
extern "C" int system(const char *command) {
    errno = ECHILD;
    g_command = command;
    return g_command.starts_with("fail") ? -1 : 1 << 8;
}

namespace {

TEST(String, TestsEndsAndMapsLetters) {
    const auto begins = zt_str_beginwith, ends = zt_str_endwith;
    EXPECT_TRUE(begins("ab", "") && begins("ab", "ab") && !begins("ab", "b") && !begins("a", "ab"));
    EXPECT_TRUE(ends("ab", "") && ends("ab", "b") && !ends("ab", "a") && !ends(&"ab"[1], "ab"));
    for (int byte = 1; byte < 256; ++byte) {
        char text[] = {'-', static_cast<char>(byte), '\0'};
        EXPECT_EQ(zt_strlwr(text)[1], static_cast<char>(std::tolower(byte))) << byte;
        EXPECT_EQ(zt_strupr(text)[1], static_cast<char>(std::toupper(byte))) << byte;
    }
    EXPECT_EQ(zt_strlwr(nullptr), nullptr);
}

const struct {
    const char *text;
    int used, error;
    int32_t as_signed;
    uint32_t as_unsigned;
} kNumbers[] = {{"99999999999", 11, EXDEV, INT32_MAX, UINT32_MAX}, {"-2147483649", 11, EXDEV, INT32_MIN, UINT32_MAX},
                {"4294967295", 10, EXDEV, INT32_MAX, UINT32_MAX},  {"-18446744073709551615", 21, ERANGE, INT32_MIN, 1},
                {"0x7FFFFFFFg", 10, EXDEV, INT32_MAX, 2147483647}, {"z", 0, EXDEV, 0, 0}};

TEST(String, ParsesAndSaturates) {
    for (const auto &[text, used, error, as_signed, as_unsigned] : kNumbers) {
        char *end = nullptr;
        errno = EXDEV;
        EXPECT_EQ(zt_strtol(text, &end, 0), as_signed) << text;
        EXPECT_EQ(zt_strtoul(text, nullptr, 0), as_unsigned) << text;
        EXPECT_TRUE(end == text + used && errno == error) << text;
    }
}

TEST(String, CopiesWithinBothBuffers) {
    const Guarded from, to;
    for (uint32_t size = 1; size <= 8; ++size) {
        // Two letters and a NUL, as far as size allows: there is nothing to read behind that.
        char *source = from.last(std::min(size, 3U)), *destination = to.last(size);
        std::memcpy(source, "ss", std::min(size, 3U));
        std::memset(destination, 'd', size);
        EXPECT_EQ(zt_strncpy(destination, source, size), ZT_STATUS_SUCCESS);
        const std::string want("ss\0\0\0\0\0\0", size - 1);
        EXPECT_EQ(std::string(destination, size), want + '\0') << size;
    }
    EXPECT_EQ(zt_strncpy(to.last(0), "x", 0), ZT_STATUS_INVALID_ARGUMENT);
    EXPECT_EQ(zt_strncpy(nullptr, "x", 4), ZT_STATUS_INVALID_ARGUMENT);
}

TEST(String, ReplacesAsTheModelDoes) {
    std::mt19937 random(12);
    const Guarded room;
    for (int step = 0; step < 4000; ++step) {
        std::string texts[3];
        for (std::string &text : texts) {
            for (uint32_t n = random() % 8; n > 0; --n) text += "ab"[random() % 2];
        }
        const char *old_text = texts[1].c_str(), *new_text = texts[2].c_str();
        const size_t at = texts[0].find(old_text), size = random() % 14;
        std::string want = texts[0];
        if (at != want.npos) want.replace(at, texts[1].size(), new_text);
        const zt_status_t fit = want.size() < size ? ZT_STATUS_SUCCESS : ZT_STATUS_NO_SPACE;
        // The text may be longer than the size allows: only the result must fit.
        char *buffer = room.last(std::max(size, texts[0].size() + 1));
        std::strcpy(buffer, texts[0].c_str());
        EXPECT_EQ(zt_str_replace(buffer, static_cast<uint32_t>(size), old_text, new_text),
                  at == want.npos ? ZT_STATUS_MISMATCH : fit);
        EXPECT_EQ(buffer, fit == ZT_STATUS_SUCCESS ? want : texts[0]) << step;
    }
}

TEST(String, FormatsBeforeReplacingOrRunning) {
    char buffer[512] = "a-b";
    for (g_huge_length = UINT32_MAX - 2; g_huge_length <= uint64_t{1} << 32; ++g_huge_length) {
        EXPECT_EQ(zt_str_replace(buffer, 512, "-", "huge"), ZT_STATUS_NO_SPACE);
    }
    g_huge_length = 0;
    EXPECT_EQ(zt_str_replace_fmt(buffer, 512, "-", "%256d", 1), ZT_STATUS_NO_SPACE);
    EXPECT_EQ(zt_str_replace_fmt(buffer, 512, "-", "%ls", L"\xD800"), ZT_STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(zt_str_replace_fmt(buffer, 512, "-", "%s!", buffer), ZT_STATUS_SUCCESS);
    EXPECT_STREQ(buffer, "aa-b!b");
    EXPECT_EQ(zt_str_replace_fmt(buffer, 512, "-b", "%255d", 1), ZT_STATUS_SUCCESS);

    EXPECT_EQ(zt_system("rm -r /%ls", L"\xD800"), ZT_STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(g_command, "");
    EXPECT_EQ(zt_system("fail %d", 1), ZT_STATUS_NOT_EXIST);
    EXPECT_EQ(zt_system("exit %5000d", 1), ZT_STATUS_SUCCESS);
    EXPECT_EQ(g_command, "exit " + std::string(4090, ' '));
}

}  // namespace
