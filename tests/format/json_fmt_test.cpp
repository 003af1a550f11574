// The JSON writer against a text that is put together beside it, and read by Python's parser.
// SPDX-License-Identifier: MIT
#include "zt/json_fmt.h"

#include "zt/base64.h"

#include "support/test.hpp"

// Writes a random document and returns its text: what more than 31 containers hold is left out, and so
// are closes without an open.
static std::string write_document(Choices &random, zt_json_fmt_t *fmt) {
    const size_t depth_wanted = random.pick({3, 40});
    static const std::string longest(63, 'n'), too_long(99, 'l');  // names composed together with a number, or not
    std::string text, open;                                        // and what closes the containers that are open
    std::vector<int> items = {0};                                  // of each of them
    const auto close = [&] {
        open.ends_with('}') ? zt_json_fmt_close_object(fmt) : zt_json_fmt_close_array(fmt);
        if (open.empty()) return;
        const char bracket = open.back();
        open.pop_back();
        if (open.size() < 31) text += (items.back() > 0 ? "\n" : "") + std::string(open.size(), '\t') + bracket;
        items.pop_back();
    };
    do {
        const char *name = open.ends_with('}') ? random.pick({"50%s", "", longest.c_str(), too_long.c_str()}) : nullptr;
        const auto put = [&](const std::string &value) {
            if (open.size() + value.ends_with('\n') > 31) return;
            text += (items.back()++ > 0 ? ",\n" : "") + std::string(open.size(), '\t');
            text += (name != nullptr ? "\"" + std::string(name) + "\": " : "") + value;
        };
        const auto begin = [&](auto operation, const char *value, char bracket) {
            operation(fmt, name), put(value), open += bracket, items.push_back(0);
        };
        const uint64_t bits = random() >> random(64), n = random(2) ? ~bits : bits;
        const uint64_t kind = open.empty() ? 10 + n % 2 : random(open.size() < depth_wanted ? 12 : 10);
        const std::string word = random.pick({"%d x", "", "\u00e4"});
        const std::string data = kind != 8 ? "" : random.text(random(9) > 7 ? random(1200) : random(9));
        const auto *const format = random.pick({"%.1f", "%.200f", "%g"});
        const double real = kind == 6 ? static_cast<float>(n) : static_cast<double>(n);
        char digits[128], base64[1700] = "";
        snprintf(digits, sizeof digits, format, real);
        uint64_t length = 0;
        EXPECT_EQ(zt_base64_encode(base64, sizeof base64, &length, data.data(), data.size()), 0);
        switch (kind) {
            case 0: zt_json_fmt_add_int32(fmt, name, int32_t(n)), put(std::to_string(int32_t(n))); break;
            case 1: zt_json_fmt_add_int64(fmt, name, int64_t(n)), put(std::to_string(int64_t(n))); break;
            case 2: zt_json_fmt_add_uint32(fmt, name, uint32_t(n)), put(std::to_string(uint32_t(n))); break;
            case 3: zt_json_fmt_add_uint64(fmt, name, n), put(std::to_string(n)); break;
            case 4: zt_json_fmt_add_bool(fmt, name, n % 2), put(n % 2 ? "true" : "false"); break;
            case 5: zt_json_fmt_add_string(fmt, name, word.empty() ? nullptr : &word[0]), put('"' + word + '"'); break;
            case 6: zt_json_fmt_add_float(fmt, name, format, static_cast<float>(n)), put(digits); break;
            case 7: zt_json_fmt_add_double(fmt, name, format, real), put(digits); break;
            case 8:
                zt_json_fmt_add_blob_b64(fmt, name, &data[0], data.size()), put('"' + std::string(base64) + '"');
                break;
            case 9: open.size() > 1 ? close() : void(); break;
            case 10: begin(zt_json_fmt_open_object, "{\n", '}'); break;
            case 11: begin(zt_json_fmt_open_array, "[\n", ']'); break;
        }
    } while (random.more());
    for (size_t left = open.size() + 2; left > 0; --left) close();
    return text;
}

std::string g_printed;

ZT_MODEL(JsonFmt, WritesTheTextOfTheModel, 100, 300) {
    zt_json_fmt_t fmt = {};
    fmt.print = [](auto, const char *format, va_list arguments) {
        char piece[2000];
        const int length = vsnprintf(piece, sizeof piece, format, arguments);
        return g_printed += piece, length;
    };
    g_printed.clear();
    const std::string want = write_document(random, &fmt);
    EXPECT_EQ(g_printed, want);
}

TEST(JsonFmt, FilesHoldWhatPythonReads) {
    char path[] = "/tmp/zt_json_XXXXXX";
    close(mkstemp(path));
    zt_json_fmt_file_t file = {};
    ASSERT_EQ(zt_json_fmt_open_file(&file, path), 0);
    Choices random(31, 5'000);
    const std::string want = write_document(random, &file.fmt);
    for (int i = 0; i < 2; ++i) zt_json_fmt_close_file(&file), zt_json_fmt_add_string(&file.fmt, nullptr, "closed");
    zt_json_fmt_add_int32(&file.fmt, nullptr, 1);
    std::ostringstream all;
    all << std::ifstream(path).rdbuf();
    EXPECT_EQ(all.str(), want);
    EXPECT_EQ(std::system((std::string("python3 -m json.tool ") + path + " /dev/null").c_str()), 0);
    unlink(path);
}
