// The list sort: records in the order of their addresses, with random keys that are new in
// every round, or the processor would learn them. Linking them in that order is part of the time, for
// everybody. Boost compares through a function pointer as GLib and we do,
// and once more with the comparison inlined.
#include <glib.h>

#include <boost/intrusive/list.hpp>

#include "support.hpp"
#include "zt/list_sort.h"

namespace bench {
namespace {

struct Ours {
    struct Record {
        zt_list_head_t link;
        uint64_t key;
    };
    std::vector<Record> records;
    Random random;
    zt_list_head_t head = ZT_LIST_HEAD_INIT(head);

    explicit Ours(size_t count) : records(count) {}
    static int32_t compare(void *, zt_list_head_t *first, zt_list_head_t *second) {
        const uint64_t a = ZT_CONTAINER_OF(first, Record, link)->key;
        const uint64_t b = ZT_CONTAINER_OF(second, Record, link)->key;
        return (a > b) - (a < b);  // no branch: half of them would be mispredicted
    }
    void step() {
        zt_list_head_t *last = &head;
        for (Record &record : records) {
            record.key = random.next();
            last->next = &record.link;
            record.link.prev = last;
            last = &record.link;
        }
        last->next = &head;
        head.prev = last;
        zt_list_sort(nullptr, &head, compare);
        require(compare(nullptr, head.next, head.prev) <= 0, "the list is not sorted");
    }
};

struct BoostRecord
    : boost::intrusive::list_base_hook<boost::intrusive::link_mode<boost::intrusive::normal_link>> {
    uint64_t key;
};
bool less(const BoostRecord &a, const BoostRecord &b) { return a.key < b.key; }

template <bool kInlined>
struct Boost {
    std::vector<BoostRecord> records;
    Random random;
    boost::intrusive::list<BoostRecord, boost::intrusive::constant_time_size<false>> list;
    bool (*function)(const BoostRecord &, const BoostRecord &) = less;

    explicit Boost(size_t count) : records(count) { benchmark::DoNotOptimize(function); }
    void step() {
        list.clear();
        for (BoostRecord &record : records) {
            record.key = random.next();
            list.push_back(record);
        }
        if (kInlined) {
            list.sort([](const BoostRecord &a, const BoostRecord &b) { return less(a, b); });
        } else {
            list.sort(function);
        }
        require(list.front().key <= list.back().key, "the list is not sorted");
    }
};

struct Glib {
    std::vector<GList> links;
    std::vector<uint64_t> keys;
    Random random;

    explicit Glib(size_t count) : links(count), keys(count) {}
    static gint compare(gconstpointer first, gconstpointer second) {
        const uint64_t a = *static_cast<const uint64_t *>(first);
        const uint64_t b = *static_cast<const uint64_t *>(second);
        return (a > b) - (a < b);  // no branch: half of them would be mispredicted
    }
    void step() {
        const size_t count = links.size();
        for (size_t i = 0; i < count; ++i) {
            keys[i] = random.next();
            links[i] = {&keys[i], i + 1 < count ? &links[i + 1] : nullptr,
                        i > 0 ? &links[i - 1] : nullptr};
        }
        const GList *first = g_list_sort(&links[0], compare);
        require(compare(first->data, first->next->data) <= 0, "the list is not sorted");
    }
};

}  // namespace

void add_sort() {
    for (size_t count : kGrowth) add_fixture<Ours>(name("list_sort", count, "zt"), count, count);
    for (size_t count : {1000U, 100000U}) {
        add_fixture<Boost<false>>(name("list_sort", count, "boost"), count, count);
        add_fixture<Boost<true>>(name("list_sort", count, "boost-inlined"), count, count);
        add_fixture<Glib>(name("list_sort", count, "glib"), count, count);
    }
}

}  // namespace bench
