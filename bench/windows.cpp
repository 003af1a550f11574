// What stands on the heap: the maximum of the last samples, and timers that are put off again and again.
#include <deque>
#include <map>
#include <set>

#include "support.hpp"
#include "zt/heap_window.h"
#include "zt/timer_mgr.h"

namespace bench {
namespace {

// One sample in, one out, and the maximum read.
struct Window {
    zt_heap_window_t window;
    uint64_t time = 0;
    Random random;

    explicit Window(size_t count) {
        const auto slots = static_cast<uint32_t>(count);
        require(zt_heap_window_create(&window, slots, slots, nullptr, 0, 1) == 0, "no window");
        for (size_t i = 0; i < count; ++i) update();
    }
    ~Window() { zt_heap_window_destroy(&window); }
    void update() {
        zt_heap_window_update_int64(&window, ++time, static_cast<int64_t>(random.next()));
    }
    void step() {
        update();
        benchmark::DoNotOptimize(zt_heap_window_get_max_int64(&window));
    }
};

struct Multiset {
    std::multiset<int64_t> samples;
    std::deque<std::multiset<int64_t>::iterator> order;
    Random random;

    explicit Multiset(size_t count) {
        for (size_t i = 0; i < count; ++i) insert();
    }
    void insert() { order.push_back(samples.insert(static_cast<int64_t>(random.next()))); }
    void step() {
        samples.erase(order.front());
        order.pop_front();
        insert();
        benchmark::DoNotOptimize(*samples.rbegin());
    }
};

// The time that a timer is put off to: within a second of an hour.
uint64_t some_time(Random *random) { return random->below(3600 * 1000); }

struct Timers {
    zt_timer_mgr_t manager{};
    std::vector<zt_timer_t> timers;
    Random random;

    explicit Timers(size_t count) : timers(count) {
        manager.set_alarm = [](zt_timer_mgr_t *, uint64_t, int32_t) -> zt_status_t { return 0; };
        for (zt_timer_t &timer : timers) schedule(&timer);
    }
    void schedule(zt_timer_t *timer) {
        require(zt_timer_mgr_schedule_timer_abs(&manager, timer, some_time(&random)) == 0,
                "a timer is not scheduled");
    }
    void step() { schedule(&timers[random.below(timers.size())]); }
};

// kMove: the map's node moves, which saves an allocation; otherwise an erase and an insert.
template <bool kMove>
struct Multimap {
    using Map = std::multimap<uint64_t, void *>;
    Map map;
    std::vector<Map::iterator> timers;
    Random random;

    explicit Multimap(size_t count) : timers(count) {
        for (auto &timer : timers) timer = map.emplace(some_time(&random), this);
    }
    void step() {
        auto &timer = timers[random.below(timers.size())];
        if (kMove) {
            auto node = map.extract(timer);
            node.key() = some_time(&random);
            timer = map.insert(std::move(node));
        } else {
            map.erase(timer);
            timer = map.emplace(some_time(&random), this);
        }
        benchmark::DoNotOptimize(map.begin()->first);
    }
};

}  // namespace

void add_windows() {
    for (size_t count : kGrowth) {
        add_fixture<Window>(name("sliding_max", count, "zt"), count);
        add_fixture<Timers>(name("timers", count, "zt"), count);
    }
    for (size_t count : {100U, 10000U}) {
        add_fixture<Window>(name("sliding_max", count, "zt"), count);
        add_fixture<Multiset>(name("sliding_max", count, "std::multiset"), count);
        add_fixture<Timers>(name("timers", count, "zt"), count);
        add_fixture<Multimap<false>>(name("timers", count, "std::multimap"), count);
        add_fixture<Multimap<true>>(name("timers", count, "std::multimap-extract"), count);
    }
}

}  // namespace bench
