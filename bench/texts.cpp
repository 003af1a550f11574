// INI texts beside inih and GLib, all from memory, and JSON to a file beside fprintf and RapidJSON.
#include <glib.h>
#include <ini.h>
#include <rapidjson/filewritestream.h>
#include <rapidjson/prettywriter.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "support.hpp"
#include "zt/ini.h"
#include "zt/json_fmt.h"

namespace bench {
namespace {

// 200 lines: 10 sections of 19 entries.
constexpr size_t kLines = 200;

std::string ini_text() {
    std::string text;
    for (int section = 0; section < 10; ++section) {
        text += "[section" + std::to_string(section) + "]\n";
        for (int key = 0; key < 19; ++key) {
            text += "parameter" + std::to_string(key) + "=" + std::to_string(key * 1000) + "\n";
        }
    }
    return text;
}

void add_ini() {
    static const std::string text = ini_text();
    add("ini_parse/200/zt", 1, [] {
        zt_ini_reader_t *reader = nullptr;
        const auto size = static_cast<uint32_t>(text.size());
        require(zt_ini_reader_create(&reader, text.data(), size) == 0, "no reader");
        zt_ini_read_destroy(reader);
    });
    add("ini_parse/200/inih", 1, [] {
        int entries = 0;
        const ini_handler count = [](void *user, const char *, const char *, const char *) {
            return ++*static_cast<int *>(user);
        };
        ini_parse_string(text.c_str(), count, &entries);
        require(entries == 190, "entries are lost");
    });
    add("ini_parse/200/glib", 1, [] {
        GKeyFile *file = g_key_file_new();
        g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr);
        g_key_file_free(file);
    });

    // The last entry of the last section: every line is looked at.
    static zt_ini_reader_t *reader;
    require(zt_ini_reader_create(&reader, text.data(), static_cast<uint32_t>(text.size())) == 0,
            "no reader");
    add("ini_lookup_line/200/zt", kLines, [] {
        char value[16];
        zt_ini_reader_get_string(reader, "section9", "parameter18", value, sizeof value);
        require(value[0] == '1' && value[1] == '8', "a wrong value");
    });
}

// A file that costs no disk: the time is the writers'.
const char *json_path() {
    static const std::string path = [] {
        char in_memory[] = "/dev/shm/zt_bench_XXXXXX", on_disk[] = "/tmp/zt_bench_XXXXXX";
        char *chosen = in_memory;
        int file = mkstemp(chosen);
        if (file < 0) file = mkstemp(chosen = on_disk);
        require(file >= 0, "no file can be written");
        close(file);
        std::atexit([] { unlink(json_path()); });
        return std::string(chosen);
    }();
    return path.c_str();
}

constexpr int kValues = 1000;
constexpr int value_of(int i) { return i * 7919; }

void write_ours() {
    zt_json_fmt_file_t file;
    require(zt_json_fmt_open_file(&file, json_path()) == 0, "no file");
    zt_json_fmt_open_object(&file.fmt, nullptr);
    zt_json_fmt_open_array(&file.fmt, "values");
    for (int i = 0; i < kValues; ++i) zt_json_fmt_add_int32(&file.fmt, nullptr, value_of(i));
    zt_json_fmt_close_array(&file.fmt);
    zt_json_fmt_close_object(&file.fmt);
    zt_json_fmt_close_file(&file);
}

// The same text, as somebody would write it who needs nothing else.
void write_printf() {
    FILE *file = std::fopen(json_path(), "w");
    std::fprintf(file, "{\n\t\"values\": [");
    for (int i = 0; i < kValues; ++i) {
        std::fprintf(file, "%s\n\t\t%d", i > 0 ? "," : "", value_of(i));
    }
    std::fprintf(file, "\n\t]\n}");
    std::fclose(file);
}

void write_rapid() {
    char buffer[65536];
    FILE *file = std::fopen(json_path(), "w");
    rapidjson::FileWriteStream stream(file, buffer, sizeof buffer);
    rapidjson::PrettyWriter<rapidjson::FileWriteStream> writer(stream);
    writer.SetIndent('\t', 1);
    writer.StartObject();
    writer.Key("values");
    writer.StartArray();
    for (int i = 0; i < kValues; ++i) writer.Int(value_of(i));
    writer.EndArray();
    writer.EndObject();
    std::fclose(file);
}

std::string written(void (*write)()) {
    write();
    std::ifstream file(json_path());
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

void add_texts() {
    add_ini();
    require(written(write_ours) == written(write_printf), "the JSON texts differ");
    add("json/1000/zt", kValues, write_ours);
    add("json/1000/fprintf", kValues, write_printf);
    add("json/1000/rapidjson", kValues, write_rapid);
}

}  // namespace bench
