// pipeline - counts the byte values of a file with one reader thread, a bounded queue and two worker
// threads under a watchdog. It shows the library's parts working together:
//
//     mapped file -> reader thread -> bounded queue -> two workers -> totals
//                         main thread: watchdog checks, until the last worker is done
//
// SPDX-License-Identifier: MIT
//
// usage: pipeline [--stall | --crash] FILE
//   --stall   one worker stops keeping alive: the watchdog names it, the exit status is 1
//   --crash   one worker writes through a null pointer: the crash report shows where
// Exit status: 0 when every byte was counted and no watchdog expired, 1 otherwise, 2 for bad usage.
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <vector>

#include "zt/base.h"

// Each category registers itself before main runs; its level can be changed at run time.
ZT_LOGGING_CATEGORY_DEFINE(app, ZT_LOG_LEVEL_INFO);
ZT_LOGGING_CATEGORY_DEFINE(reader, ZT_LOG_LEVEL_INFO);
ZT_LOGGING_CATEGORY_DEFINE(worker, ZT_LOG_LEVEL_INFO);

namespace {

constexpr uint32_t kBlockSize = 4096;
constexpr uint32_t kQueueDepth = 16;
constexpr uint32_t kWorkers = 2;
constexpr int32_t kIdleMs = 100;        // how long a worker waits before it shows that it is alive
constexpr int32_t kWatchdogMs = 3000;   // a worker that is silent for longer is overdue
constexpr int32_t kSupervisionMs = 50;  // how often the main thread checks

enum class Mode { kNormal, kStall, kCrash };

// A piece of the mapped file. The queue carries pointers and owns nothing: the blocks stay where
// they are for as long as the workers run.
struct Block {
    const uint8_t *data;
    uint32_t size;
};

struct Worker {
    zt_thread_t thread = nullptr;  // the library keeps this variable's address: it must not move
    struct Pipeline *pipeline = nullptr;
    Mode mode = Mode::kNormal;
    uint64_t blocks = 0;
    std::array<uint64_t, 256> counts{};
};

struct Pipeline {
    zt_queue_t queue{};
    zt_event_t finished{};  // set once by each thread that has done its work
    // The watchdog's callback gets the manager's address and steps from it to the pipeline.
    zt_watchdog_mgr_t watchdogs{};
    bool expired = false;           // a worker was overdue; main thread only
    std::atomic<bool> stop{false};  // gives the stalled worker its way out
    std::vector<Block> blocks;
    Block end_mark{nullptr, 0};  // one for each worker, behind the last block
    zt_thread_t reader = nullptr;
    std::array<Worker, kWorkers> workers;
};

int32_t read_blocks(zt_thread_t *, void *arg) {
    auto *pipeline = static_cast<Pipeline *>(arg);
    zt_status_t status = ZT_STATUS_SUCCESS;
    for (Block &block : pipeline->blocks) {
        status = zt_queue_add_tail(&pipeline->queue, &block, -1);
        if (status != ZT_STATUS_SUCCESS) break;  // Canceled: the run was given up
    }
    for (uint32_t i = 0; i < kWorkers && status == ZT_STATUS_SUCCESS; ++i) {
        status = zt_queue_add_tail(&pipeline->queue, &pipeline->end_mark, -1);
    }
    ZT_LOG_INFO(reader, "handed over %zu blocks: %s", pipeline->blocks.size(),
                zt_get_status_string(status));
    zt_event_set(&pipeline->finished);
    return status;
}

void misbehave(const Worker &worker) {
    if (worker.mode == Mode::kCrash) {
        volatile int *nowhere = nullptr;
        *nowhere = 1;
    }
    if (worker.mode == Mode::kStall) {
        while (!worker.pipeline->stop) zt_event_wait_for_multiple(nullptr, 0, kSupervisionMs);
    }
}

int32_t count_blocks(zt_thread_t *self, void *arg) {
    auto *worker = static_cast<Worker *>(arg);
    Pipeline *pipeline = worker->pipeline;
    zt_thread_enable_watchdog(self, &pipeline->watchdogs, kWatchdogMs);

    while (!pipeline->stop) {
        zt_thread_keep_alive(self);
        const auto *block =
            static_cast<const Block *>(zt_queue_get_head(&pipeline->queue, kIdleMs));
        if (block == nullptr) continue;  // nothing came: show that we are alive, wait again
        if (block == &pipeline->end_mark) break;
        misbehave(*worker);
        for (uint32_t i = 0; i < block->size; ++i) ++worker->counts[block->data[i]];
        ++worker->blocks;
    }
    ZT_LOG_INFO(worker, "counted %llu blocks", static_cast<unsigned long long>(worker->blocks));
    zt_event_set(&pipeline->finished);
    return 0;
}

// Called by zt_watchdog_mgr_check for each overdue thread, and with null at the end of a scan.
void on_expired(zt_watchdog_mgr_t *manager, zt_watchdog_t *entry) {
    if (entry == nullptr) return;
    Pipeline *pipeline = ZT_CONTAINER_OF(manager, Pipeline, watchdogs);
    if (!pipeline->expired) {
        ZT_LOG_ERROR(app, "thread \"%s\" (tid %lld) has stopped keeping alive", entry->name,
                     static_cast<long long>(entry->user));
    }
    pipeline->expired = true;
}

void cut_into_blocks(Pipeline *pipeline, const zt_mmap_t &file) {
    const auto *bytes = static_cast<const uint8_t *>(file.addr);
    for (uint64_t offset = 0; offset < file.size; offset += kBlockSize) {
        const uint64_t left = file.size - offset;
        const uint32_t size = left < kBlockSize ? static_cast<uint32_t>(left) : kBlockSize;
        pipeline->blocks.push_back({bytes + offset, size});
    }
}

// Creates what the threads share and starts them; a failure ends the program, there is nothing to
// save yet.
void start(Pipeline *pipeline, Mode mode) {
    const auto check = [](zt_status_t status, const char *what) {
        if (status == ZT_STATUS_SUCCESS) return;
        ZT_LOG_ERROR(app, "%s: %s", what, zt_get_status_string(status));
        std::exit(1);
    };
    check(zt_queue_create(&pipeline->queue, kQueueDepth), "queue");
    check(zt_event_init(&pipeline->finished), "event");
    pipeline->watchdogs = ZT_WATCHDOG_MGR_INIT(pipeline->watchdogs, on_expired);
    check(zt_watchdog_mgr_create(&pipeline->watchdogs, nullptr), "watchdog manager");

    for (uint32_t i = 0; i < kWorkers; ++i) {
        Worker &worker = pipeline->workers[i];
        worker.pipeline = pipeline;
        if (i == 0) worker.mode = mode;
        char name[16];
        std::snprintf(name, sizeof name, "worker-%u", i + 1);
        check(zt_thread_create_and_run(&worker.thread, 3, count_blocks, &worker, name), name);
    }
    check(zt_thread_create_and_run(&pipeline->reader, 3, read_blocks, pipeline, "reader"),
          "reader");
}

// Checks the watchdogs until every thread has reported its end. After an expiry the run is given up:
// the cancel releases whoever is blocked on the queue.
void supervise(Pipeline *pipeline) {
    for (int finished = 0; finished < static_cast<int>(kWorkers) + 1;) {
        const int reported = zt_event_wait(&pipeline->finished, kSupervisionMs);
        if (reported > 0) finished += reported;
        zt_watchdog_mgr_check(&pipeline->watchdogs);
        if (pipeline->expired && !pipeline->stop.exchange(true)) {
            zt_queue_decommit(&pipeline->queue, true);
        }
    }
    for (Worker &worker : pipeline->workers) zt_thread_wait_and_destory(&worker.thread, nullptr);
    zt_thread_wait_and_destory(&pipeline->reader, nullptr);
    zt_watchdog_mgr_destroy(&pipeline->watchdogs);
    zt_event_deinit(&pipeline->finished);
    zt_queue_destroy(&pipeline->queue);
}

// Prints the totals; true when every byte of the file was counted.
bool report(const Pipeline &pipeline, uint64_t file_size) {
    std::array<uint64_t, 256> counts{};
    uint64_t blocks = 0;
    for (const Worker &worker : pipeline.workers) {
        for (size_t value = 0; value < counts.size(); ++value)
            counts[value] += worker.counts[value];
        blocks += worker.blocks;
    }
    size_t commonest = 0;
    for (size_t value = 1; value < counts.size(); ++value) {
        if (counts[value] > counts[commonest]) commonest = value;
    }
    const uint64_t total = std::accumulate(counts.begin(), counts.end(), uint64_t{0});
    std::printf("commonest byte: 0x%02zx, %llu times\n", commonest,
                static_cast<unsigned long long>(counts[commonest]));
    std::printf("total: %llu bytes in %llu blocks\n", static_cast<unsigned long long>(total),
                static_cast<unsigned long long>(blocks));
    return total == file_size;
}

}  // namespace

int main(int argc, char **argv) {
    Mode mode = Mode::kNormal;
    if (argc == 3 && std::strcmp(argv[1], "--stall") == 0) mode = Mode::kStall;
    if (argc == 3 && std::strcmp(argv[1], "--crash") == 0) mode = Mode::kCrash;
    if (argc != (mode == Mode::kNormal ? 2 : 3)) {
        std::fprintf(stderr, "usage: pipeline [--stall | --crash] FILE\n");
        return 2;
    }
    zt_backtrace_segfault(nullptr);  // before any other thread runs
    zt_logc_enable_prefix_time(true);
    zt_logc_enable_prefix_tid(true);
    zt_logc_enable_prefix_category(true);

    const char *path = argv[argc - 1];
    zt_mmap_t file;
    const zt_status_t status = zt_mmap_create(&file, path);
    if (status != ZT_STATUS_SUCCESS) {
        ZT_LOG_ERROR(app, "%s: %s", path, zt_get_status_string(status));
        return 1;
    }
    ZT_LOG_INFO(app, "%s: %llu bytes", path, static_cast<unsigned long long>(file.size));
    zt_print_hex(0, 2, 0, file.addr, file.size < 64 ? static_cast<int32_t>(file.size) : 64);

    Pipeline pipeline;
    cut_into_blocks(&pipeline, file);
    start(&pipeline, mode);
    supervise(&pipeline);
    const bool complete = report(pipeline, file.size);
    zt_mmap_destroy(&file);
    return complete && !pipeline.expired ? 0 : 1;
}
