// The JSON writer's exact text, and random documents read back by Python's parser.
// SPDX-License-Identifier: MIT
#include "zt/json_fmt.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string contents(const std::string &path) {
    std::ostringstream all;
    all << std::ifstream(path).rdbuf();
    return all.str();
}

// A writer to a temporary file.
struct Writer : zt_json_fmt_file_t {
    char path[24] = "/tmp/zt_json_XXXXXX";
    Writer() {
        close(mkstemp(path));
        EXPECT_EQ(zt_json_fmt_open_file(this, path), 0);
    }
    ~Writer() {
        zt_json_fmt_close_file(this);
        unlink(path);
    }
    std::string finish() {
        zt_json_fmt_close_file(this);
        zt_json_fmt_add_string(&fmt, nullptr, "a closed writer writes nothing");
        zt_json_fmt_close_file(this);
        return contents(path);
    }
};

TEST(JsonFmt, EveryFormIsAsDocumented) {
    Writer writer;
    zt_json_fmt_t *const fmt = &writer.fmt;
    std::string expected = "{\n";
    zt_json_fmt_open_object(fmt, nullptr);
    for (const char *name : {"n%s", static_cast<const char *>(nullptr)}) {
        const std::string key = name != nullptr ? "\t\t\"n%s\": " : "\t\t";
        expected += name != nullptr ? "\t\"o\": {\n" : ",\n\t\"a\": [\n";
        name != nullptr ? zt_json_fmt_open_object(fmt, "o") : zt_json_fmt_open_array(fmt, "a");
        for (const char *separator : {"", ",\n"}) {
            zt_json_fmt_add_int32(fmt, name, INT32_MIN);
            zt_json_fmt_add_int64(fmt, name, INT64_MIN);
            zt_json_fmt_add_uint32(fmt, name, UINT32_MAX);
            zt_json_fmt_add_uint64(fmt, name, UINT64_MAX);
            zt_json_fmt_add_bool(fmt, name, true);
            zt_json_fmt_add_float(fmt, name, "%.2f", 1.5f);
            zt_json_fmt_add_double(fmt, name, "%0200.1f", 2.0);
            zt_json_fmt_add_string(fmt, name, "50% \"");
            zt_json_fmt_add_blob_b64(fmt, name, "AB", 2);
            zt_json_fmt_open_array(fmt, name);
            zt_json_fmt_close_array(fmt);
            const std::string texts[] = {"-2147483648",
                                         "-9223372036854775808",
                                         "4294967295",
                                         "18446744073709551615",
                                         "true",
                                         "1.50",
                                         std::string(127, '0'),
                                         "\"50% \"\"",
                                         "\"QUI=\"",
                                         "[\n\t\t]"};
            for (const std::string &text : texts) {
                expected += separator + key + text;
                separator = ",\n";
            }
        }
        name != nullptr ? zt_json_fmt_close_object(fmt) : zt_json_fmt_close_array(fmt);
        expected += name != nullptr ? "\n\t}" : "\n\t]";
    }
    zt_json_fmt_close_object(fmt);
    zt_json_fmt_close_object(fmt);  // without an open
    EXPECT_EQ(writer.finish(), expected + "\n}");
    zt_json_fmt_file_t untouched = {};
    EXPECT_EQ(zt_json_fmt_open_file(&untouched, "/nowhere/x"), 13);
}

TEST(JsonFmt, TooDeepIsLeftOut) {
    Writer writer;
    zt_json_fmt_t *const fmt = &writer.fmt;
    std::string expected;
    for (int i = 0; i < 40; ++i) zt_json_fmt_open_array(fmt, nullptr);
    zt_json_fmt_add_blob_b64(fmt, nullptr, "deep", 4);
    for (int i = 0; i < 9; ++i) zt_json_fmt_close_array(fmt);
    zt_json_fmt_add_bool(fmt, nullptr, true);
    for (int i = 0; i < 40; ++i) zt_json_fmt_close_array(fmt);
    for (int i = 0; i < 31; ++i) expected += std::string(i, '\t') + "[\n";
    expected += std::string(31, '\t') + "true";
    for (int i = 30; i >= 0; --i) expected += "\n" + std::string(i, '\t') + "]";
    EXPECT_EQ(writer.finish(), expected);
}

void random_value(zt_json_fmt_t *fmt, const char *name, std::mt19937 &random) {
    const uint32_t kind = fmt->depth < 1 ? 3 : random() % (fmt->depth < 6 ? 6 : 3);
    const std::string bytes(random() % 1200, 'x');
    if (kind == 0) zt_json_fmt_add_int64(fmt, name, static_cast<int32_t>(random()));
    if (kind == 1) zt_json_fmt_add_bool(fmt, name, random() % 2 == 0);
    if (kind == 2) zt_json_fmt_add_blob_b64(fmt, name, bytes.data(), bytes.size());
    if (kind < 3) return;
    const bool object = random() % 2 == 0;
    object ? zt_json_fmt_open_object(fmt, name) : zt_json_fmt_open_array(fmt, name);
    for (uint32_t i = 1 + random() % 5; i > 0; --i) {
        random_value(fmt, object ? std::to_string(i).c_str() : nullptr, random);
    }
    object ? zt_json_fmt_close_object(fmt) : zt_json_fmt_close_array(fmt);
}

// Python parses each document and writes it again, indented by tabs: the same bytes must come out.
TEST(JsonFmt, PythonWritesWhatItReads) {
    std::string command =
        "python3 -c 'import json,sys\n"
        "for p in sys.argv[1:]:\n"
        "  t=open(p).read()\n"
        "  assert json.dumps(json.loads(t),indent=chr(9))==t,p'";
    std::mt19937 random(31);
    std::vector<Writer> writers(60);
    for (Writer &writer : writers) {
        random_value(&writer.fmt, nullptr, random);
        writer.finish();
        command += std::string(" ") + writer.path;
    }
    EXPECT_EQ(std::system(command.c_str()), 0) << "seed 31";
}

}  // namespace
