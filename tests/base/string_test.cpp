// SPDX-License-Identifier: MIT
#include "zt/string.h"

#include "support/test.hpp"

static size_t g_huge_length = 0;  // unless 0: what zt_strlen says of a text that starts with 'h'
static std::string g_command;     // what the last call of system() was to run

// In place of the library's own and the C library's.
extern "C" size_t zt_strlen(const char *string) {
    return g_huge_length != 0 && *string == 'h' ? g_huge_length : std::strlen(string);
}
#ifndef ZT_FUZZ  // libFuzzer runs commands
extern "C" int system(const char *command) {
    g_command = command;
    return errno = ECHILD, g_command.starts_with("fail") ? -1 : 1 << 8;
}
#endif

// Every byte's letter case; numbers at both ends of their ranges, with errno left as it is.
TEST(String, MapsLettersAndParsesNumbers) {
    for (int byte = 1; byte < 256; ++byte) {
        char text[] = {'-', static_cast<char>(byte), '\0'};
        EXPECT_EQ(zt_strlwr(text)[1], static_cast<char>(std::tolower(byte))) << byte;
        EXPECT_EQ(zt_strupr(text)[1], static_cast<char>(std::toupper(byte))) << byte;
    }
    const std::tuple<const char *, int, int32_t, uint32_t> rows[] = {
        {"99999999999", 11, INT32_MAX, UINT32_MAX}, {"-2147483649", 11, INT32_MIN, UINT32_MAX},
        {"4294967295", 10, INT32_MAX, UINT32_MAX},  {"-18446744073709551615", 21, INT32_MIN, 1},
        {"0x7FFFFFFFg", 10, INT32_MAX, INT32_MAX},  {"z", 0, 0, 0}};
    for (const auto &[text, used, as_signed, as_unsigned] : rows) {
        char *end = nullptr;
        errno = EXDEV;
        EXPECT_EQ(zt_strtol(text, &end, 0), as_signed) << text;
        EXPECT_EQ(zt_strtoul(text, nullptr, 0), as_unsigned) << text;
        EXPECT_TRUE(end == text + used && errno == (used > 20 ? ERANGE : EXDEV)) << text;
    }
}

// Random short texts: their starts and ends; a copy and a replacement in buffers that may be short.
ZT_MODEL(String, WorksOnTextsAsTheModelDoes, 1, 4'000) {
    static const Guarded from, to;
    while (random.more()) {
        const std::string texts[] = {random.text(random(8), "ab"), random.text(random(8), "ab"),
                                     random.text(random(8), "ab")};
        const char *text = texts[0].c_str(), *old_text = texts[1].c_str();
        EXPECT_EQ(zt_str_beginwith(text, old_text), texts[0].starts_with(old_text));
        EXPECT_EQ(zt_str_endwith(std::strcpy(from.first(), text), old_text), texts[0].ends_with(old_text));

        const uint32_t size = random(14), length = texts[0].size(), readable = std::min(size, length + 1);
        const auto *source = static_cast<char *>(std::memcpy(from.last(readable), text, readable));
        std::string want = texts[0].substr(0, size - 1);
        want.resize(size);
        EXPECT_EQ(zt_strncpy(to.last(size), source, size), size > 0 ? ZT_STATUS_SUCCESS : ZT_STATUS_INVALID_ARGUMENT);
        EXPECT_EQ(std::string(to.last(size), size), want);

        const size_t at = texts[0].find(old_text);
        want = texts[0];
        if (at != want.npos) want.replace(at, texts[1].size(), texts[2]);
        const zt_status_t fit = want.size() < size ? ZT_STATUS_SUCCESS : ZT_STATUS_NO_SPACE;
        // The text may be longer than the size allows: only the result must fit.
        char *buffer = std::strcpy(to.last(std::max(size, length + 1)), text);
        EXPECT_EQ(zt_str_replace(buffer, size, old_text, texts[2].c_str()), at == want.npos ? ZT_STATUS_MISMATCH : fit);
        EXPECT_EQ(buffer, fit == ZT_STATUS_SUCCESS ? want : texts[0]);
    }
}

TEST(String, FormatsBeforeReplacingOrRunning) {
    char buffer[512] = "a-b";
    EXPECT_TRUE(zt_strncasecmp(buffer, "A-Bc", 3) == 0 && zt_strncasecmp(buffer, "A-Bc", 4) < 0);
    EXPECT_TRUE(zt_strrchr("-a-", '-')[1] == '\0' && zt_strrchr(buffer, '\0') == buffer + 3);
    for (g_huge_length = UINT32_MAX - 2; g_huge_length <= uint64_t{1} << 32; ++g_huge_length)
        EXPECT_EQ(zt_str_replace(buffer, 512, "-", "huge"), ZT_STATUS_NO_SPACE);
    g_huge_length = 0;
    EXPECT_EQ(zt_str_replace_fmt(buffer, 512, "-", "%256d", 1), ZT_STATUS_NO_SPACE);
    EXPECT_EQ(zt_str_replace_fmt(buffer, 512, "-", "%ls", L"\xD800"), ZT_STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(zt_str_replace_fmt(buffer, 512, "-", "%s!", buffer), ZT_STATUS_SUCCESS);
    EXPECT_STREQ(buffer, "aa-b!b");
    EXPECT_EQ(zt_str_replace_fmt(buffer, 512, "-b", "%255d", 1), ZT_STATUS_SUCCESS);

    EXPECT_TRUE(zt_system("rm -r /%ls", L"\xD800") == ZT_STATUS_UNKNOWN_ERROR && g_command.empty());
    EXPECT_EQ(zt_system("fail %d", 1), ZT_STATUS_NOT_EXIST);
    EXPECT_EQ(zt_system("exit %5000d", 1), ZT_STATUS_SUCCESS);
    EXPECT_EQ(g_command, "exit " + std::string(4090, ' '));
}
