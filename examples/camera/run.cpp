// run.cpp - the clock and the end of a run, supervised threads, and the faults on request.
//
// SPDX-License-Identifier: MIT
#include "run.hpp"

#include <algorithm>
#include <utility>

ZT_LOGGING_CATEGORY_DEFINE(watchdog, ZT_LOG_LEVEL_INFO);

namespace camera {
namespace {
constexpr uint64_t kFaultUs = 300'000;  // faults on request come this long after the start
constexpr int32_t kPriority = 3;
}  // namespace

bool is_thread_name(const std::string &name) {
    return name == kCapture || name == kEncoder || name == kPtzDriver ||
           std::find(kClients.begin(), kClients.end(), name) != kClients.end();
}

void require(zt_status_t status, const std::string &what) {
    if (status != ZT_STATUS_SUCCESS) {
        throw std::runtime_error(what + ": " + zt_get_status_string(status));
    }
}

Run::Run(Fault fault) : start_us_(zt_time_get_us()), fault_(std::move(fault)) {
    require(zt_event_init(&stop_event_), "event");
}

Run::~Run() { zt_event_deinit(&stop_event_); }

void Run::stop() {
    stopping_ = true;
    zt_event_set(&stop_event_);
}

void Run::pause(int32_t ms) const {
    // Waiting for several events consumes none of them, not even when there is only one.
    zt_event_t event = stop_event_;
    zt_event_t *events[] = {&event};
    zt_event_wait_for_multiple(events, 1, ms);
}

// A stalled thread looks at the run's end only, and finishes its work then: so a run that the
// watchdog has ended can still be joined and accounted for.
void Run::misbehave(const char *thread) const {
    if (now_us() < kFaultUs) return;
    if (fault_.crash == thread) {
        volatile int *nowhere = nullptr;
        *nowhere = 1;
    }
    if (fault_.stall == thread) {
        while (!stopping_) pause(-1);
    }
}

Supervisor::Supervisor(int32_t timeout_ms) : timeout_ms_(timeout_ms) {
    hardware_.operations = {enable, feed, close};
    dogs_.manager = ZT_WATCHDOG_MGR_INIT(dogs_.manager, on_expired);
    dogs_.owner = this;
    require(zt_watchdog_mgr_create(&dogs_.manager, &hardware_.operations), "watchdog manager");
    require(zt_watchdog_mgr_enable_hw(&dogs_.manager, 1), "watchdog hardware");
}

Supervisor::~Supervisor() {
    zt_watchdog_mgr_enable_hw(&dogs_.manager, 0);
    zt_watchdog_mgr_destroy(&dogs_.manager);
}

void Supervisor::watch(zt_thread_t *thread) {
    zt_thread_enable_watchdog(thread, &dogs_.manager, timeout_ms_);
}

zt_status_t Supervisor::enable(zt_hw_watchdog_t *hw, int flag) {
    ZT_CONTAINER_OF(hw, Hardware, operations)->enabled = flag != 0;
    return ZT_STATUS_SUCCESS;
}

zt_status_t Supervisor::feed(zt_hw_watchdog_t *hw) {
    auto *hardware = ZT_CONTAINER_OF(hw, Hardware, operations);
    if (hardware->enabled) ++hardware->feeds;
    return ZT_STATUS_SUCCESS;
}

zt_status_t Supervisor::close(zt_hw_watchdog_t *hw) { return enable(hw, 0); }

// Runs on the checking thread, for each overdue thread and at last with null.
void Supervisor::on_expired(zt_watchdog_mgr_t *manager, zt_watchdog_t *entry) {
    Supervisor *self = ZT_CONTAINER_OF(manager, Dogs, manager)->owner;
    if (entry == nullptr || !self->expired_.empty()) return;
    self->expired_ = entry->name;
    ZT_LOG_ERROR(watchdog, "thread \"%s\" (tid %lld) has stopped keeping alive", entry->name,
                 static_cast<long long>(entry->user));
}

Worker::Worker(const Run &run, Supervisor &supervisor, const char *name, Body body)
    : run_(run), supervisor_(supervisor), name_(name), body_(std::move(body)) {
    require(zt_thread_create_and_run(&thread_, kPriority, enter, this, name), name);
}

int32_t Worker::enter(zt_thread_t *self, void *worker) {
    auto *me = static_cast<Worker *>(worker);
    me->supervisor_.watch(self);
    me->body_(*me);
    return 0;
}

void Worker::keep_alive() {
    zt_thread_keep_alive(&thread_);
    run_.misbehave(name_);
}

bool Worker::join() {
    return thread_ != nullptr && zt_thread_wait_and_destory(&thread_, nullptr) == ZT_STATUS_SUCCESS;
}

}  // namespace camera
