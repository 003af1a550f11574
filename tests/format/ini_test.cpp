// Look-ups in INI texts against a slow model, numbers, odd files, failed allocations.
// SPDX-License-Identifier: MIT
#include "zt/ini.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/alloc_faults.hpp"
#include "support/guarded.hpp"

namespace {

// The value of a key by the rules, line by line; false when there is none.
bool slow_find(const std::string &text, const char *section, const std::string &key,
               std::string *value) {
    bool inside = section == nullptr;
    std::string with_feeds = text;
    for (char &c : with_feeds) c = c == '\r' ? '\n' : c;
    std::istringstream stream(with_feeds);
    for (std::string line; std::getline(stream, line);) {
        line.erase(line.find_last_not_of(" \t") + 1);
        if (line.empty() || strchr("#;/", line[0]) != nullptr) continue;
        if (line[0] == '[' && line.back() == ']') {
            if (inside) return false;
            inside = section != nullptr && line == "[" + std::string(section) + "]";
        } else if (inside && line.rfind(key + "=", 0) == 0) {
            *value = line.substr(line.find('=') + 1);
            if (!value->empty() && value->front() == '"') value->erase(0, 1);
            if (!value->empty() && value->back() == '"') value->pop_back();
            return true;
        }
    }
    return false;
}

TEST(Ini, FindsWhatTheRulesSay) {
    const char *const pieces[] = {"a", "b",  "=", "=",  "\n", "\n", "\r\n", "[a]",  "[b]\n",  "[",
                                  "]", "\"", " ", "\t", "#",  ";",  "/",    "\na=", "\nb=\"", "x"};
    std::mt19937 random(8);
    const Guarded room;
    for (int round = 0; round < 60'000; ++round) {
        std::string text;
        for (uint32_t i = 1 + random() % 30; i > 0; --i)
            text += pieces[random() % std::size(pieces)];
        char *source = room.last(text.size());  // no NUL behind it
        memcpy(source, text.data(), text.size());
        zt_ini_reader_t *reader = nullptr;
        const bool any_line = text.find_first_not_of("\r\n") != std::string::npos;
        ASSERT_EQ(zt_ini_reader_create(&reader, source, static_cast<uint32_t>(text.size())),
                  any_line ? 0 : 7);
        for (int i = 0; i < 8 && any_line; ++i) {
            const char *section = i % 4 == 0 ? nullptr : i % 4 == 1 ? "a" : i % 4 == 2 ? "b" : "";
            const std::string key = i < 4 ? "a" : "b";
            std::string expected;
            const bool found = slow_find(text, section, key, &expected);
            char value[100];
            const auto size = static_cast<int32_t>(expected.size()) + 1;
            for (int again = 0; again < 2; ++again) {  // reading changes nothing
                value[size] = 'x';
                ASSERT_EQ(zt_ini_reader_get_string(reader, section, key.c_str(), value, size),
                          found ? 0 : 16)
                    << "seed 8: " << text;
                if (found) ASSERT_EQ(std::string(value), expected) << "seed 8: " << text;
                ASSERT_EQ(value[size], 'x');
            }
            if (!found) continue;
            strcpy(value, "old");
            ASSERT_EQ(zt_ini_reader_get_string(reader, section, key.c_str(), value, size - 1), 29);
            ASSERT_EQ(
                zt_ini_reader_get_string_default(reader, section, key.c_str(), "d", value, -1), 29);
            ASSERT_STREQ(value, "old");
        }
        zt_ini_read_destroy(reader);
    }
    EXPECT_EQ(alloc_faults::live(), 0);
}

TEST(Ini, NumbersAndDefaults) {
    const std::string text =
        "hex=0x10\noctal=010\ntail=12abc\nword=none\nhuge=99999999999\nminus=-1\n"
        "long=" +
        std::string(127, '7') + "\nlonger=" + std::string(128, '7') +
        "\nyes=true\nYes=TRUE\nlate=truely\neight=12345678\n";
    zt_ini_reader_t *reader = nullptr;
    ASSERT_EQ(zt_ini_reader_create(&reader, text.data(), static_cast<uint32_t>(text.size())), 0);
    const struct {
        const char *key;
        int32_t as_int;
        uint32_t as_uint;
        int64_t as_int64;
        uint64_t as_uint64;
        int as_bool;
    } rows[] = {
        {"hex", 16, 16, 16, 16, 0},
        {"octal", 8, 8, 8, 8, 0},
        {"tail", 12, 12, 12, 12, 0},
        {"word", 0, 0, 0, 0, 0},
        {"huge", INT32_MAX, UINT32_MAX, 99999999999, 99999999999, 5},
        {"minus", -1, UINT32_MAX, -1, UINT64_MAX, 0},
        {"yes", 0, 0, 0, 0, 1},
        {"Yes", 0, 0, 0, 0, 0},
        {"late", 0, 0, 0, 0, 0},
        {"long", INT32_MAX, UINT32_MAX, INT64_MAX, UINT64_MAX, 5},
        {"longer", 5, 5, 5, 5, 5},
        {"missing", 5, 5, 5, 5, 5},
        {"eight", 12345678, 12345678, 12345678, 12345678, 5},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(zt_ini_reader_get_int_default(reader, nullptr, row.key, 5), row.as_int);
        EXPECT_EQ(zt_ini_reader_get_uint_default(reader, nullptr, row.key, 5), row.as_uint);
        EXPECT_EQ(zt_ini_reader_get_int64_default(reader, nullptr, row.key, 5), row.as_int64);
        EXPECT_EQ(zt_ini_reader_get_uint64_default(reader, nullptr, row.key, 5), row.as_uint64);
        for (const bool otherwise : {false, true}) {
            EXPECT_EQ(zt_ini_reader_get_boolean_default(reader, nullptr, row.key, otherwise),
                      row.as_bool == 5 ? otherwise : row.as_bool == 1);
        }
    }
    char value[3] = "ab";
    EXPECT_EQ(zt_ini_reader_get_string_default(reader, nullptr, "long", "xyz", value, 3), 29);
    EXPECT_STREQ(value, "ab");
    EXPECT_EQ(zt_ini_reader_get_string_default(reader, nullptr, "long", "xy", value, 3), 0);
    EXPECT_STREQ(value, "xy");
    EXPECT_EQ(zt_ini_reader_get_int(reader, nullptr, "hex", nullptr), 0);
    zt_ini_read_destroy(reader);
}

TEST(Ini, FilesOfEveryKind) {
    char folder[] = "/tmp/zt_ini_XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string base = folder, file = base + "/file", pipe = base + "/pipe",
                      big = base + "/big";
    std::string lines;
    for (int i = 0; i < 1026; ++i) lines += "  \nk" + std::to_string(i) + "=v\n";
    std::ofstream(file) << lines;
    std::ofstream(base + "/empty");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int keeps_pipe_open = open(pipe.c_str(), O_RDWR);
    std::ofstream(big) << "a=1";
    ASSERT_EQ(truncate(big.c_str(), int64_t{1} << 32), 0);
    const struct {
        std::string path;
        zt_status_t want;
    } rows[] = {{file, 0}, {base + "/empty", 7}, {base + "/missing", 16}, {base, 18}, {pipe, 33},
                {big, 18}, {"/dev/null", 7}};
    for (const auto &row : rows) {
        zt_ini_reader_t *reader = nullptr;
        EXPECT_EQ(zt_ini_reader_create_from_file(&reader, row.path.c_str()), row.want) << row.path;
        EXPECT_EQ(reader != nullptr, row.want == 0);
        if (reader == nullptr) continue;
        EXPECT_EQ(zt_ini_reader_get_int(reader, nullptr, "k1023", nullptr), 0);
        EXPECT_EQ(zt_ini_reader_get_int(reader, nullptr, "k1024", nullptr), 16);
        zt_ini_read_destroy(reader);
    }
    static const std::string *path;
    path = &file;
    EXPECT_EQ(alloc_faults::fail_each([] {
                  zt_ini_reader_t *reader = nullptr;
                  const zt_status_t status = zt_ini_reader_create_from_file(&reader, path->c_str());
                  EXPECT_TRUE((status == 0) == (reader != nullptr) && (status == 0 || status == 8));
                  zt_ini_read_destroy(reader);
              }),
              6u);
    char byte = 0;
    zt_ini_reader_t *reader = nullptr;
    EXPECT_EQ(zt_ini_reader_create(&reader, &byte, UINT32_MAX), 8);
    close(keeps_pipe_open);
    EXPECT_EQ(std::system(("rm -r " + base).c_str()), 0);
}

}  // namespace
