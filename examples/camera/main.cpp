// main.cpp - a small video device in one process, built from the parts of the library:
//
//     clip or pattern -> capture -> queue (drops the oldest) -> encoder -> digests, timing
//     script -> three PTZ clients -> channel -> PTZ driver -> results and notices to the clients
//     main thread: timers, watchdog checks, statistics; at the end the accounts and the report
//
// SPDX-License-Identifier: MIT
#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "config.hpp"
#include "device.hpp"
#include "options.hpp"
#include "report.hpp"

namespace camera {
namespace {

constexpr int kAccounted = 0, kNotAccounted = 1, kBadInput = 2;

// ThreadSanitizer adds a thread of its own to the first one that is started.
#if defined(__SANITIZE_THREAD__)
constexpr ptrdiff_t kHelpers = 1;
#else
constexpr ptrdiff_t kHelpers = 0;
#endif

// What the kernel says that this process holds.
struct Holdings {
    ptrdiff_t threads, descriptors;
    bool operator==(const Holdings &) const = default;
};

ptrdiff_t entries(const char *directory) {
    const std::filesystem::directory_iterator list(directory);
    return std::distance(begin(list), end(list));
}

Holdings holdings() { return {entries("/proc/self/task"), entries("/proc/self/fd")}; }

// A thread that has been joined leaves /proc a moment later.
Holdings settled_holdings(const Holdings &expected) {
    constexpr int kTries = 500, kPauseMs = 10;
    Holdings now = holdings();
    for (int i = 0; i < kTries && now != expected; ++i) {
        zt_event_wait_for_multiple(nullptr, 0, kPauseMs);
        now = holdings();
    }
    return now;
}

constinit std::atomic<Device *> g_device{nullptr};  // whom a signal ends
constinit std::atomic<bool> g_signalled{false};     // also before there is a device

void on_signal(int) {
    g_signalled = true;
    if (Device *device = g_device; device != nullptr) device->interrupt();
}

void catch_signals() {
    struct sigaction action {};
    action.sa_handler = on_signal;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

// True when everything that the device did is accounted for.
bool play(const Options &options) {
    const Config config = read_config(options.config);
    Device device(options, config, read_script(options.ptz));
    if (!options.report.empty() && !std::ofstream(options.report)) {  // now rather than at the end
        throw BadInput(options.report + ": cannot be written");
    }
    bool good = show_info_frames(device.info_frames);
    g_device = &device;
    if (g_signalled) device.interrupt();
    device.play();
    g_device = nullptr;
    std::printf("ended by %s after %.1f s\n", device.ended_by,
                static_cast<double>(device.run_us) / 1e6);
    good = device.accounted_for() && good;
    if (!options.report.empty()) write_report(device, options.report);
    return good;
}

int run(int argc, char **argv) {
    const Options options = parse_options(argc, argv);
    if (options.help) {
        std::fputs(kUsage, stdout);
        return kAccounted;
    }
    catch_signals();
    const Holdings before = holdings();
    const bool good = play(options);
    const Holdings expected = {before.threads + kHelpers, before.descriptors};
    const Holdings after = settled_holdings(expected);
    const bool clean = after == expected;
    std::printf("%s: threads %td, descriptors %td, as many as at the start: %s\n",
                good && clean ? "all accounted for" : "NOT all accounted for", after.threads,
                after.descriptors, clean ? "yes" : "no");
    return good && clean ? kAccounted : kNotAccounted;
}

}  // namespace
}  // namespace camera

int main(int argc, char **argv) {
    zt_backtrace_segfault(nullptr);  // before any other thread runs
    zt_logc_enable_prefix_time(true);
    zt_logc_enable_prefix_category(true);
    try {
        return camera::run(argc, argv);
    } catch (const camera::BadInput &error) {
        std::fprintf(stderr, "camera: %s\n", error.what());
        return camera::kBadInput;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "camera: %s\n", error.what());
        return camera::kNotAccounted;
    }
}
