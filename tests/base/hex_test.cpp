// SPDX-License-Identifier: MIT
#include "zt/hex.h"

#include <gtest/gtest.h>

#include <csetjmp>
#include <cstring>
#include <random>
#include <string>

#include "support/capture.hpp"
#include "support/guarded.hpp"
#include "support/syslog_recorder.hpp"

namespace {

// What the dump says, composed the slow way with the C library's formats.
std::string expected_dump(int32_t prefix_type, int32_t group_width, const char *bytes, int length,
                          const std::string &line_start) {
    std::string dump;
    char piece[40];
    for (int at = 0; at < length; at += 16) {
        const int count = std::min(16, length - at);
        int size = group_width >= 1 && group_width <= 3 ? 1 << group_width : 1;
        if (count % size != 0) size = 1;
        const int columns[] = {0, 49, 41, 0, 37, 0, 0, 0, 35};

        std::string line;
        for (int i = 0; i < count; i += size) {
            unsigned long long word = 0;
            std::memcpy(&word, bytes + at + i, static_cast<size_t>(size));
            std::snprintf(piece, sizeof piece, "%s%.*llx", i > 0 ? " " : "", 2 * size, word);
            line += piece;
        }
        line.resize(static_cast<size_t>(columns[size]), ' ');
        for (int i = at; i < at + count; ++i) {
            line += bytes[i] >= 0x20 && bytes[i] < 0x7F ? bytes[i] : '.';
        }

        piece[0] = '\0';
        if (prefix_type == 1) {
            std::snprintf(piece, sizeof piece, "%p: ", static_cast<const void *>(bytes + at));
        }
        if (prefix_type == 2) std::snprintf(piece, sizeof piece, "%.8x: ", at);
        dump += line_start + piece + line + "\n";
    }
    return dump;
}

const struct {
    const char *name, *bytes;
    int32_t group_width, length;
    const char *dump;
} kDumps[] = {
    {"full_line_of_bytes", "Hello, world!\n\0\xff", 0, 16,
     "00000000: 48 65 6c 6c 6f 2c 20 77 6f 72 6c 64 21 0a 00 ff  Hello, world!...\n"},
    {"each_line_has_its_own_groups", "0123456789abcdefZ", 2, 17,
     "00000000: 33323130 37363534 62613938 66656463  0123456789abcdef\n"
     "00000010: 5a                                               Z\n"},
    {"short_line_that_fills_groups", "\1\2\3\4\5\6\7\x80", 3, 8,
     "00000000: 8007060504030201                   ........\n"},
    {"nothing", "x", 0, 0, ""},
    {"negative", "x", 0, -5, ""},
};

TEST(Hex, PrintsAsTheTableSays) {
    for (const auto &row : kDumps) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(capture_flushed_stdout(
                      [&] { zt_print_hex(0, 2, row.group_width, row.bytes, row.length); }),
                  row.dump);
    }
}

TEST(Hex, PrintsWhatTheSlowModelPrints) {
    std::mt19937 random(20);  // NOLINT: the same numbers on every run
    const Guarded room(80);
    for (int step = 0; step < 400; ++step) {
        const int length = static_cast<int>(random() % 76) - 5;
        const auto size = static_cast<size_t>(std::max(length, 0));
        char *bytes = step % 2 == 0 ? room.last(size) : room.first();
        for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(random());
        const auto prefix_type = static_cast<int32_t>(random() % 5) - 1;
        const auto group_width = static_cast<int32_t>(random() % 6) - 1;
        const auto to_syslog = static_cast<int32_t>(random() % 3) - 1;
        SCOPED_TRACE(testing::Message() << step << ": prefix " << prefix_type << " width "
                                        << group_width << " length " << length);
        syslog_recorder::text.clear();
        const std::string printed = capture_flushed_stdout(
            [&] { zt_print_hex(to_syslog, prefix_type, group_width, bytes, length); });
        EXPECT_EQ(to_syslog != 0 ? syslog_recorder::text : printed,
                  expected_dump(prefix_type, group_width, bytes, length, to_syslog ? "<14>" : ""));
        EXPECT_TRUE(to_syslog == 0 || printed.empty());
    }
}

std::jmp_buf g_third_line;

TEST(Hex, StartsOnTheLargestLengthsToo) {
    const std::string bytes(48, 'x');
    for (const int32_t length : {INT32_MAX - 15, INT32_MAX - 14, INT32_MAX}) {
        static int lines;
        lines = 0;
        syslog_recorder::on_message = [] {
            if (++lines == 3) std::longjmp(g_third_line, 1);
        };
        if (setjmp(g_third_line) == 0) zt_print_hex(1, 2, 0, bytes.data(), length);
        EXPECT_EQ(lines, 3) << length;
    }
    syslog_recorder::on_message = nullptr;
}

}  // namespace
