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

TEST(JsonFmt, TooDeepIsLeftOutAndBlobsStream) {
    Writer writer;
    zt_json_fmt_t *const fmt = &writer.fmt;
    std::vector<uint8_t> blob(385);
    for (int i = 0; i < 40; ++i) zt_json_fmt_open_array(fmt, nullptr);
    zt_json_fmt_add_blob_b64(fmt, nullptr, blob.data(), blob.size());
    for (int i = 0; i < 9; ++i) zt_json_fmt_close_array(fmt);
    zt_json_fmt_add_blob_b64(fmt, nullptr, blob.data(), blob.size());
    for (int i = 0; i < 40; ++i) zt_json_fmt_close_object(fmt);
    const std::string text = writer.finish();
    EXPECT_EQ(std::count(text.begin(), text.end(), '['), 31);
    EXPECT_EQ(std::count(text.begin(), text.end(), '}'), 31);
    const std::string innermost =
        "\n" + std::string(31, '\t') + "\"" + std::string(514, 'A') + "==\"\n";
    EXPECT_NE(text.find(innermost), std::string::npos) << text;
}

// Writes a random document and, beside it, what the parser must find in it, in order.
void random_value(zt_json_fmt_t *fmt, const char *name, std::mt19937 &random, std::string *found) {
    const uint32_t kind = fmt->depth < 1 ? 3 : random() % (fmt->depth < 6 ? 5 : 3);
    const std::string text(kind == 2 ? random() % 1200 : 0, 'x');
    if (kind == 0) zt_json_fmt_add_int32(fmt, name, -7);
    if (kind == 1) zt_json_fmt_add_string(fmt, name, "text");
    if (kind == 2) zt_json_fmt_add_blob_b64(fmt, name, text.data(), text.size());
    *found += kind == 0   ? "-7 "
              : kind == 1 ? "text "
              : kind == 3 ? "{ "
              : kind == 4 ? "[ "
                          : std::to_string((text.size() + 2) / 3 * 4) + "c ";
    if (kind < 3) return;
    kind == 3 ? zt_json_fmt_open_object(fmt, name) : zt_json_fmt_open_array(fmt, name);
    for (uint32_t i = random() % 6; i > 0; --i) {
        const std::string key = "k" + std::to_string(i);
        random_value(fmt, kind == 3 ? key.c_str() : nullptr, random, found);
    }
    kind == 3 ? zt_json_fmt_close_object(fmt) : zt_json_fmt_close_array(fmt);
}

TEST(JsonFmt, AParserReadsBackWhatWasWritten) {
    constexpr char kWalk[] =
        "import json,sys\n"
        "def walk(v):\n"
        " if isinstance(v,(dict,list)):\n"
        "  print('{' if isinstance(v,dict) else '[',end=' ')\n"
        "  for x in (v.values() if isinstance(v,dict) else v): walk(x)\n"
        " else:\n"
        "  blob=isinstance(v,str) and v!='text'\n"
        "  print(str(len(v))+'c' if blob else v,end=' ')\n"
        "for p in sys.argv[1:]: walk(json.load(open(p)))\n";
    if (std::system("python3 -c 1 2>/dev/null") != 0) GTEST_SKIP() << "no python3";
    std::mt19937 random(31);
    std::vector<Writer> writers(42);  // the first two for the script and its output
    std::string found, command = "python3";
    for (Writer &writer : writers) {
        if (&writer > &writers[1]) random_value(&writer.fmt, nullptr, random, &found);
        writer.finish();
        if (&writer != &writers[1]) command += std::string(" ") + writer.path;
    }
    std::ofstream(writers[0].path) << kWalk;
    command += std::string(" >") + writers[1].path;
    ASSERT_EQ(std::system(command.c_str()), 0) << "seed 31";
    EXPECT_EQ(contents(writers[1].path), found) << "seed 31";
}

}  // namespace
