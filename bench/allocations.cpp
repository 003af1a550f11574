// Prints how often each operation calls the allocator once it is in a steady state: name, tab, calls for
// one operation. A program of its own: counting would slow down the peers that allocate.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "zt/base.h"

extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
}

namespace {

constexpr int kTimes = 1000;
constexpr uint32_t kCount = 100;
unsigned long g_calls;

void require(bool condition, const char *what) {
    if (condition) return;
    std::fprintf(stderr, "allocations: %s\n", what);
    std::exit(1);
}

template <class Operation>
void count(const char *name, Operation operation) {
    for (int i = 0; i < kTimes; ++i) operation();
    const unsigned long before = g_calls;
    for (int i = 0; i < kTimes; ++i) operation();
    const double each = static_cast<double>(g_calls - before) / kTimes;
    std::printf("%s\t%g\n", name, each);
}

void count_containers() {
    zt_queue_t queue;
    require(zt_queue_create(&queue, 16) == 0, "no queue");
    count("queue put and get", [&] {
        zt_queue_add_tail(&queue, &queue, 0);
        zt_queue_get_head(&queue, 0);
    });

    zt_id_pool_t pool;
    std::vector<int32_t> ids(kCount);
    size_t at = 0;
    require(zt_id_pool_create(&pool, kCount) == 0, "no pool");
    count("id handed out and freed", [&] {
        zt_id_pool_free(&pool, ids[at]);
        require(zt_id_pool_alloc(&pool, &pool, &ids[at]) == 0, "no id");
        at = (at + 1) % kCount;
    });

    zt_heap_window_t window;
    uint64_t time = 0;
    require(zt_heap_window_create(&window, kCount, kCount, nullptr, 0, 1) == 0, "no window");
    count("sample into a sliding window", [&] {
        ++time;
        zt_heap_window_update_int64(&window, time, static_cast<int64_t>(time % 37));
    });

    zt_timer_mgr_t manager{};
    zt_timer_t timer{};
    manager.set_alarm = [](zt_timer_mgr_t *, uint64_t, int32_t) -> zt_status_t { return 0; };
    count("timer put off", [&] { zt_timer_mgr_schedule_timer_abs(&manager, &timer, ++time); });
}

void count_services() {
    const uint64_t id = 1;
    zt_ntf_mgr_t manager{};
    require(zt_ntf_mgr_init(nullptr, &manager) == 0, "no manager");
    for (uint64_t i = 0; i < 16; ++i) {
        const zt_ntf_cb_t consume = [](zt_ntf_mgr_t *, uint64_t, uint64_t) { return true; };
        require(zt_ntf_mgr_subscribe(&manager, i, 0, &id, 1, consume) == 0, "no subscription");
    }
    count("publish to 16 subscribers", [&] { zt_ntf_mgr_publish(&manager, id); });

    zt_ptz_t ptz;
    zt_ptz_init(&ptz);
    ptz.init_capability = [](zt_ptz_t *, zt_ptz_capability_t *) -> zt_status_t { return 0; };
    ptz.command_ready = [](zt_ptz_t *) {};
    ptz.release = [](zt_ptz_t *) {};
    const zt_ptz_client_cb_t listen = [](zt_ptz_t *, const zt_ptz_msg_t *, void *) {};
    zt_ptz_internal_param_t param;
    zt_ptz_internal_get_default_param(&param);
    uint32_t client = 0;
    require(zt_ptz_internal_create(&ptz, &param) == 0 &&
                zt_ptz_register(&ptz, &client, "count", listen, nullptr) == 0,
            "no channel");
    count("PTZ command from client to driver and back", [&] {
        zt_ptz_params_t block{};
        zt_ptz_result_t result{};
        uint32_t seq = 0;
        bool good = zt_ptz_send_command(&ptz, client, ZT_PTZ_COMMAND_FREE, &block, nullptr) == 0;
        good &=
            zt_ptz_internal_get_command(&ptz, &result.client_id, &seq, &result.code, &block) == 0;
        good &= zt_ptz_internal_put_result(&ptz, &result, &block) == 0;
        require(good, "a command was lost");
    });
}

}  // namespace

extern "C" void *malloc(size_t size) {
    ++g_calls;
    return __libc_malloc(size);
}
extern "C" void *calloc(size_t count, size_t size) {
    ++g_calls;
    return __libc_calloc(count, size);
}
extern "C" void *realloc(void *block, size_t size) {
    ++g_calls;
    return __libc_realloc(block, size);
}

int main() {
    count_containers();
    count_services();
    return 0;
}
