// encoder.cpp - no codec: what is watched here is that every frame arrives, whole and in time.
//
// SPDX-License-Identifier: MIT
#include "encoder.hpp"

#include <algorithm>
#include <cstdio>

ZT_LOGGING_CATEGORY_DEFINE(encoder, ZT_LOG_LEVEL_INFO);

namespace camera {
namespace {
constexpr int32_t kIdleMs = 100;  // how long the thread waits before it shows that it is alive
constexpr uint32_t kSecondUs = 1'000'000;
constexpr uint32_t kMsUs = 1000;
}  // namespace

Encoder::Encoder(const Run &run, const Picture &picture, Capture &capture, Notices &notices,
                 const EncoderOptions &options)
    : run_(run), picture_(picture), capture_(capture), notices_(notices), options_(options) {
    // Room for twice the frames of a window: after a stop the queue's frames come in a burst.
    zt_tsw_param_t param{};
    param.size = 2 * options.frame_rate * (options.window_ms / 1000 + 1);
    param.delta_window = options.window_ms * kMsUs;
    param.jitter_window = options.window_ms * kMsUs;
    require(zt_tsw_create(&timestamps_, &param), "timestamp window");
    require(zt_heap_window_create(&intervals_, kSecondUs, 2 * options.frame_rate, nullptr, 0, 1),
            "interval window");
    zt_md5_init(&md5_);
}

Encoder::~Encoder() {
    zt_heap_window_destroy(&intervals_);
    zt_tsw_destroy(&timestamps_);
}

void Encoder::work(Worker &self) {
    for (;;) {
        self.keep_alive();
        const bool last =
            draining_;  // read first: what was pushed before it was set is still taken
        Frame *frame = capture_.frames().pop(kIdleMs);
        if (frame == nullptr && last) break;
        if (frame == nullptr) continue;
        encode(*frame);
        capture_.frames().give_back(frame);
        notices_.publish(Notice::kFrame);
        dawdle(self);
    }
    ZT_LOG_INFO(encoder, "encoded %zu frames, MD5 %s", encoded_.size(), md5().c_str());
}

void Encoder::encode(const Frame &frame) {
    EncodedFrame record{};
    record.sequence = frame.sequence;
    take_time(frame, &record);
    digest(frame, &record);
    thumbnail_ = make_thumbnail(picture_, frame.data);
    encoded_.push_back(record);
    ++count_;
    ZT_LOG_DEBUG(encoder, "frame %llu: CRC %08x, jitter %lld us",
                 static_cast<unsigned long long>(frame.sequence), record.crc32,
                 static_cast<long long>(record.jitter_us));
}

// Delta: how long after its timestamp the frame came here. Jitter: how much longer than the best.
void Encoder::take_time(const Frame &frame, EncodedFrame *record) {
    const uint64_t now_us = run_.now_us();
    record->time_us = now_us;
    record->queue_depth = capture_.frames().waiting();

    const uint32_t limit_us = options_.jitter_limit_ms * kMsUs;
    const auto delta_us = static_cast<int64_t>(now_us - frame.timestamp_us);
    if (timestamps_.cur >= 0 && delta_us - zt_tsw_get_delta(&timestamps_) >= limit_us) {
        ++discontinuities_;
        ZT_LOG_WARN(encoder, "frame %llu came %lld us late: the timing starts again",
                    static_cast<unsigned long long>(frame.sequence),
                    static_cast<long long>(delta_us));
    }
    zt_tsw_update(&timestamps_, frame.timestamp_us, now_us, limit_us);
    record->jitter_us = timestamps_.entries[timestamps_.cur].jitter;

    if (!encoded_.empty()) {
        record->interval_us = now_us - encoded_.back().time_us;
        zt_heap_window_update_int64(&intervals_, now_us, static_cast<int64_t>(record->interval_us));
    }
    record->largest_interval_us = zt_heap_window_get_max_int64(&intervals_);

    delta_us_ = zt_tsw_get_delta(&timestamps_);
    jitter_us_ = zt_tsw_get_jitter(&timestamps_);
    largest_interval_us_ = record->largest_interval_us;
}

void Encoder::digest(const Frame &frame, EncodedFrame *record) {
    const auto size = static_cast<uint32_t>(picture_.size);  // 8192 x 8192 x 4 at most
    record->crc32 = zt_crc32(0, frame.data, size);
    crc32_ = zt_crc32(crc32_, frame.data, size);
    zt_md5_update(&md5_, frame.data, size);
    bytes_ += size;
}

void Encoder::dawdle(Worker &self) const {
    const uint64_t until_us = run_.now_us() + uint64_t{options_.delay_ms} * kMsUs;
    while (!run_.stopping()) {
        const uint64_t now_us = run_.now_us();
        if (now_us >= until_us) return;
        run_.pause(static_cast<int32_t>(
            std::min<uint64_t>((until_us - now_us + kMsUs - 1) / kMsUs, kIdleMs)));
        self.keep_alive();
    }
}

std::string Encoder::md5() const {
    zt_md5_ctx_t copy = md5_;  // so that the stream could go on
    uint8_t digest[16];
    zt_md5_final(&copy, digest);
    std::string text;
    for (const uint8_t byte : digest) {
        char hex[3];
        std::snprintf(hex, sizeof hex, "%02x", byte);
        text += hex;
    }
    return text;
}

std::string Encoder::statistics() const {
    char text[160];
    std::snprintf(text, sizeof text,
                  "encoded %llu, delta %lld us, jitter %lld us, largest interval %lld us",
                  static_cast<unsigned long long>(count_), static_cast<long long>(delta_us_),
                  static_cast<long long>(jitter_us_), static_cast<long long>(largest_interval_us_));
    return text;
}

}  // namespace camera
