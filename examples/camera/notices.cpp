// notices.cpp - the notification manager with locks of the application's choice.
//
// SPDX-License-Identifier: MIT
#include "notices.hpp"

#include "run.hpp"

namespace camera {
namespace {

constexpr uint64_t kRecorder = 1;
constexpr uint64_t kMonitor = 2;
constexpr uint64_t kIds[kNoticeKinds] = {static_cast<uint64_t>(Notice::kFrame),
                                         static_cast<uint64_t>(Notice::kDrop),
                                         static_cast<uint64_t>(Notice::kConfig)};
constexpr const char *kNames[kNoticeKinds] = {"frame", "drop", "config"};

}  // namespace

// The manager locks through these hooks only: subscriptions are read far more often than they are
// changed, and flag words are touched for moments.
Notices::Notices() {
    require(zt_mutex_init(&flags_), "mutex");
    handle_.owner = this;
    const zt_ntf_mgr_ops_t hooks = {
        [](zt_ntf_mgr_t *manager) { owner(manager)->subscriptions_.lock_shared(); },
        [](zt_ntf_mgr_t *manager) { owner(manager)->subscriptions_.unlock_shared(); },
        [](zt_ntf_mgr_t *manager) { owner(manager)->subscriptions_.lock(); },
        [](zt_ntf_mgr_t *manager) { owner(manager)->subscriptions_.unlock(); },
        [](zt_ntf_mgr_t *manager) { zt_mutex_lock(&owner(manager)->flags_); },
        [](zt_ntf_mgr_t *manager) { zt_mutex_unlock(&owner(manager)->flags_); },
    };
    require(zt_ntf_mgr_init(&hooks, &handle_.manager), "notification manager");
    require(zt_ntf_mgr_subscribe(&handle_.manager, kRecorder, 0, kIds, kNoticeKinds, on_notice),
            "recorder");
    require(zt_ntf_mgr_subscribe(&handle_.manager, kMonitor, 0, kIds, kNoticeKinds, nullptr),
            "monitor");
}

Notices::~Notices() {
    zt_ntf_mgr_deinit(&handle_.manager);
    zt_mutex_destroy(&flags_);
}

Notices *Notices::owner(zt_ntf_mgr_t *manager) {
    return ZT_CONTAINER_OF(manager, Handle, manager)->owner;
}

void Notices::publish(Notice notice) {
    ++published_[index(notice)];
    zt_ntf_mgr_publish(&handle_.manager, static_cast<uint64_t>(notice));
}

// True consumes the notification, so that the next one calls back again.
bool Notices::on_notice(zt_ntf_mgr_t *manager, uint64_t, uint64_t) {
    ++owner(manager)->called_back_;
    return true;
}

std::string Notices::poll() {
    uint64_t flags = 0;
    zt_ntf_mgr_get_flags(&handle_.manager, kMonitor, &flags);
    seen_ |= flags;
    std::string text;
    for (int32_t i = 0; i < kNoticeKinds; ++i) {
        if ((flags >> i & 1) == 0) continue;
        ++polled_;
        text += text.empty() ? kNames[i] : std::string(" ") + kNames[i];
    }
    return text;
}

bool Notices::complete() const {
    uint64_t sum = 0;
    for (size_t i = 0; i < published_.size(); ++i) {
        sum += published_[i];
        if ((published_[i] != 0) != ((seen_ >> i & 1) != 0)) return false;
    }
    return called_back_ == sum;
}

}  // namespace camera
