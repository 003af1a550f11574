// Every service at once, on more threads than there are processors, for as many seconds as are asked for.
// What went in must have come out in the end, to the last item.
// SPDX-License-Identifier: MIT
#include <filesystem>
#include <shared_mutex>

#include "zt/base.h"

#include "support/test.hpp"

namespace {

using Count = std::atomic<uint64_t>;
std::atomic<bool> g_stop{false}, g_balanced{true};
void check(bool right, const char *what) { right || (g_balanced = false, printf("soak: wrong: %s\n", what)); }

// A thread that comes and goes: main starts it again, with another seed, once it has ended.
struct Worker {
    zt_thread_t thread = nullptr;
    std::atomic<bool> ended{true};
    std::mt19937 random;
    uint32_t pick(uint32_t below) { return random() % below; }
    void rest() { pick(8) == 0 ? sched_yield() : pick(256) == 0 ? usleep(pick(300)) : 0; }
} g_workers[26];

// The second queue loses and regains its nodes all the time, and the items with them.
zt_queue_t g_queues[2], *g_dropping;         // g_dropping: whose nodes main frees
Count g_put, g_got, g_discarded, g_dropped;  // sums of the items, which are random numbers
uint64_t number(const volatile void *item) { return reinterpret_cast<uintptr_t>(item); }
zt_queue_node_t *node_of(zt_list_head_t *link) { return ZT_CONTAINER_OF(link, zt_queue_node_t, link); }

void put(Worker &w) {
    void *const item = reinterpret_cast<void *>(w.random() << 20 | 1);
    zt_queue_t *const queue = &g_queues[w.pick(2)];
    const auto discard = [](auto, void *old, void *) { g_discarded += number(old); };
    const auto add = w.pick(2) ? zt_queue_add_head : zt_queue_add_tail;
    const int status =
        w.pick(4) ? add(queue, item, w.pick(4) - 1) : zt_queue_add_tail_with_discard(queue, item, discard, nullptr);
    g_put += status == 0 ? number(item) : 0;
}

void get(Worker &w) {
    const auto from = w.pick(2) ? zt_queue_get_head : zt_queue_get_tail;
    g_got += number(from(&g_queues[w.pick(2)], w.pick(4) - 1));
}

void move_node(Worker &w) {  // positions hold as long as the lock is held
    zt_queue_t *const queue = &g_queues[w.pick(2)];
    zt_mutex_lock(&queue->lock);
    if (void *item = queue->count > 0 ? zt_queue_get_at(queue, node_of(queue->items.prev)) : nullptr)
        check(zt_queue_insert_after(queue, item, node_of(&queue->items), 0) == 0, "a node just freed");
    zt_mutex_unlock(&queue->lock);
}

void commit(Worker &w) {
    g_dropping = &g_queues[1];
    if (w.pick(2)) zt_queue_decommit(g_dropping, w.pick(2)), w.rest();
    check(zt_queue_commit(g_dropping, 1 + w.pick(6)) == 0, "a commit"), usleep(w.pick(300));
}

zt_id_pool_t g_ids;
void use_ids(Worker &w) {
    int32_t id = w.pick(200);
    void *owner = nullptr;
    if (zt_id_pool_alloc_specific(&g_ids, &id, &id) != 0) check(zt_id_pool_alloc(&g_ids, &id, &id) == 0, "an id");
    w.rest(), w.pick(4) ? use_ids(w) : void();
    check(zt_id_pool_lookup(&g_ids, id, &owner) && owner == &id && zt_id_pool_free(&g_ids, id), "an id's owner");
}

alignas(64) char g_memory[64'000];
zt_mem_heap_t g_heap;
void use_memory(Worker &w) {
    zt_mem_heap_block_t *const block = zt_mem_heap_alloc(&g_heap, 1 + w.pick(5'000));
    if (block == nullptr) return;
    char *const bytes = reinterpret_cast<char *>(block->addr), owner = w.pick(256);
    std::fill_n(bytes, block->size, owner), w.rest(), w.pick(4) ? use_memory(w) : void();
    check(std::count(bytes, bytes + block->size, owner) == block->size, "memory has one owner");
    zt_mem_heap_free(&g_heap, block);
}

void expire(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry) { entry &&zt_watchdog_unregister(mgr, entry); }
zt_watchdog_mgr_t g_watchdogs = ZT_WATCHDOG_MGR_INIT(g_watchdogs, expire);
void be_watched(Worker &w) { zt_thread_enable_watchdog(&w.thread, &g_watchdogs, w.pick(4)); }

std::shared_mutex g_trees, g_flags;
const zt_ntf_mgr_ops_t kLocks = {[](auto) { g_trees.lock_shared(); }, [](auto) { g_trees.unlock_shared(); },
                                 [](auto) { g_trees.lock(); },        [](auto) { g_trees.unlock(); },
                                 [](auto) { g_flags.lock(); },        [](auto) { g_flags.unlock(); }};
zt_ntf_mgr_t g_notifications;
void notify(Worker &w) {  // everybody publishes 1, and something that nobody else publishes
    thread_local int heard;
    const uint64_t ids[] = {1, number(&w)};
    const auto hear = [](auto, uint64_t subscriber, uint64_t id) { return heard += id == subscriber, true; };
    heard = zt_ntf_mgr_subscribe(&g_notifications, ids[1], 3, ids, 2, hear);
    for (const int i : {0, 1, 0, 1}) zt_ntf_mgr_publish(&g_notifications, ids[i]), w.rest();
    check(zt_ntf_mgr_unsubscribe(&g_notifications, ids[1]) == 0 && heard == 2, "notifications heard");
}

void run_timers(Worker &w) {
    thread_local uint64_t now, fired;
    zt_timer_mgr_t manager = {{}, [](auto, auto *time) { return *time = now, 0; }, [](auto...) { return 0; }};
    zt_timer_t timers[50] = {};
    now = fired = 0;
    for (auto &t : timers) t.cb = [](auto...) { ++fired; }, zt_timer_mgr_schedule_timer(&manager, &t, w.pick(999));
    for (int i = 0; i < 20; ++i) zt_timer_mgr_cancel_timer(&manager, &timers[i]);
    for (; now < 2'000; now += w.pick(300)) zt_timer_mgr_process_alarm(&manager);
    check(fired == 30, "timers fired");
}

zt_ptz_t g_ptz;
Count g_sent, g_executed, g_cleared;
void clear(zt_ptz_t *ptz) {  // under the channel's lock: nothing comes between the count and the clear
    const auto *const first = ptz->peek_command(ptz), *p = first->next;
    for (; p != first; p = p->next) ++g_cleared;  // passes the list's head as well
    zt_ptz_clear(ptz);
}

void send_commands(Worker &w) {
    uint32_t id = 0;
    std::atomic<bool> here = true;
    const auto hear = [](auto, auto, void *to) { check(*static_cast<std::atomic<bool> *>(to), "a client that left"); };
    if (zt_ptz_register(&g_ptz, &id, "client", hear, &here) != 0) return;
    for (int i = w.pick(30); i > 0; --i, w.rest()) g_sent += !zt_ptz_send_command(&g_ptz, id, 1, nullptr, nullptr);
    zt_ptz_unregister(&g_ptz, id), here = false;
}

void drive(Worker &) {
    zt_ptz_result_t result = {};
    if (zt_ptz_internal_get_command(&g_ptz, &result.client_id, nullptr, &result.code, nullptr) == 0)
        ++g_executed, zt_ptz_internal_put_result(&g_ptz, &result, nullptr);
}

Count g_logged, g_printed;
zt_logging_category_t zt__logc_soak = {ZT_LOG_LEVEL_INFO, "soak"};
int print_nothing(const char *, ...) { return ++g_printed, 0; }
void log_line(Worker &) { ZT_LOG_INFO(soak, "line %d", static_cast<int>(++g_logged)); }

// What workers do until they end: operations that leave nothing behind.
const std::pair<const char *, void (*)(Worker &)> kRoles[] = {
    {"put", put},          {"get", get},       {"move", move_node},    {"ids", use_ids},        {"memory", use_memory},
    {"watch", be_watched}, {"notify", notify}, {"timers", run_timers}, {"send", send_commands}, {"drive", drive},
    {"log", log_line}};
Count g_acts[std::size(kRoles)];

int32_t work(zt_thread_t *thread, void *self) {
    Worker &w = *static_cast<Worker *>(self);
    const size_t role = (&w - g_workers) % std::size(kRoles);
    for (int left = w.pick(2'000); left > 0 && !g_stop; --left, ++g_acts[role])
        kRoles[role].second(w), zt_thread_keep_alive(thread), w.rest();
    return w.ended = true, 0;
}

void set_up() {
    const zt_ptz_internal_param_t depth = {8};
    zt_ptz_init(&g_ptz), zt_logc_set_print_cb(print_nothing);
    g_ptz.init_capability = [](auto...) { return 0; }, g_ptz.release = [](auto) {};
    g_ptz.command_ready = [](auto ptz) { g_sent % 512 == 0 ? clear(ptz) : void(); };
    const int failures = zt_ptz_internal_create(&g_ptz, &depth) + zt_ntf_mgr_init(&kLocks, &g_notifications) +
                         zt_queue_create(&g_queues[0], 4) + zt_queue_create(&g_queues[1], 4) +
                         zt_id_pool_create(&g_ids, 16) + zt_watchdog_mgr_create(&g_watchdogs, nullptr);
    check(failures + zt_mem_heap_create(&g_heap, number(g_memory), sizeof g_memory, 64) == 0, "set-up");
}

// Starts threads, supervises them and takes the second queue's nodes away, for so long.
uint32_t supervise(uint64_t end_ms) {
    Worker self;
    uint32_t threads = 0;
    for (; zt_time_get_ms() < end_ms; commit(self), zt_watchdog_mgr_check(&g_watchdogs))
        for (auto &w : g_workers) {
            if (!w.ended.exchange(false)) continue;
            zt_thread_wait_and_destory(&w.thread, nullptr), w.random.seed(++threads);
            check(zt_thread_create_and_run(&w.thread, 3, work, &w, "worker") == 0, "a thread's start");
        }
    g_stop = true;
    for (auto &queue : g_queues) zt_queue_decommit(g_dropping = &queue, true);  // releases those who are blocked
    for (auto &w : g_workers) zt_thread_wait_and_destory(&w.thread, nullptr);
    return clear(&g_ptz), threads;
}

void check_balance_and_destroy() {
    check(g_put == g_got + g_discarded + g_dropped, "items put = got + discarded + dropped");
    check(g_sent == g_executed + g_cleared && g_logged == g_printed, "commands sent = executed + cleared; lines");
    for (uint32_t i = 0; i < g_ids.bucket_count; ++i) check(g_ids.buckets[i].next == &g_ids.buckets[i], "no id in use");
    check(g_heap->blocks.next->next == &g_heap->blocks && g_heap->free_size == sizeof g_memory, "one free block");
    check(g_watchdogs.clients.next == &g_watchdogs.clients && zt_ptz_get_register_num(&g_ptz) == 0, "nobody left");
    zt_ptz_destroy(&g_ptz), zt_ntf_mgr_deinit(&g_notifications), zt_watchdog_mgr_destroy(&g_watchdogs);
    zt_queue_destroy(&g_queues[0]), zt_queue_destroy(&g_queues[1]), zt_id_pool_destroy(&g_ids),
        zt_mem_heap_destroy(&g_heap);
}

long entries(const char *directory) { return std::distance(std::filesystem::directory_iterator(directory), {}); }
long held() { return entries("/proc/self/fd") * 1000 + entries("/proc/self/task"); }

}  // namespace

// In place of the library's; under the queue's lock when items are dropped.
void zt_free(void *ptr) {
    if (zt_gettid() == zt_getpid() && g_dropping && ptr == g_dropping->nodes)
        for (auto &all = g_dropping->items, *p = all.next; p != &all; p = p->next)
            g_dropped += number(node_of(p)->data);
    std::free(ptr);
}

int main(int, char **arguments) {
    const uint32_t seconds = std::stoul(arguments[1]);
    std::thread([] {}).join();  // has the sanitizer start its own
    alarm(seconds + 60);        // ends those who sleep for ever
    const long before = held();
    set_up();
    const uint32_t threads = supervise(zt_time_get_ms() + seconds * 1000);
    check_balance_and_destroy(), check(held() == before, "no descriptor and no thread is left");
    for (size_t i = 0; i < std::size(kRoles); ++i) printf("%-8s %12lu\n", kRoles[i].first, g_acts[i].load());
    printf("threads  %12u\n%s\n", threads, g_balanced ? "all accounted for" : "NOT all accounted for");
    return g_balanced ? 0 : 1;
}
