// report.cpp - written with the streaming JSON writer: what is opened is closed, nothing is kept.
//
// SPDX-License-Identifier: MIT
#include "report.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace camera {
namespace {

// The writer takes texts as they are; paths may hold anything.
std::string escaped(const std::string &text) {
    std::string result;
    for (const char c : text) {
        char code[8];
        if (c == '"' || c == '\\') result += '\\';
        if (static_cast<unsigned char>(c) >= 0x20) {
            result += c;
            continue;
        }
        std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
        result += code;
    }
    return result;
}

int32_t hundredths(float value) { return static_cast<int32_t>(std::lround(value * 100)); }

// One array of numbers, one for each record.
template <typename Records, typename Value>
void add_column(zt_json_fmt_t *json, const char *name, const Records &records, Value value) {
    zt_json_fmt_open_array(json, name);
    for (const auto &record : records) {
        zt_json_fmt_add_int64(json, nullptr, static_cast<int64_t>(value(record)));
    }
    zt_json_fmt_close_array(json);
}

void add_program(zt_json_fmt_t *json, const Device &device) {
    zt_json_fmt_open_object(json, "program");
    zt_json_fmt_add_string(json, "name", "camera");
    zt_json_fmt_add_string(json, "library", zt_base_version);
    zt_json_fmt_add_string(json, "ended_by", device.ended_by);
    zt_json_fmt_add_uint64(json, "run_ms", device.run_us / 1000);
    zt_json_fmt_close_object(json);
}

void add_configuration(zt_json_fmt_t *json, const Device &device) {
    const Config &config = device.config;
    const std::string &clip = device.options.frames;
    zt_json_fmt_open_object(json, "configuration");
    zt_json_fmt_add_string(json, "source", clip.empty() ? "pattern" : escaped(clip).c_str());
    zt_json_fmt_add_string(json, "fourcc", config.picture.name().c_str());
    zt_json_fmt_add_uint32(json, "width", config.picture.width);
    zt_json_fmt_add_uint32(json, "height", config.picture.height);
    zt_json_fmt_add_uint32(json, "frame_rate", config.frame_rate);
    zt_json_fmt_add_uint64(json, "frame_size", config.picture.size);
    zt_json_fmt_add_uint32(json, "queue_depth", config.queue_depth);
    zt_json_fmt_add_int32(json, "watchdog_ms", config.watchdog_ms);
    zt_json_fmt_add_uint32(json, "encoder_delay_ms", device.options.slow_encoder_ms);
    zt_json_fmt_close_object(json);
}

void add_frames(zt_json_fmt_t *json, const Device &device) {
    const Encoder &encoder = device.encoder;
    zt_json_fmt_open_object(json, "frames");
    zt_json_fmt_add_uint64(json, "produced", device.capture.produced());
    zt_json_fmt_add_uint64(json, "dropped", device.capture.dropped());
    zt_json_fmt_add_uint64(json, "encoded", encoder.encoded().size());
    zt_json_fmt_add_uint64(json, "bytes_encoded", encoder.bytes());
    zt_json_fmt_close_object(json);

    char crc[9];
    std::snprintf(crc, sizeof crc, "%08x", encoder.crc32());
    zt_json_fmt_open_object(json, "digests");
    zt_json_fmt_add_string(json, "md5", encoder.md5().c_str());
    zt_json_fmt_add_string(json, "crc32", crc);
    zt_json_fmt_close_object(json);
}

void add_timing(zt_json_fmt_t *json, const Device &device) {
    const Encoder &encoder = device.encoder;
    int64_t interval = 0, jitter = 0;
    for (const EncodedFrame &frame : encoder.encoded()) {
        interval = std::max(interval, static_cast<int64_t>(frame.interval_us));
        jitter = std::max(jitter, frame.jitter_us);
    }
    zt_json_fmt_open_object(json, "timing");
    zt_json_fmt_add_int64(json, "delta_us", encoder.delta_us());
    zt_json_fmt_add_int64(json, "jitter_us", encoder.jitter_us());
    zt_json_fmt_add_int64(json, "largest_interval_us", interval);
    zt_json_fmt_add_int64(json, "largest_jitter_us", jitter);
    zt_json_fmt_add_uint64(json, "discontinuities", encoder.discontinuities());
    zt_json_fmt_close_object(json);
}

void add_series(zt_json_fmt_t *json, const Device &device) {
    const auto &frames = device.encoder.encoded();
    using Frame = EncodedFrame;
    zt_json_fmt_open_object(json, "series");
    add_column(json, "frame", frames, [](const Frame &f) { return f.sequence; });
    add_column(json, "time_us", frames, [](const Frame &f) { return f.time_us; });
    add_column(json, "interval_us", frames, [](const Frame &f) { return f.interval_us; });
    add_column(json, "jitter_us", frames, [](const Frame &f) { return f.jitter_us; });
    add_column(json, "queue_depth", frames, [](const Frame &f) { return f.queue_depth; });
    add_column(json, "largest_interval_us", frames,
               [](const Frame &f) { return f.largest_interval_us; });
    add_column(json, "crc32", frames, [](const Frame &f) { return f.crc32; });
    zt_json_fmt_close_object(json);
}

struct PtzCounts {
    uint32_t sent = 0, refused = 0, results = 0, notices = 0;
    void add(const PtzClient &client) {
        sent += client.sent();
        refused += client.refused();
        results += client.results();
        notices += client.notices();
    }
    void write(zt_json_fmt_t *json) const {
        zt_json_fmt_add_uint32(json, "sent", sent);
        zt_json_fmt_add_uint32(json, "refused", refused);
        zt_json_fmt_add_uint32(json, "results", results);
        zt_json_fmt_add_uint32(json, "notices", notices);
    }
};

void add_ptz(zt_json_fmt_t *json, const Device &device) {
    PtzCounts all;
    for (const PtzClient &client : device.clients) all.add(client);
    zt_json_fmt_open_object(json, "ptz");
    all.write(json);
    zt_json_fmt_add_uint32(json, "unanswered", all.sent - all.refused - all.results);
    zt_json_fmt_open_array(json, "clients");
    for (const PtzClient &client : device.clients) {
        PtzCounts own;
        own.add(client);
        zt_json_fmt_open_object(json, nullptr);
        zt_json_fmt_add_string(json, "name", client.name());
        own.write(json);
        zt_json_fmt_close_object(json);
    }
    zt_json_fmt_close_array(json);

    const auto &track = device.driver.track();
    using Point = PtzDriver::TrackPoint;
    zt_json_fmt_open_object(json, "track");
    add_column(json, "time_us", track, [](const Point &p) { return p.time_us; });
    add_column(json, "pan", track, [](const Point &p) { return hundredths(p.position.pan); });
    add_column(json, "tilt", track, [](const Point &p) { return hundredths(p.position.tilt); });
    add_column(json, "zoom", track, [](const Point &p) { return hundredths(p.position.zoom); });
    zt_json_fmt_close_object(json);
    zt_json_fmt_close_object(json);
}

void add_services(zt_json_fmt_t *json, const Device &device) {
    const Notices &notices = device.notices;
    zt_json_fmt_open_object(json, "notifications");
    zt_json_fmt_add_uint64(json, "frame", notices.published(Notice::kFrame));
    zt_json_fmt_add_uint64(json, "drop", notices.published(Notice::kDrop));
    zt_json_fmt_add_uint64(json, "config", notices.published(Notice::kConfig));
    zt_json_fmt_add_uint64(json, "polled", notices.polled());
    zt_json_fmt_add_uint64(json, "called_back", notices.called_back());
    zt_json_fmt_close_object(json);

    zt_json_fmt_open_object(json, "watchdog");
    zt_json_fmt_add_uint64(json, "feeds", device.supervisor.feeds());
    zt_json_fmt_add_string(json, "expired", device.supervisor.expired().c_str());
    zt_json_fmt_close_object(json);

    zt_json_fmt_open_object(json, "info_frames");
    for (const InfoFrame &frame : device.info_frames) {
        zt_json_fmt_add_string(json, frame.name.c_str(), frame.hex().c_str());
    }
    zt_json_fmt_close_object(json);
}

void add_thumbnail(zt_json_fmt_t *json, const Thumbnail &thumbnail) {
    zt_json_fmt_open_object(json, "thumbnail");
    zt_json_fmt_add_uint32(json, "width", thumbnail.width);
    zt_json_fmt_add_uint32(json, "height", thumbnail.height);
    zt_json_fmt_add_string(json, "format", "gray8");
    zt_json_fmt_add_blob_b64(json, "pixels", thumbnail.pixels.data(), thumbnail.pixels.size());
    zt_json_fmt_close_object(json);
}

}  // namespace

void write_report(const Device &device, const std::string &path) {
    zt_json_fmt_file_t file;
    require(zt_json_fmt_open_file(&file, path.c_str()), path);
    zt_json_fmt_t *json = &file.fmt;
    zt_json_fmt_open_object(json, nullptr);
    add_program(json, device);
    add_configuration(json, device);
    add_frames(json, device);
    add_timing(json, device);
    add_series(json, device);
    add_ptz(json, device);
    add_services(json, device);
    add_thumbnail(json, device.encoder.thumbnail());
    zt_json_fmt_close_object(json);
    // The writer does not see errors of the disk; the stream remembers them.
    const bool failed = std::fflush(file.fp) != 0 || std::ferror(file.fp) != 0;
    zt_json_fmt_close_file(&file);
    if (failed) throw std::runtime_error(path + ": not written completely");
}

}  // namespace camera
