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
    errno = ENOENT;
    return 0;
}

namespace {

// printf stands for a callback: unlike what takes the place of a missing one it does not flush.
TEST(Log, MacrosFilterAndLayOutAsTheModelDoes) {
    std::atomic<bool> done{false};
    std::thread reader([&] {  // reads what the macros read, beside the changes below
        while (!done) {
            ZT_LOG_TRACE(sample_cpp, "beyond its level");
            if (zt__logc_passes(&zt__logc_sample_c, -1) && zt__logc_named()) zt__logc_printer();
        }
    });
    std::mt19937 random(14);
    for (int step = 0; step < 2000; ++step) {
        const int level = static_cast<int>(random() % 7) - 1, global = step % 7 - 1;
        const bool timed = random() % 2, with_tid = random() % 2, named = random() % 2;
        const bool callback = random() % 2, east = random() % 2;
        setenv("TZ", east ? "EST-3" : "UTC0", 1);
        zt_logc_set_level("sample_c", level);
        zt_logc_set_global_level(global);
        zt_logc_enable_prefix_time(timed);
        zt_logc_enable_prefix_tid(with_tid);
        zt_logc_enable_prefix_category(named);
        zt_logc_set_print_cb(callback ? printf : nullptr);

        std::string start, want;
        if (timed) start += east ? "2026-03-05 10:08:09:042 " : "2026-03-05 07:08:09:042 ";
        if (with_tid) start += "(tid:" + std::to_string(gettid()) + ") ";
        if (named) start += "sample_c: ";
        const int lines = std::min({level, global, 4}) + 1;
        for (int i = 1; i <= lines; ++i) want += start + "18 " + std::to_string(i) + "\n";
        int count = 0;
        const std::string printed = capture_stdout([&] {
            errno = EXDEV;
            log_all_levels(&count);
            EXPECT_EQ(__fpending(stdout) != 0, callback && lines > 0);
        });
        EXPECT_EQ(printed, want) << step;
        EXPECT_EQ(count, lines) << "arguments evaluated in vain";
    }
    zt_logc_set_global_level(4);
    done = true;
    reader.join();
}

TEST(Log, PlainLoggerWritesUpToItsThreshold) {
    for (uint32_t step = 0; step < 25; ++step) {
        const uint32_t threshold = step / 5, level = step == 4 ? UINT32_MAX : step % 5;
        if (threshold > 0) zt_log_set_level(threshold);  // it is 0 at load
        const auto log = [=] { zt_log(0, level, "%s %d", "a", 5); };
        EXPECT_EQ(capture_flushed_stdout(log), level <= threshold ? "a 5" : "") << step;
    }
    openlog("log", LOG_PERROR, LOG_USER);
    setlogmask(LOG_MASK(LOG_INFO));
    testing::internal::CaptureStderr();
    for (const uint32_t level : {4U, 5U}) zt_log(-1, level, "level %u", level);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "log: level 4\n");
}

int32_t g_count_without_room = -1;

// Before the categories of this program register: no room for a first one, then room for two.
__attribute__((constructor(101))) void prepare_registry() {
    zt_logc_init(nullptr, 512, 4);
    zt_logging_category_reg(&zt__logc_sample_cpp);
    zt_logc_get_categories(nullptr, &g_count_without_room);
    ZT_LOGGING_CATEGORY_INIT(2, 4);
}

const std::string kFull =
    "ERROR: Logging category's array is not enough! Please call ZT_LOGGING_CATEGORY_INIT to "
    "increase the max_items!\n";

TEST(Log, RegistersAsTheModelDoes) {
    EXPECT_EQ(g_count_without_room, 0);
    zt_logc_set_level("sample_c", -1);
    EXPECT_EQ(capture_flushed_stdout(zt_logc_dump_categories),
              "Logging category global level: 4\nTotal 2 logging categories:\n"
              "    000: sample_c         level=-1\n    001: sample_cpp       level=1\n");
    static zt_logging_category_t *arrays[2][200], records[1000];
    static std::string names[1000];
    std::map<std::string, zt_logging_category_t *> model;  // by the bytes of the name that count
    model = {{"sample_c", &zt__logc_sample_c}, {"sample_cpp", &zt__logc_sample_cpp}};
    std::mt19937 random(13);
    size_t capacity = 2;
    for (int32_t step = 0; step < 1000; ++step) {
        std::string &name = names[step].assign(random() % 3 == 0 ? 126 : 0, 'n');
        for (uint32_t more = random() % 4; more > 0; --more) name += "aB\xE4"[random() % 3];
        records[step] = {step, name.c_str()};
        const std::string key = name.substr(0, 128);
        const size_t room = model.size() - 1 + random() % 4;
        const bool init = step % 4 == 0, taken = !init && model.contains(key);
        const bool full = init ? room < model.size() : !taken && model.size() == capacity;
        std::string want = taken ? "ERROR: Failed to register logging category: " + name + "\n" : "";
        if (taken) want += capture_stdout(zt_logc_dump_categories);
        if (full) want = kFull;
        const std::string printed = capture_flushed_stdout([&] {
            if (init) zt_logc_init(arrays[step % 8 / 4], static_cast<int32_t>(room), step);
            if (!init) zt_logging_category_reg(&records[step]);
        });
        EXPECT_EQ(printed, want) << step;
        EXPECT_EQ(zt_logc_get_global_level() == step, init && !full);
        if (init && !full) capacity = room;
        if (!init && want.empty()) model[key] = &records[step];
        zt_logging_category_t **array = nullptr;
        zt_logc_get_categories(&array, nullptr);
        for (const auto &[known, record] : model) EXPECT_EQ(*array++, record) << step;
    }

    zt_logc_set_level_by_prefix("nn", 2000);
    zt_logc_set_level("sample_cpp", 3000);
    for (const auto &[key, record] : model) {
        const int32_t want = key == "sample_cpp" ? 3000 : key.starts_with("nn") ? 2000 : -1;
        EXPECT_TRUE(record->level == want || (want < 0 && record->level < 1000)) << key;
        EXPECT_EQ(zt_logc_get_level(record->name), record->level);
    }
    EXPECT_EQ(zt_logc_get_level("missing"), -1);
}

}  // namespace
