// Look-ups in INI texts against a slow model, numbers, odd files.
// SPDX-License-Identifier: MIT
#include "zt/ini.h"

#include "support/test.hpp"

// The value of a key by the rules, line by line; false when there is none.
static bool slow_find(const std::string &text, const char *section, const std::string &key, std::string *value) {
    bool inside = section == nullptr;
    std::string feeds = text;
    std::replace(feeds.begin(), feeds.end(), '\r', '\n');
    std::istringstream stream(feeds);
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

// A reader of a text that no NUL follows; null when it was refused with the status expected.
struct Reader {
    zt_ini_reader_t *reader = nullptr;
    Reader(const std::string &text, zt_status_t expected) {
        static const Guarded room;
        EXPECT_EQ(zt_ini_reader_create(&reader, room.last(text), uint32_t(text.size())), expected) << text;
    }
    ~Reader() { zt_ini_read_destroy(reader); }
};

// Texts of what matters and of any bytes, up to the first NUL; values and keys are found as the slow
// model finds them, in a buffer of just the right size.
ZT_MODEL(Ini, FindsWhatTheRulesSay, 1, 60'000) {
    const std::string tokens[] = {"\n", "\n\n", "\r\n", "\n[a]\n", "\n[b]\n", "[a]", "a=", "\n\"a=\"\""};
    while (random.more()) {
        std::string text = random.text(1);
        for (uint64_t i = random(30), kind; i > 0 && (kind = random(24), true); --i)
            text += kind < 8 ? tokens[kind] : random.text(1, kind < 23 ? " ab==[]\"\"\t#;/x\n" : "");
        const std::string seen = text.substr(0, text.find('\0'));
        const bool any_line = seen.find_first_not_of("\r\n") != std::string::npos;
        const Reader ini(text, any_line ? 0 : 7);
        for (int i = 0; i < 16 && any_line; ++i) {
            const char *section = std::array<const char *, 4>{nullptr, "a", "b", ""}[i % 4];
            const char *key = std::array{"a", "b", "", "ab"}[i / 4];
            std::string expected, value(200, 'x');
            const bool found = slow_find(seen, section, key, &expected);
            const auto size = static_cast<int32_t>(expected.size()) + 1;
            const auto get = [&](int n) { return zt_ini_reader_get_string(ini.reader, section, key, &value[0], n); };
            const auto get_default = [&](const char *d, int32_t n) {
                return zt_ini_reader_get_string_default(ini.reader, section, key, d, &value[0], n);
            };
            EXPECT_TRUE(get(size - 1) == (found ? 29 : 16) && get_default("d", -1) == (found ? 29 : 16));
            if (!found) EXPECT_EQ(get_default("four", 4), 16);
            EXPECT_EQ(value[0], 'x');
            EXPECT_EQ(zt_ini_reader_get_string(ini.reader, section, key, nullptr, size), found ? 0 : 16);
            EXPECT_EQ(get(size), found ? 0 : 16);
            EXPECT_TRUE((!found || value.c_str() == expected) && value[size] == 'x');
            EXPECT_EQ(get_default("d", found ? size : 2), 0);
            EXPECT_EQ(value.c_str(), found ? expected : "d") << text;
        }
    }
}

// What the getters give for one value: the four numbers with 5 as their default, the booleans.
TEST(Ini, NumbersAndDefaults) {
    const std::string sevens(127, '7'), longer(128, '7');
    const std::string rows[][2] = {
        {"0x10", "16 16 16 16 0 0"},
        {"010z", "8 8 8 8 0 0"},
        {"99999999999", "2147483647 4294967295 99999999999 99999999999 0 1"},
        {"-1", "-1 4294967295 -1 18446744073709551615 0 0"},
        {"true", "0 0 0 0 1 1"},
        {"TRUE", "0 0 0 0 0 0"},
        {sevens, "2147483647 4294967295 9223372036854775807 18446744073709551615 0 1"},
        {longer, "5 5 5 5 0 1"},
    };
    for (const auto &[value, expected] : rows) {
        const Reader ini("k=" + value, 0);
        std::ostringstream found;
        const auto add = [&](auto get, auto otherwise, char behind = ' ') {
            found << get(ini.reader, nullptr, "k", otherwise) << std::string(behind != 0, behind);
        };
        add(zt_ini_reader_get_int_default, 5), add(zt_ini_reader_get_uint_default, 5);
        add(zt_ini_reader_get_int64_default, 5), add(zt_ini_reader_get_uint64_default, 5);
        add(zt_ini_reader_get_boolean_default, false);
        add(zt_ini_reader_get_boolean_default, true, 0);
        EXPECT_EQ(found.str(), expected) << value;
        EXPECT_EQ(zt_ini_reader_get_int(ini.reader, nullptr, "k", nullptr), value == longer ? 29 : 0);
        for (const char *fallback : {"", static_cast<const char *>(nullptr)})
            EXPECT_EQ(zt_ini_reader_get_string_default(ini.reader, nullptr, "x", fallback, nullptr, 9), 16);
    }
}

// What a shell leaves in a folder, and what becomes of it; more lines than are kept.
TEST(Ini, FilesOfEveryKind) {
    char folder[] = "/tmp/zt_ini_XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    ASSERT_EQ(chdir(folder), 0);
    ASSERT_EQ(std::system("for i in $(seq 0 1025); do echo; echo k$i=$i; done >file; >empty;"
                          "mkfifo pipe; truncate -s 4G big"),
              0);
    const int keeps_pipe_open = open("pipe", O_RDWR);
    const auto create = [](const char *path, zt_status_t expected) {
        zt_ini_reader_t *reader = nullptr;
        const zt_status_t status = zt_ini_reader_create_from_file(&reader, path);
        EXPECT_EQ(status, expected) << path;
        if (status != 0) return;
        EXPECT_EQ(zt_ini_reader_get_int_default(reader, nullptr, "k1023", 5), 1023);
        EXPECT_EQ(zt_ini_reader_get_int_default(reader, nullptr, "k1024", 5), 5);
        zt_ini_read_destroy(reader);
    };
    const std::pair<const char *, zt_status_t> files[] = {{"file", 0}, {"empty", 7}, {"missing", 16},
                                                          {".", 18},   {"pipe", 33}, {"big", 18}};
    for (const auto &[path, expected] : files) create(path, expected);
    close(keeps_pipe_open);
    EXPECT_EQ(std::system((std::string("rm -r ") + folder).c_str()), 0);
}
