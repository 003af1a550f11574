// Every operation that allocates or calls the system, with each of its calls failing in turn: the status is
// one that the header names, nothing is lost, and the operation then works on the same objects.
// SPDX-License-Identifier: MIT
#include "zt/base.h"

#include <dlfcn.h>

#include "support/test.hpp"

static uint64_t g_n;  // the call that fails in this run; 0: none
static faults::Mode g_mode;
static bool g_failed;  // it did

template <typename Operation>
static int meet(Operation operation) {
    faults::fail_at(g_n, g_mode, faults::Of::kEverything);
    const int status = operation();
    g_failed = faults::disarm();
    return status;
}

// Creates a record over what the last run has left of it, and uses it until a use fails. Its state tells
// whether there is something to destroy: not after a creation that has failed.
template <typename Record>
static auto on(auto state, auto create, auto destroy, auto... uses) {
    return [=] {
        static Record record;
        bool created = false;
        const int status = meet([&] {
            int result = create(&record);
            created = result == 0;
            return (void(result = result == 0 ? uses(&record) : result), ..., result);
        });
        const auto now = std::invoke(state, record);
        EXPECT_TRUE(created || !(now > decltype(+now){}));
        if (now > decltype(+now){}) destroy(&record);
        return status;
    };
}

static auto with(auto operation, auto... arguments) {
    return [=](auto *record) { return operation(record, arguments...); };
}
static auto on_event(auto... uses) {
    return on<zt_event_t>(&zt_event_t::fd, zt_event_init, zt_event_deinit, zt_event_set, uses...);
}
static auto on_queue(auto... uses) {
    return on<zt_queue_t>(&zt_queue_t::initialized, with(zt_queue_create, 1), zt_queue_destroy, uses...);
}
static auto on_id_pool(auto allocate) {
    return on<zt_id_pool_t>(&zt_id_pool_t::buckets, with(zt_id_pool_create, 3), zt_id_pool_destroy, [=](auto pool) {
        int32_t id = 5;
        const zt_status_t status = allocate(pool, pool, &id);
        return status == 0 || id == 5 ? status : -1;
    });
}
static auto on_reader(auto create) {
    const auto destroy = [](auto reader) { zt_ini_read_destroy(std::exchange(*reader, nullptr)); };
    const auto use = [](auto reader) { return zt_ini_reader_get_boolean_default(*reader, nullptr, "k", 0) - 1; };
    return on<zt_ini_reader_t *>(std::identity(), create, destroy, use);
}
static const char kFile[] = "/tmp/zt_faults.ini";

static int register_status() {
    static std::deque<std::string> names;  // stay in use
    const auto name = names.emplace_back("Row" + std::to_string(names.size())).c_str();
    const zt_status_entry_t row = {1000 + static_cast<int>(names.size()), name, ""};
    return meet([&] { return zt_status_extend_register(&row, 1), zt_code_to_status(name) != row.status; });
}

static zt_status_t create_channel(zt_ptz_t *ptz) {
    zt_ptz_internal_param_t depth;
    zt_ptz_internal_get_default_param(&depth);
    zt_ptz_init(ptz);
    ptz->init_capability = [](auto, auto) { return zt_status_t{0}; };
    ptz->command_ready = ptz->release = [](auto) {};
    return zt_ptz_internal_create(ptz, &depth);
}

static int wait_for_20(zt_event_t *event) {
    zt_event_t *events[20];
    std::fill_n(events, 20, event);
    return zt_event_wait_for_multiple(events, 20, 9) - 20;
}
static int print_nothing(const char *, ...) { return 0; }
static int print_frames() { return zt_backtrace_segfault(print_nothing), zt_backtrace(), 0; }
static const auto kPass = [](auto queue) { return zt_queue_add_head(queue, queue, 0) + !zt_queue_get_tail(queue, 0); };
static const auto kSubscribe = [](auto manager) {
    const uint64_t ids[] = {1, 2, 1};
    return zt_ntf_mgr_subscribe(manager, 9, 0, ids, 3, nullptr);
};
static const auto kInitManager = [](auto manager) { return zt_ntf_mgr_init(nullptr, manager); };
static const auto kAddValue = [](auto file) { return zt_json_fmt_add_bool(&file->fmt, nullptr, true), 0; };
static const auto kRange = [](auto heap) { return zt_mem_heap_alloc(heap, 16) ? 0 : 8; };
static const auto kThread = with(zt_thread_create_and_run, 3, nullptr, nullptr, "name");
static const auto kIsLeft = [](auto record) { ADD_FAILURE() << *record; };
static const auto kWindow = with(zt_heap_window_create, 9, 9, nullptr, 0, 1);
static const zt_tsw_param_t kStamps = {8, 10, 10, true};
static zt_hw_watchdog_t g_hardware = {nullptr, nullptr, [](auto) { return 0; }};
static const auto kWatchdog = with(zt_watchdog_mgr_create, &g_hardware);
static const std::identity kItself;

// The statuses are those of a run with a failure; below 0, and 1, are results of other kinds.
static const std::tuple<const char *, std::vector<int>, std::function<int()>> kRows[] = {
    {"mutex_init", {8}, on<zt_mutex_t>(&zt_mutex_t::initialized, zt_mutex_init, zt_mutex_destroy)},
    {"event_init, set", {17, -1}, on_event()},
    {"event_clear", {17, -1}, on_event(zt_event_clear)},
    {"event_is_set", {17, -1, 1}, on_event([](auto e) { return !zt_event_is_set(e); })},
    {"event_try_wait", {17, -1, 1}, on_event([](auto e) { return !zt_event_try_wait(e); })},
    {"event_wait", {17, -1, -2}, on_event([](auto e) { return zt_event_wait(e, 9) - 1; })},
    {"event_wait_for_multiple", {17, -1, -12, -21}, on_event(wait_for_20)},
    {"mmap_create", {8, 13, 17}, on<zt_mmap_t>(&zt_mmap_t::fd, with(zt_mmap_create, kFile), zt_mmap_destroy)},
    {"thread", {0, 4, 8}, on<zt_thread_t>(kItself, kThread, kIsLeft, with(zt_thread_wait_and_destory, nullptr))},
    {"backtrace", {0}, [] { return meet(print_frames); }},
    {"system", {4, 8}, [] { return meet([] { return zt_system(":"); }); }},
    {"status_extend_register", {1}, register_status},
    {"queue_create", {8, 17}, on_queue()},
    {"queue_commit", {8, 17}, on_queue(with(zt_queue_commit, 2))},
    {"queue_put, get", {0, 8, 17}, on_queue(kPass)},
    {"queue wait", {0, 8, 17}, on_queue([](auto q) { return zt_queue_get_tail(q, 2) != nullptr; })},
    {"id_pool_create, alloc", {8}, on_id_pool(zt_id_pool_alloc)},
    {"id_pool_alloc_specific", {8}, on_id_pool(zt_id_pool_alloc_specific)},
    {"mem_heap", {8}, on<zt_mem_heap_t>(kItself, with(zt_mem_heap_create, 0, 64, 16), zt_mem_heap_destroy, kRange)},
    {"heap_window", {8}, on<zt_heap_window_t>(&zt_heap_window_t::slots, kWindow, zt_heap_window_destroy)},
    {"tsw_create", {8}, on<zt_tsw_t>(&zt_tsw_t::entries, with(zt_tsw_create, &kStamps), zt_tsw_destroy)},
    {"ntf_mgr", {8}, on<zt_ntf_mgr_t>(&zt_ntf_mgr_t::priv, kInitManager, zt_ntf_mgr_deinit, kSubscribe)},
    {"ptz_internal_create", {8}, on<zt_ptz_t>(&zt_ptz_t::priv, create_channel, zt_ptz_destroy)},
    {"watchdog_mgr", {8}, on<zt_watchdog_mgr_t>(&zt_watchdog_mgr_t::hw, kWatchdog, zt_watchdog_mgr_destroy)},
    {"ini_reader_create", {8}, on_reader(with(zt_ini_reader_create, "k=true", 6))},
    {"ini_reader_create_from_file", {0, 8, 13, 17}, on_reader(with(zt_ini_reader_create_from_file, kFile))},
    {"json_fmt",
     {0, 13},
     on<zt_json_fmt_file_t>(&zt_json_fmt_file_t::fp, with(zt_json_fmt_open_file, "/dev/null"), zt_json_fmt_close_file,
                            kAddValue)},
};

TEST(Faults, EachIsReportedAndNothingIsLost) {
    uint64_t injected = 0;
    std::ofstream(kFile) << "k=true";
    register_status(), print_frames();  // the rows and the signal stack stay
    close(STDIN_FILENO);                // the next descriptor that the system gives
    for (const auto &[name, statuses, run] : kRows)
        for (uint64_t turn = 2; turn < 200; ++turn, ++injected) {
            SCOPED_TRACE(testing::Message() << name << ", call " << turn / 2 << ", mode " << turn % 2);
            const int64_t held = faults::held();
            g_n = turn / 2, g_mode = faults::Mode(turn % 2);
            const int status = run();
            if (!g_failed) break;
            EXPECT_TRUE(std::count(statuses.begin(), statuses.end(), status)) << status;
            g_n = 0;
            EXPECT_EQ(run(), 0) << "afterwards";
            EXPECT_EQ(faults::held(), held) << "lost";
        }
    unlink(kFile);
    printf("[faults] %zu operations, %lu failures injected, %s\n", std::size(kRows), injected,
           HasFailure() ? "not all handled" : "all handled");
}

// Calls with what cannot be, by name, with their arguments and what they give (-: nothing). Z is a record of
// zeros, F one of all ones; neither is changed.
static const char kCalls[] = R"(
zt_mmap_create 0 F = 7  zt_mmap_destroy 0 = -  zt_event_deinit 0 = -  zt_print_hex 0 0 0 0 1 = -
zt_heap_window_create 0 1 1 0 0 1 = 7  zt_tsw_create 0 F = 7  zt_tsw_create Z 0 = 7
zt_heap_window_update_int64 Z 1 1 = -  zt_mem_heap_create 0 0 1 1 = 7  zt_mem_heap_alloc 0 1 = 0
zt_mem_heap_alloc Z 1 = 0  zt_mem_heap_get_size 0 = 0  zt_mem_heap_get_size Z = 0  zt_mem_heap_destroy 0 = -
zt_mem_heap_destroy Z = -  zt_mem_heap_free 0 F = -  zt_mem_heap_free Z F = -  zt_queue_decommit Z 1 = -
zt_status_extend_register F 0 = -  zt_ini_reader_create 0 F 1 = 7  zt_ini_reader_create F 0 1 = 7
zt_ini_reader_create F F 0 = 7  zt_ini_reader_create_from_file 0 F = 7  zt_ini_reader_create_from_file F 0 = 7
zt_json_fmt_open_file F 0 = 13  zt_thread_create_and_run 0 1 0 0 0 = 7  zt_thread_wait_and_destory 0 0 = 7
zt_thread_enable_watchdog 0 F 1 = 7  zt_thread_enable_watchdog F 0 1 = 7  zt_thread_enable_watchdog Z F 1 = 35
zt_get_pthread_id 0 = 0  zt_thread_keep_alive 0 = -  zt_thread_keep_alive Z = -  zt_ntf_mgr_init 0 0 = 7
zt_ntf_mgr_publish Z 1 = 7  zt_ntf_mgr_subscribe Z 1 0 F 1 0 = 7  zt_ntf_mgr_subscribe F 1 0 0 1 0 = 7
zt_ntf_mgr_unsubscribe Z 1 = 7  zt_ntf_mgr_get_en_mask 0 1 F = 7  zt_ntf_mgr_get_en_mask F 1 0 = 7
zt_ntf_mgr_get_flags 0 1 F = 7  zt_ntf_mgr_get_flags F 1 0 = 7  zt_ntf_mgr_get_raw_flags Z 1 F = 7
zt_ntf_mgr_get_raw_flags F 1 0 = 7  zt_ntf_mgr_set_en_mask Z 1 1 = 7  zt_ptz_register F 0 0 0 0 = 7
zt_ptz_register Z F 0 0 0 = 38  zt_ptz_register 0 F 0 0 0 = 38  zt_ptz_unregister Z 1 = -  zt_ptz_clear Z = 38
zt_ptz_get_register_num Z = 38  zt_ptz_get_capability F 0 = 7  zt_ptz_get_capability 0 Z = 38
zt_ptz_internal_create 0 F = 7  zt_ptz_internal_create Z 0 = 7  zt_ptz_internal_create Z F = 7
zt_ptz_internal_create F F = 35  zt_ptz_internal_get_command Z 0 0 0 0 = 38  zt_ptz_internal_put_result Z 0 0 = 7
zt_ptz_internal_put_result Z F 0 = 38  zt_ptz_internal_update_capability Z 0 = 7
zt_ptz_internal_update_capability Z F = 38  zt_logging_category_reg 0 = -  zt_logging_category_reg Z = -
zt_logc_get_level 0 = -1  zt_logc_set_level_by_prefix 0 1 = -  zt_logc_get_categories 0 0 = -  zt_logc_set_level F 1 = -
zt_base64_encode F -1 F F -1 = 8
zt_strlwr 0 = 0  zt_strncpy 0 F 4 = 7  zt_print_hex 0 0 0 F -2147483648 = -  zt_ini_reader_create F F -1 = 8
)";

TEST(Refusals, AreThoseOfTheHeaders) {
    std::istringstream calls(kCalls);
    std::array<intptr_t, 99> zeros = {}, ones, still_ones;
    ones.fill(-1), still_ones.fill(-1);
    for (std::string name, word; calls >> name;) {
        intptr_t given[6] = {}, *next = given;
        for (; calls >> word && word != "="; ++next)
            *next = intptr_t(word == "Z" ? zeros.data() : word == "F" ? ones.data() : nullptr) + std::atol(word.data());
        const auto call = (int32_t(*)(intptr_t, ...))dlsym(RTLD_DEFAULT, name.c_str());
        const int32_t got = call(given[0], given[1], given[2], given[3], given[4], given[5]);
        EXPECT_TRUE(calls >> word && (word == "-" || got == std::stoi(word))) << name << " gives " << got;
        EXPECT_TRUE(std::count(zeros.begin(), zeros.end(), 0) == 99 && ones == still_ones) << name;
    }
}
