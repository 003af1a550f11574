// config.cpp - the INI reader finds values; whether they make sense is decided here.
//
// SPDX-License-Identifier: MIT
#include "config.hpp"

#include <charconv>
#include <cmath>
#include <memory>
#include <sstream>

#include "run.hpp"

namespace camera {
namespace {

constexpr int32_t kLongestValue = 256;

struct Destroy {
    void operator()(zt_ini_reader_t *reader) const { zt_ini_read_destroy(reader); }
};

// Values of one section. Everything that is wrong with a key is said in one line.
class Section {
  public:
    Section(const zt_ini_reader_t *reader, std::string path, std::string name)
        : reader_(reader), path_(std::move(path)), name_(std::move(name)) {}

    [[noreturn]] void refuse(const std::string &key, const std::string &why) const {
        throw BadInput(path_ + ": [" + name_ + "] " + key + ": " + why);
    }

    std::string text(const std::string &key) const {
        char value[kLongestValue];
        const zt_status_t status =
            zt_ini_reader_get_string(reader_, name_.c_str(), key.c_str(), value, kLongestValue);
        if (status == ZT_STATUS_NOT_EXIST) refuse(key, "missing");
        if (status != ZT_STATUS_SUCCESS) refuse(key, zt_get_status_string(status));
        return value;
    }

    // The reader's own numbers forgive what follows them; a configuration should not.
    uint32_t number(const std::string &key, uint32_t least, uint32_t most) const {
        const std::string value = text(key);
        char *end = nullptr;
        const int64_t number = zt_strtoll(value.c_str(), &end, 10);
        if (value.empty() || *end != '\0' || number < least || number > most) {
            refuse(key, "a number from " + std::to_string(least) + " to " + std::to_string(most) +
                            " is wanted, not \"" + value + "\"");
        }
        return static_cast<uint32_t>(number);
    }

    Limits limits(const std::string &motion) const {
        const Limits result{real(motion + "_min"), real(motion + "_max")};
        if (result.min > result.max) refuse(motion + "_max", "below " + motion + "_min");
        return result;
    }

    Motion motion() const { return {limits("pan"), limits("tilt"), limits("zoom")}; }

  private:
    float real(const std::string &key) const {
        const std::string value = text(key);
        float number = 0;
        const auto [end, error] =
            std::from_chars(value.data(), value.data() + value.size(), number);
        if (error != std::errc() || end != value.data() + value.size() || !std::isfinite(number)) {
            refuse(key, "a number is wanted, not \"" + value + "\"");
        }
        return number;
    }

    const zt_ini_reader_t *reader_;
    std::string path_;
    std::string name_;
};

int32_t level_of(const std::string &name) {
    constexpr const char *kNames[] = {"off", "error", "warn", "info", "debug", "trace"};
    for (int32_t i = 0; i < 6; ++i) {
        if (name == kNames[i]) return i - 1;
    }
    return -2;
}

bool is_prefix_of_a_category(const std::string &prefix) {
    zt_logging_category_t **categories = nullptr;
    int32_t count = 0;
    zt_logc_get_categories(&categories, &count);
    for (int32_t i = 0; i < count; ++i) {
        if (zt_str_beginwith(categories[i]->name, prefix.c_str())) return true;
    }
    return false;
}

void set_log_levels(const Section &section) {
    std::istringstream entries(section.text("levels"));
    for (std::string entry; entries >> entry;) {
        const size_t colon = entry.find(':');
        if (colon == std::string::npos) section.refuse("levels", "\"" + entry + "\" has no level");
        const std::string prefix = entry.substr(0, colon) == "all" ? "" : entry.substr(0, colon);
        const int32_t level = level_of(entry.substr(colon + 1));
        if (level < -1) section.refuse("levels", "\"" + entry + "\" has an unknown level");
        if (!is_prefix_of_a_category(prefix)) {
            section.refuse("levels", "no category begins with \"" + prefix + "\"");
        }
        zt_logc_set_level_by_prefix(prefix.c_str(), level);
    }
}

Picture read_picture(const Section &video) {
    const std::string name = video.text("format");
    const uint32_t width = video.number("width", 2, 8192);
    const uint32_t height = video.number("height", 2, 8192);
    try {
        return lay_out(fourcc_of(name), width, height);
    } catch (const BadInput &error) {
        video.refuse("format", error.what());
    }
}

}  // namespace

Config read_config(const std::string &path) {
    zt_ini_reader_t *raw = nullptr;
    const zt_status_t status = zt_ini_reader_create_from_file(&raw, path.c_str());
    if (status != ZT_STATUS_SUCCESS) throw BadInput(path + ": " + zt_get_status_string(status));
    const std::unique_ptr<zt_ini_reader_t, Destroy> reader(raw);
    const auto section = [&](const char *name) { return Section(reader.get(), path, name); };

    Config config;
    config.picture = read_picture(section("video"));
    config.frame_rate = section("video").number("frame_rate", 1, 240);
    config.queue_depth = section("queue").number("depth", 1, 256);
    config.window_ms = section("timing").number("window_ms", 1, 60000);
    config.jitter_limit_ms = section("timing").number("jitter_limit_ms", 1, 60000);
    config.watchdog_ms = static_cast<int32_t>(section("watchdog").number("timeout_ms", 100, 60000));
    set_log_levels(section("log"));
    config.presets = section("ptz").number("presets", 1, 256);
    config.modes = {section("ptz.mode1").motion(), section("ptz.mode2").motion(),
                    section("ptz.mode3").motion()};
    config.restricted = section("ptz.restricted").motion();
    return config;
}

}  // namespace camera
