// A keep-alive beside the clock read that it contains, and a pan-tilt-zoom command on its whole way
// beside the locks, copies and callbacks that this way consists of.
#include <pthread.h>

#include <cstring>
#include <ctime>

#include "support.hpp"
#include "zt/memory.h"
#include "zt/mutex.h"
#include "zt/ptz_internal.h"
#include "zt/watchdog.h"

namespace bench {
namespace {

struct KeepAlive {
    zt_watchdog_t entry{};
    explicit KeepAlive(size_t) {}
    void step() { zt_watchdog_keep_alive(&entry); }
};

struct Clock {
    timespec now;
    explicit Clock(size_t) {}
    void step() {
        clock_gettime(CLOCK_MONOTONIC_RAW, &now);
        benchmark::DoNotOptimize(now);
    }
};

uint64_t g_ready, g_heard;

void on_message(zt_ptz_t *, const zt_ptz_msg_t *msg, void *) {
    require(msg->u.result.code == ZT_PTZ_COMMAND_FREE, "a wrong result");
    ++g_heard;
}

// Send, get, put result: one client, a driver that takes the command at once.
struct Ptz {
    zt_ptz_t ptz;
    uint32_t client = 0;
    zt_ptz_params_t block{}, taken{};
    zt_ptz_result_t result{};

    explicit Ptz(size_t) {
        zt_ptz_init(&ptz);
        ptz.init_capability = [](zt_ptz_t *, zt_ptz_capability_t *) -> zt_status_t { return 0; };
        ptz.command_ready = [](zt_ptz_t *) { ++g_ready; };
        ptz.release = [](zt_ptz_t *) {};
        zt_ptz_internal_param_t param;
        zt_ptz_internal_get_default_param(&param);
        require(zt_ptz_internal_create(&ptz, &param) == 0, "no channel");
        require(zt_ptz_register(&ptz, &client, "bench", on_message, nullptr) == 0, "no client");
    }
    ~Ptz() { zt_ptz_destroy(&ptz); }
    void step() {
        const uint64_t before = g_heard;
        uint32_t sent = 0, seq = 0;
        bool good = zt_ptz_send_command(&ptz, client, ZT_PTZ_COMMAND_FREE, &block, &sent) == 0;
        good &=
            zt_ptz_internal_get_command(&ptz, &result.client_id, &seq, &result.code, &taken) == 0;
        zt_ptz_internal_put_result(&ptz, &result, &taken);
        require(good && seq == sent && g_heard == before + 1, "a command was lost");
    }
};

// A pair of the recursive lock for each of the three calls; the block into the queue and out of it; the
// result kept and put into a message of zeros; the driver and the client told. kOurs: with locks and
// copies through our exported operations, as the channel has to do it; else straight by the C library.
template <bool kOurs>
struct PtzFloor {
    zt_mutex_t lock;
    void (*command_ready)(zt_ptz_t *) = [](zt_ptz_t *) { ++g_ready; };
    zt_ptz_client_cb_t cb = on_message;
    zt_ptz_params_t block{}, slot{}, taken{};
    zt_ptz_result_t result{};

    explicit PtzFloor(size_t) {
        require(zt_mutex_init(&lock) == 0, "no lock");
        benchmark::DoNotOptimize(command_ready);
        benchmark::DoNotOptimize(cb);
    }
    ~PtzFloor() { zt_mutex_destroy(&lock); }
    void take() { kOurs ? zt_mutex_lock(&lock) : pthread_mutex_lock(&lock.mutex); }
    void give() { kOurs ? zt_mutex_unlock(&lock) : pthread_mutex_unlock(&lock.mutex); }
    template <class Record>
    static void copy(Record *to, const Record *from) {
        kOurs ? zt_memcpy(to, from, sizeof *to) : std::memcpy(to, from, sizeof *to);
        benchmark::DoNotOptimize(*to);
    }
    void step() {
        take();
        copy(&slot, &block);
        command_ready(nullptr);
        give();

        take();
        copy(&taken, &slot);
        give();

        result.code = ZT_PTZ_COMMAND_FREE;
        take();
        zt_ptz_result_t kept;
        copy(&kept, &result);
        zt_ptz_msg_t msg;
        kOurs ? zt_memset(&msg, 0, sizeof msg) : std::memset(&msg, 0, sizeof msg);
        copy(&msg.u.result, &kept);
        cb(nullptr, &msg, nullptr);
        give();
    }
};

}  // namespace

void add_supervision() {
    add_fixture<KeepAlive>("keep_alive/1/zt", 1);
    add_fixture<Clock>("keep_alive/1/clock", 1);
    add_fixture<Ptz>("ptz/1/zt", 1);
    add_fixture<PtzFloor<false>>("ptz/1/floor", 1);
    add_fixture<PtzFloor<true>>("ptz/1/floor-exported", 1);
}

}  // namespace bench
