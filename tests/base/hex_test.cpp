// SPDX-License-Identifier: MIT
#include "zt/hex.h"

#include <syslog.h>

#include "support/test.hpp"

// One line, byte by byte: the groups grow at their front.
static std::string slow_line(std::string_view bytes, int width) {
    const size_t group = bytes.size() % (1 << width) == 0 ? 1 << width : 1;
    std::string text, characters;
    for (const uint8_t byte : bytes) {
        const size_t at = characters.size() % group;
        text.insert(text.size() - 2 * at, {"0123456789abcdef"[byte / 16], "0123456789abcdef"[byte % 16]});
        if (at + 1 == group) text += ' ';
        characters += byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '.';
    }
    text.resize(33 + 16 / group, ' ');
    return text + characters + '\n';
}

// The bytes are the last that can be read.
ZT_MODEL(Hex, PrintsAsTheModelDoes, 1, 3'000) {
    static const Guarded room;
    while (random.more()) {
        const int type = static_cast<int>(random(5)) - 1, width = static_cast<int>(random(6)) - 1;
        const std::string bytes = random.text(random(70));
        const char *at = room.last(bytes);
        std::string want;
        for (size_t i = 0; i < bytes.size(); i += 16) {
            char prefix[99] = "";
            if (type == 1) snprintf(prefix, sizeof prefix, "%p: ", static_cast<const void *>(at + i));
            if (type == 2) snprintf(prefix, sizeof prefix, "%08zx: ", i);
            want += prefix + slow_line(bytes.substr(i, 16), width < 4 ? std::max(width, 0) : 0);
        }
        EXPECT_EQ(capture_flushed_stdout([&] { zt_print_hex(0, type, width, at, int(bytes.size())); }), want);
    }
}

TEST(Hex, PrintsIntoTheSystemLogAndUpToTheLargestLength) {
    const Guarded room;  // of which three lines come before the end of what can be read
    EXPECT_DEATH((dup2(2, 1), zt_print_hex(0, 2, 0, room.last(48), INT32_MAX)), "00000020: ");
    const char bytes[] = "H";
    const std::string line = "48" + std::string(47, ' ') + "H\n";
    const std::string address = testing::PrintToString(static_cast<const void *>(bytes)) + ": ";
    openlog("log", LOG_PERROR, LOG_USER), setlogmask(LOG_MASK(LOG_INFO));
    testing::internal::CaptureStderr();
    for (const int32_t type : {0, 1, 2}) zt_print_hex(-1, type, 0, bytes, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "log: " + line + "log: " + address + line + "log: 00000000: " + line);
}
