// SPDX-License-Identifier: MIT
#include "zt/hex.h"

#include <syslog.h>

#include "support/test.hpp"

static const char kBytes[] = "Hello, world!\n\x7F\xFFZ\x80 ~\xE4\x1F";

static const std::tuple<int32_t, int32_t, int32_t, const char *> kDumps[] = {
    {2, 0, 16, "00000000: 48 65 6c 6c 6f 2c 20 77 6f 72 6c 64 21 0a 7f ff  Hello, world!...\n"},
    {0, 1, 22,
     "6548 6c6c 2c6f 7720 726f 646c 0a21 ff7f  Hello, world!...\n"
     "805a 7e20 1fe4                           Z. ~..\n"},
    {2, 2, 17,
     "00000000: 6c6c6548 77202c6f 646c726f ff7f0a21  Hello, world!...\n"
     "00000010: 5a                                               Z\n"},
    {-1, 3, 8, "77202c6f6c6c6548                   Hello, w\n"},
    {3, -1, 2, "48 65                                            He\n"},
    {0, 4, 4, "48 65 6c 6c                                      Hell\n"},
    {2, 0, 0, ""},
    {2, 0, -5, ""}};

// Prefix type, group width, length and what comes out; the bytes are the last that can be read.
TEST(Hex, PrintsAsTheTableSays) {
    const Guarded room;
    for (const auto &[type, width, length, want] : kDumps) {
        void *at = memcpy(room.last(std::max(length, 0)), kBytes, std::max(length, 0));
        EXPECT_EQ(capture_flushed_stdout([&, t = type, w = width, n = length] { zt_print_hex(0, t, w, at, n); }), want);
    }
    // Three lines come before the end of what can be read.
    EXPECT_DEATH((dup2(2, 1), zt_print_hex(0, 2, 0, room.last(48), INT32_MAX)), "00000020: ");
}

TEST(Hex, PrintsAddressesAndIntoTheSystemLog) {
    const std::string line = "48" + std::string(47, ' ') + "H\n";
    const std::string address = testing::PrintToString(static_cast<const void *>(kBytes)) + ": ";
    EXPECT_EQ(capture_flushed_stdout([] { zt_print_hex(0, 1, 0, kBytes, 1); }), address + line);
    openlog("log", LOG_PERROR, LOG_USER), setlogmask(LOG_MASK(LOG_INFO));
    testing::internal::CaptureStderr();
    for (const int32_t type : {0, 1, 2}) zt_print_hex(-1, type, 0, kBytes, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "log: " + line + "log: " + address + line + "log: 00000000: " + line);
}
