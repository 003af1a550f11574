// A keep-alive beside the clock read that it contains, and a pan-tilt-zoom command on its whole way
// beside the locks, copies and callbacks that this way consists of.
#include <pthread.h>

#include <cstring>
#include <ctime>

#include "support.hpp"
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
// result kept and put into a message of zeros; the driver and the client told.
struct PtzFloor {
    pthread_mutex_t lock;
    void (*command_ready)(zt_ptz_t *) = [](zt_ptz_t *) { ++g_ready; };
    zt_ptz_client_cb_t cb = on_message;
    zt_ptz_params_t block{}, slot{}, taken{};
    zt_ptz_result_t result{};

    explicit PtzFloor(size_t) {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&lock, &attributes);
        benchmark::DoNotOptimize(command_ready);
        benchmark::DoNotOptimize(cb);
    }
    ~PtzFloor() { pthread_mutex_destroy(&lock); }
    void step() {
        pthread_mutex_lock(&lock);
        slot = block;
        benchmark::DoNotOptimize(slot);
        command_ready(nullptr);
        pthread_mutex_unlock(&lock);

        pthread_mutex_lock(&lock);
        taken = slot;
        benchmark::DoNotOptimize(taken);
        pthread_mutex_unlock(&lock);

        result.code = ZT_PTZ_COMMAND_FREE;
        pthread_mutex_lock(&lock);
        zt_ptz_result_t copy = result;
        benchmark::DoNotOptimize(copy);
        zt_ptz_msg_t msg;
        std::memset(&msg, 0, sizeof msg);
        msg.u.result = copy;
        cb(nullptr, &msg, nullptr);
        pthread_mutex_unlock(&lock);
    }
};

}  // namespace

void add_supervision() {
    add_fixture<KeepAlive>("keep_alive/1/zt", 1);
    add_fixture<Clock>("keep_alive/1/clock", 1);
    add_fixture<Ptz>("ptz/1/zt", 1);
    add_fixture<PtzFloor>("ptz/1/floor", 1);
}

}  // namespace bench
