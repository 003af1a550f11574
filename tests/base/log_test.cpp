// SPDX-License-Identifier: MIT
#include "zt/log.h"

#include <sys/time.h>
#include <syslog.h>

#include "support/test.hpp"

extern "C" void log_all_levels(int *count);
ZT_LOGGING_CATEGORY_DECLARE(sample_c);
ZT_LOGGING_CATEGORY_DEFINE(sample_cpp, ZT_LOG_LEVEL_WARN);

// One fixed moment, told by a call that does not keep errno.
extern "C" int gettimeofday(timeval *now, void *) noexcept {
    *now = {1772694489, 42999};  // 2026-03-05 07:08:09 UTC
    return errno = ENOENT, 0;
}

// All levels and settings, while another thread reads them as the macros do. printf stands for a
// callback: unlike what takes the place of a missing one it does not flush.
TEST(Log, MacrosFilterAndLayOutAsTheModelDoes) {
    const std::jthread reader([](const std::stop_token &stop) {
        while (!stop.stop_requested()) zt__logc_passes(&zt__logc_sample_c, -1), zt__logc_named(), zt__logc_printer();
    });
    for (int step = 0; step < 7 * 7 * 32; ++step) {
        const int level = step % 7 - 1, global = step / 7 % 7 - 1, bits = step / 49;
        const bool timed = bits & 1, with_tid = bits & 2, named = bits & 4, callback = bits & 8;
        setenv("TZ", bits & 16 ? "EST-3" : "UTC0", 1), zt_logc_set_level("sample_c", level);
        zt_logc_set_global_level(global), zt_logc_enable_prefix_time(timed), zt_logc_enable_prefix_tid(with_tid);
        zt_logc_enable_prefix_category(named), zt_logc_set_print_cb(callback ? printf : nullptr);

        std::string start, want;
        if (timed) start = bits & 16 ? "2026-03-05 10:08:09:042 " : "2026-03-05 07:08:09:042 ";
        if (with_tid) start += "(tid:" + std::to_string(gettid()) + ") ";
        start += named ? "sample_c: 18 " : "18 ";
        const int lines = std::min({level, global, 4}) + 1;
        for (int i = 1; i <= lines; ++i) want += start + std::to_string(i) + "\n";
        int evaluated = 0, pending = 0;
        const auto log = [&] { errno = EXDEV, log_all_levels(&evaluated), pending = __fpending(stdout) > 0; };
        EXPECT_EQ(capture_stdout(log), want) << step;
        EXPECT_TRUE(evaluated == lines && pending == (callback && lines > 0)) << step;
    }
}

TEST(Log, PlainLoggerWritesUpToItsThreshold) {
    for (uint32_t step = 0; step < 25; ++step) {
        const uint32_t threshold = step / 5, level = step == 4 ? UINT32_MAX : step % 5;
        if (threshold > 0) zt_log_set_level(threshold);  // it is 0 at load
        EXPECT_EQ(capture_flushed_stdout([=] { zt_log(0, level, "%s %d", "a", 5); }), level <= threshold ? "a 5" : "");
    }
    openlog("log", LOG_PERROR, LOG_USER), setlogmask(LOG_MASK(LOG_INFO));
    testing::internal::CaptureStderr();
    for (const uint32_t level : {4U, 5U}) zt_log(-1, level, "level %u", level);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "log: level 4\n");
}

// Before the categories of this program register: no room for a first one, then room for two.
__attribute__((constructor(101))) static void prepare_registry() {
    zt_logc_init(nullptr, 512, 4);
    zt_logging_category_reg(&zt__logc_sample_cpp);
    ZT_LOGGING_CATEGORY_INIT(2, 4);
}

// A random sequence of registrations and of initialisations that may lack room.
TEST(Log, RegistersAsTheModelDoes) {
    zt_logc_set_global_level(4), zt_logc_set_level("sample_c", -1);
    EXPECT_EQ(capture_flushed_stdout(zt_logc_dump_categories),
              "Logging category global level: 4\nTotal 2 logging categories:\n"
              "    000: sample_c         level=-1\n    001: sample_cpp       level=1\n");
    static zt_logging_category_t *arrays[5][200], records[1000], **array;
    static std::string names[1000];
    std::map<std::string, zt_logging_category_t *> model = {{"sample_c", &zt__logc_sample_c},
                                                            {"sample_cpp", &zt__logc_sample_cpp}};
    std::mt19937 random(13);
    size_t capacity = 2;
    for (int32_t step = 0, count = 0; step < 1000; ++step) {
        std::string &name = names[step].assign(random() % 3 == 0 ? 126 : 0, 'n'), want;
        for (uint32_t more = random() % 4; more > 0; --more) name += "aB\xE4"[random() % 3];
        zt_logging_category_t &record = records[step] = {step, name.c_str()};
        const std::string key = name.substr(0, 128);  // that much counts
        const size_t room = model.size() - 1 + random() % 4;
        const bool init = step % 4 == 0, taken = !init && model.contains(key);
        const bool full = init ? room < model.size() : !taken && model.size() == capacity;
        if (taken) want = name + "\n" + capture_stdout(zt_logc_dump_categories);
        if (full) want = "Please call ZT_LOGGING_CATEGORY_INIT to increase the max_items!\n";
        if (taken) want = "ERROR: Failed to register logging category: " + want;
        if (full) want = "ERROR: Logging category's array is not enough! " + want;
        const auto act = [&] { init ? zt_logc_init(arrays[step & 4], room, step) : zt_logging_category_reg(&record); };
        EXPECT_EQ(capture_flushed_stdout(act), want) << step;
        if (init && !full) capacity = room;
        if (!init && want.empty()) model[key] = &record;
        zt_logc_get_categories(&array, &count);
        EXPECT_TRUE((zt_logc_get_global_level() == step) == (init && !full) && count == std::ssize(model)) << step;
        for (const auto &[known, registered] : model) EXPECT_EQ(*array++, registered) << step;
    }
    zt_logc_set_level_by_prefix("nn", 2000), zt_logc_set_level("sample_cpp", 3000);
    for (const auto &[key, record] : model) {
        const int32_t want = key == "sample_cpp"     ? 3000
                             : key.starts_with("nn") ? 2000
                                                     : 0,
                      got = zt_logc_get_level(record->name);
        EXPECT_TRUE(got == record->level && (got < 1000 ? 0 : got) == want) << key;
    }
    EXPECT_EQ(zt_logc_get_level("missing"), -1);
}
