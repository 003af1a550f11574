// notices.hpp - "frame", "drop" and "configuration changed" for whoever wants to know.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_NOTICES_HPP
#define CAMERA_NOTICES_HPP

#include <array>
#include <atomic>
#include <shared_mutex>
#include <string>

#include "zt/base.h"

namespace camera {

enum class Notice : uint64_t { kFrame = 1, kDrop = 2, kConfig = 3 };
inline constexpr int32_t kNoticeKinds = 3;

// Any thread publishes. One subscriber, the recorder, is called back at once on the publishing
// thread; the other one, the monitor, polls and sees what has happened since it last looked.
class Notices {
  public:
    Notices();
    ~Notices();
    Notices(const Notices &) = delete;
    Notices &operator=(const Notices &) = delete;

    void publish(Notice notice);
    std::string poll();  // for one thread: the kinds that have come up, or ""

    uint64_t published(Notice notice) const { return published_[index(notice)]; }
    uint64_t called_back() const { return called_back_; }
    uint64_t polled() const { return polled_; }
    bool complete() const;  // nothing published has been missed; after a last poll

  private:
    struct Handle {
        zt_ntf_mgr_t manager;
        Notices *owner;
    };
    static size_t index(Notice notice) { return static_cast<size_t>(notice) - 1; }
    static Notices *owner(zt_ntf_mgr_t *manager);
    static bool on_notice(zt_ntf_mgr_t *manager, uint64_t subscriber, uint64_t notice);

    Handle handle_{};
    std::shared_mutex subscriptions_;
    zt_mutex_t flags_{};
    std::array<std::atomic<uint64_t>, kNoticeKinds> published_{};
    std::atomic<uint64_t> called_back_{0};
    uint64_t polled_ = 0;
    uint64_t seen_ = 0;  // a bit for each kind that the monitor has seen at least once
};

}  // namespace camera

#endif  // CAMERA_NOTICES_HPP
