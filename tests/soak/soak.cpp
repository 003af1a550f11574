// Every service at once, on more threads than there are processors, for as many seconds as are asked for.
// What went in must have come out in the end, to the last item.
// SPDX-License-Identifier: MIT
#include <filesystem>

#include "zt/base.h"

#include "support/test.hpp"

using Count = std::atomic<uint64_t>;
// The first four are sums of the items, which are random numbers.
static Count g_put, g_got, g_discarded, g_dropped, g_sent, g_executed, g_cleared, g_heard, g_logged, g_printed;
static std::atomic<bool> g_stop{false}, g_balanced{true};
static void check(bool right, const char *what) { right || (g_balanced = false, printf("soak: wrong: %s\n", what)); }

// A thread that comes and goes: main starts it again, with another seed, once it has ended.
struct Worker {
    zt_thread_t thread = nullptr;
    std::atomic<bool> ended{true};
    std::mt19937 random;
    uint32_t pick(uint32_t below) { return random() % below; }
    void rest() { pick(8) == 0 ? sched_yield() : pick(256) == 0 ? usleep(pick(300)) : 0; }
} g_workers[26];

// The second queue loses and regains its nodes all the time, and the items with them.
static zt_queue_t g_queues[2], *g_lossy = &g_queues[1];  // g_lossy: whose nodes main frees
static uint64_t value(const volatile void *item) { return reinterpret_cast<uintptr_t>(item); }
static zt_queue_node_t *node_of(zt_list_head_t *link) { return ZT_CONTAINER_OF(link, zt_queue_node_t, link); }

static constexpr decltype(&zt_queue_add_head) kPut[] = {zt_queue_add_head, zt_queue_add_tail};
static void put(Worker &w) {
    void *const item = reinterpret_cast<void *>(w.random() << 20 | 1);
    zt_queue_t *const q = &g_queues[w.pick(2)];
    const auto drop = [](auto, void *old, void *) { g_discarded += value(old); };
    const int way = w.pick(4), ms = w.pick(4) - 1;
    if (way < 3 ? kPut[w.pick(2)](q, item, ms) : zt_queue_add_tail_with_discard(q, item, drop, nullptr)) return;
    g_put += value(item);
}

static constexpr decltype(&zt_queue_get_head) kGet[] = {zt_queue_get_head, zt_queue_get_tail};
static void get(Worker &w) { g_got += value(kGet[w.pick(2)](&g_queues[w.pick(2)], w.pick(4) - 1)); }

static void move_node(Worker &w) {  // positions hold as long as the lock is held
    zt_queue_t *const queue = &g_queues[w.pick(2)];
    zt_mutex_lock(&queue->lock);
    if (void *item = queue->count > 0 ? zt_queue_get_at(queue, node_of(queue->items.prev)) : nullptr)
        check(zt_queue_insert_after(queue, item, node_of(&queue->items), 0) == 0, "a node just freed");
    zt_mutex_unlock(&queue->lock);
}

alignas(64) static char g_memory[64'000];
static zt_id_pool_t g_ids;
static zt_mem_heap_t g_heap;
static void use_pools(Worker &w) {
    int32_t id = w.pick(200);
    void *owner = nullptr;
    zt_mem_heap_block_t *block = zt_mem_heap_alloc(&g_heap, 1 + w.pick(5'000));
    if (!block || zt_id_pool_alloc_specific(&g_ids, &id, &id)) check(!zt_id_pool_alloc(&g_ids, &id, &id), "an id");
    char *const bytes = reinterpret_cast<char *>(block ? block->addr : 0), tag = w.pick(256);
    const uint32_t size = block ? block->size : 0;
    std::fill_n(bytes, size, tag), w.rest(), w.pick(4) ? use_pools(w) : void();
    check(std::count(bytes, bytes + size, tag) == size, "memory has one owner"), zt_mem_heap_free(&g_heap, block);
    check(zt_id_pool_lookup(&g_ids, id, &owner) && owner == &id && zt_id_pool_free(&g_ids, id), "an id's owner");
}

static void expire(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry) { entry ? zt_watchdog_unregister(mgr, entry) : 0; }
static zt_watchdog_mgr_t g_watchdogs = ZT_WATCHDOG_MGR_INIT(g_watchdogs, expire);
static void be_watched(Worker &w) { zt_thread_enable_watchdog(&w.thread, &g_watchdogs, w.pick(4)); }

static std::recursive_mutex g_trees;
static const zt_ntf_mgr_hook_t kLock = [](auto) { g_trees.lock(); }, kUnlock = [](auto) { g_trees.unlock(); };
static const zt_ntf_mgr_ops_t kLocks = {kLock, kUnlock, kLock, kUnlock, kLock, kUnlock};
static zt_ntf_mgr_t g_notifications;
static void notify(Worker &w) {  // everybody publishes 1, and something that nobody else publishes
    thread_local int heard;
    const uint64_t ids[] = {1, value(&w)};
    const auto hear = [](auto, uint64_t subscriber, uint64_t id) { return heard += id == subscriber, true; };
    heard = zt_ntf_mgr_subscribe(&g_notifications, ids[1], 3, ids, 2, hear);
    for (const int i : {0, 1, 0, 1}) zt_ntf_mgr_publish(&g_notifications, ids[i]), w.rest();
    check(zt_ntf_mgr_unsubscribe(&g_notifications, ids[1]) == 0 && heard == 2, "notifications heard");
}

static zt_ptz_t g_ptz;
static void clear(zt_ptz_t *ptz) {  // under the channel's lock: nothing comes between the count and the clear
    for (auto *first = ptz->peek_command(ptz), *p = first->next; p != first; p = p->next) ++g_cleared;
    zt_ptz_clear(ptz);
}

static void send_commands(Worker &w) {
    uint32_t id = 0;
    if (zt_ptz_register(
            &g_ptz, &id, "client", [](auto...) { ++g_heard; }, nullptr) != 0)
        return;
    for (int i = w.pick(30); i > 0; --i, w.rest()) g_sent += !zt_ptz_send_command(&g_ptz, id, 1, nullptr, nullptr);
    zt_ptz_unregister(&g_ptz, id);
}

static void drive(Worker &) {
    zt_ptz_result_t result = {};
    if (zt_ptz_internal_get_command(&g_ptz, &result.client_id, nullptr, &result.code, nullptr) == 0)
        ++g_executed, zt_ptz_internal_put_result(&g_ptz, &result, nullptr);
}

static zt_logging_category_t zt__logc_soak = {ZT_LOG_LEVEL_INFO, "soak"};
static int print_nothing(const char *, ...) { return ++g_printed, 0; }
static void log_line(Worker &) { ZT_LOG_INFO(soak, "line %d", static_cast<int>(++g_logged)); }

// What workers do until they end: operations that leave nothing behind.
static const std::pair<const char *, void (*)(Worker &)> kRoles[] = {
    {"put", put},          {"get", get},       {"move", move_node},     {"pools", use_pools},
    {"watch", be_watched}, {"notify", notify}, {"send", send_commands}, {"drive", drive},
    {"log", log_line}};
static Count g_acts[std::size(kRoles)], g_threads, g_armed, g_fired;

static int32_t work(zt_thread_t *thread, void *self) {
    Worker &w = *static_cast<Worker *>(self);
    const size_t role = (&w - g_workers) % std::size(kRoles);
    for (int left = w.pick(2'000); left > 0 && !g_stop; --left, ++g_acts[role])
        kRoles[role].second(w), zt_thread_keep_alive(thread), w.rest();
    return w.ended = true, 0;
}

static void set_up() {
    const zt_ptz_internal_param_t depth = {8};
    zt_ptz_init(&g_ptz), zt_logc_set_print_cb(print_nothing);
    g_ptz.init_capability = [](auto...) { return 0; }, g_ptz.release = [](auto) {};
    g_ptz.command_ready = [](auto ptz) { g_sent % 512 == 0 ? clear(ptz) : void(); };
    const int failures = zt_ptz_internal_create(&g_ptz, &depth) + zt_ntf_mgr_init(&kLocks, &g_notifications) +
                         zt_queue_create(&g_queues[0], 4) + zt_queue_create(&g_queues[1], 4) +
                         zt_id_pool_create(&g_ids, 16) + zt_watchdog_mgr_create(&g_watchdogs, nullptr);
    check(failures + zt_mem_heap_create(&g_heap, value(g_memory), sizeof g_memory, 64) == 0, "set-up");
}

// Starts threads, supervises them and takes the second queue's nodes away, for so long.
static void supervise(uint64_t end_ms) {
    zt_timer_mgr_t timers = {{}, [](auto, auto *ms) { return *ms = zt_time_get_ms(), 0; }, [](auto...) { return 0; }};
    zt_timer_t all[20] = {};
    for (auto &t : all) t.cb = [](auto...) { ++g_fired; };
    for (Worker self; zt_time_get_ms() < end_ms; zt_watchdog_mgr_check(&g_watchdogs), usleep(self.pick(300))) {
        for (auto &w : g_workers)
            if (w.ended.exchange(false))
                zt_thread_wait_and_destory(&w.thread, nullptr), w.random.seed(++g_threads),
                    check(zt_thread_create_and_run(&w.thread, 3, work, &w, "worker") == 0, "a thread's start");
        zt_timer_mgr_process_alarm(&timers);
        for (auto &t : all) g_armed += !t.node.in_heap && !zt_timer_mgr_schedule_timer(&timers, &t, self.pick(5));
        if (self.pick(2)) zt_queue_decommit(g_lossy, self.pick(2)), self.rest();
        check(zt_queue_commit(g_lossy, 1 + self.pick(6)) == 0, "a commit");
    }
    g_stop = true, check(g_armed == g_fired + timers.heap.count, "timers armed = fired + left");
    for (auto &queue : g_queues) zt_queue_decommit(g_lossy = &queue, true);  // releases those who are blocked
    for (auto &w : g_workers) zt_thread_wait_and_destory(&w.thread, nullptr);
}

static long entries(const char *directory) { return std::distance(std::filesystem::directory_iterator(directory), {}); }
static long held() { return entries("/proc/self/fd") * 1000 + entries("/proc/self/task"); }

// In place of the library's; under the queue's lock when items are dropped.
void zt_free(void *ptr) {
    if (zt_gettid() == zt_getpid() && ptr == g_lossy->nodes)
        for (auto *p = g_lossy->items.next; p != &g_lossy->items; p = p->next) g_dropped += value(node_of(p)->data);
    std::free(ptr);
}

int main(int, char **arguments) {
    // Has the sanitizer start a thread of its own, and waits until the kernel no longer lists ours.
    std::string own = "/proc/self/task/";
    std::thread([&] { own += std::to_string(zt_gettid()); }).join();
    while (std::filesystem::exists(own)) usleep(1'000);
    alarm(std::stoul(arguments[1]) + 60);  // ends those who sleep for ever
    const long before = held();
    set_up(), supervise(zt_time_get_ms() + std::stoul(arguments[1]) * 1000), clear(&g_ptz);
    check(g_put == g_got + g_discarded + g_dropped, "items put = got + discarded + dropped");
    check(g_sent == g_executed + g_cleared && g_heard <= g_executed && g_logged == g_printed, "commands; lines");
    check(g_heap->blocks.next->next == &g_heap->blocks && g_heap->free_size == sizeof g_memory, "one free block");
    check(g_watchdogs.clients.next == &g_watchdogs.clients && zt_ptz_get_register_num(&g_ptz) == 0, "nobody left");
    zt_queue_destroy(&g_queues[0]), zt_queue_destroy(&g_queues[1]), zt_ptz_destroy(&g_ptz);
    zt_ntf_mgr_deinit(&g_notifications);
    for (int i = 0; i < 500 && held() != before; ++i) usleep(10'000);  // the kernel lists a joined thread a while
    check(held() == before, "descriptors and threads as before");
    for (size_t i = 0; i < std::size(kRoles); ++i) printf("%-8s %10lu\n", kRoles[i].first, g_acts[i].load());
    printf("threads  %10lu\ntimers   %10lu\n", g_threads.load(), g_fired.load());
    return puts(g_balanced ? "all accounted for" : "NOT all accounted for"), !g_balanced;
}
