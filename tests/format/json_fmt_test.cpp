// The JSON writer's exact text, and random documents read back by Python's parser.
// SPDX-License-Identifier: MIT
#include "zt/json_fmt.h"

#include "support/test.hpp"

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

// What Python would write otherwise, or not at all.
TEST(JsonFmt, OddPiecesAreAsDocumented) {
    Writer writer;
    zt_json_fmt_t *const fmt = &writer.fmt;
    zt_json_fmt_open_object(fmt, nullptr);
    zt_json_fmt_add_string(fmt, "50%s", "%d \"");
    zt_json_fmt_add_double(fmt, "n", "%0200.1f", 2.0);
    zt_json_fmt_open_array(fmt, "a");
    zt_json_fmt_close_array(fmt);
    for (int i = 0; i < 3; ++i) zt_json_fmt_close_object(fmt);  // two without an open
    EXPECT_EQ(writer.finish(),
              "{\n\t\"50%s\": \"%d \"\",\n\t\"n\": " + std::string(127, '0') + ",\n\t\"a\": [\n\t]\n}");
    zt_json_fmt_file_t unused = {};
    EXPECT_EQ(zt_json_fmt_open_file(&unused, "/nowhere/x"), 13);
}

TEST(JsonFmt, TooDeepIsLeftOut) {
    Writer writer;
    zt_json_fmt_t *const fmt = &writer.fmt;
    std::string opened, closed;
    for (int i = 0; i < 40; ++i) zt_json_fmt_open_array(fmt, nullptr);
    zt_json_fmt_add_blob_b64(fmt, nullptr, "deep", 4);
    for (int i = 0; i < 9; ++i) zt_json_fmt_close_array(fmt);
    zt_json_fmt_add_bool(fmt, nullptr, true);
    for (int i = 0; i < 31; ++i) {
        zt_json_fmt_close_array(fmt);
        opened += std::string(i, '\t') + "[\n";
        closed = "\n" + std::string(i, '\t') + "]" + closed;
    }
    EXPECT_EQ(writer.finish(), opened + std::string(31, '\t') + "true" + closed);
}

void random_value(zt_json_fmt_t *fmt, const char *name, std::mt19937 &random) {
    const uint32_t kind = fmt->depth < 1 ? 9 : random() % (fmt->depth < 6 ? 12 : 8);
    const std::string bytes(random() % 1200, 'x');
    switch (kind) {
        case 0: return zt_json_fmt_add_int32(fmt, name, -7);
        case 1: return zt_json_fmt_add_int64(fmt, name, -7000000000007);
        case 2: return zt_json_fmt_add_uint32(fmt, name, 4000000007);
        case 3: return zt_json_fmt_add_uint64(fmt, name, 18000000000000000007U);
        case 4: return zt_json_fmt_add_bool(fmt, name, random() % 2 == 0);
        case 5: return zt_json_fmt_add_string(fmt, name, "text");
        case 6: return zt_json_fmt_add_float(fmt, name, "%.1f", 2.5F);
        case 7: return zt_json_fmt_add_blob_b64(fmt, name, bytes.data(), bytes.size());
    }
    const bool object = random() % 2 == 0;
    object ? zt_json_fmt_open_object(fmt, name) : zt_json_fmt_open_array(fmt, name);
    for (uint32_t i = 1 + random() % 5; i > 0; --i) {
        random_value(fmt, object ? std::to_string(i).c_str() : nullptr, random);
    }
    object ? zt_json_fmt_close_object(fmt) : zt_json_fmt_close_array(fmt);
}

// Python parses each document and writes it again, indented by tabs: the same bytes must come out,
// and no other integers must have gone in.
TEST(JsonFmt, PythonWritesWhatItReads) {
    std::string command =
        "python3 -c 'import json,sys\n"
        "known={str(n):n for n in (-7,-7000000000007,4000000007,18000000000000000007)}\n"
        "for p in sys.argv[1:]:\n"
        "  t=open(p).read()\n"
        "  assert json.dumps(json.loads(t,parse_int=known.__getitem__),indent=chr(9))==t,p'";
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
