// run.hpp - what all threads of a run share: its clock and its end, its workers and their watchdogs.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_RUN_HPP
#define CAMERA_RUN_HPP

#include <array>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>

#include "zt/base.h"

namespace camera {

// The threads, by the names that the system, the log and the command line know them by.
inline constexpr const char *kCapture = "capture";
inline constexpr const char *kEncoder = "encoder";
inline constexpr const char *kPtzDriver = "ptz-driver";
inline constexpr std::array<const char *, 3> kClients = {"operator", "tracker", "service"};
bool is_thread_name(const std::string &name);

// Bad usage, configuration or input: one line for the user, exit status 2.
struct BadInput : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Throws when something that the program cannot do without has failed.
void require(zt_status_t status, const std::string &what);

// What the user wants one of the threads to do wrong.
struct Fault {
    std::string stall;  // this thread stops keeping alive, until the run is over
    std::string crash;  // this thread writes through a null pointer
};

// One run, from its start to the moment when everybody is asked to finish.
class Run {
  public:
    explicit Run(Fault fault);
    ~Run();
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    uint64_t now_us() const { return zt_time_get_us() - start_us_; }
    bool stopping() const { return stopping_; }
    void stop();
    void pause(int32_t ms) const;  // until the time is up or the run is being stopped
    void misbehave(const char *thread) const;

  private:
    uint64_t start_us_;
    zt_event_t stop_event_{};  // set once and never consumed: it wakes everybody
    std::atomic<bool> stopping_{false};
    Fault fault_;
};

// The watchdog manager over a stand-in for the hardware, which counts how often it is fed. The main
// thread does the checking; should it hang itself, real hardware would starve and start anew.
class Supervisor {
  public:
    explicit Supervisor(int32_t timeout_ms);
    ~Supervisor();
    Supervisor(const Supervisor &) = delete;
    Supervisor &operator=(const Supervisor &) = delete;

    void check() { zt_watchdog_mgr_check(&dogs_.manager); }
    void watch(zt_thread_t *thread);
    uint64_t feeds() const { return hardware_.feeds; }
    const std::string &expired() const { return expired_; }  // the first one overdue, or ""

  private:
    struct Hardware {
        zt_hw_watchdog_t operations;
        bool enabled;
        uint64_t feeds;
    };
    // The library hands the manager's address to the callback, which steps from there to the owner.
    struct Dogs {
        zt_watchdog_mgr_t manager;
        Supervisor *owner;
    };
    static zt_status_t enable(zt_hw_watchdog_t *hw, int flag);
    static zt_status_t feed(zt_hw_watchdog_t *hw);
    static zt_status_t close(zt_hw_watchdog_t *hw);
    static void on_expired(zt_watchdog_mgr_t *manager, zt_watchdog_t *entry);

    int32_t timeout_ms_;
    Hardware hardware_{};
    Dogs dogs_{};
    std::string expired_;
};

// A supervised thread. The body calls keep_alive on every pass of its loop.
class Worker {
  public:
    using Body = std::function<void(Worker &)>;
    Worker(const Run &run, Supervisor &supervisor, const char *name, Body body);
    ~Worker() { join(); }
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

    const char *name() const { return name_; }
    void keep_alive();
    bool join();  // true when the thread was there and has been joined

  private:
    static int32_t enter(zt_thread_t *self, void *worker);

    const Run &run_;
    Supervisor &supervisor_;
    const char *name_;
    Body body_;
    zt_thread_t thread_ = nullptr;  // the library keeps its address: a worker must not move
};

}  // namespace camera

#endif  // CAMERA_RUN_HPP
