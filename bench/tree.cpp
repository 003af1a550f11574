// The red-black tree: every key inserted in random order, then every record deleted in that order.
// Boost.Intrusive compares through a function pointer as we do; std::set stands beside it as most
// would use it, with nodes of its own and the comparison inlined.
#include <boost/intrusive/set.hpp>
#include <set>

#include "support.hpp"
#include "zt/rbtree.h"

namespace bench {
namespace {

struct Ours {
    struct Record {
        zt_rbtree_node_t node;
        uint32_t key;
    };
    std::vector<Record> records;
    zt_rbtree_t tree{nullptr, compare};

    explicit Ours(size_t count) : records(count) {
        const std::vector<uint32_t> keys = shuffled(count);
        for (size_t i = 0; i < count; ++i) records[i].key = keys[i];
    }
    static int32_t compare(zt_rbtree_node_t *first, zt_rbtree_node_t *second) {
        const uint32_t a = ZT_CONTAINER_OF(first, Record, node)->key;
        const uint32_t b = ZT_CONTAINER_OF(second, Record, node)->key;
        return a < b ? -1 : a > b;
    }
    void step() {
        for (Record &record : records) {
            require(zt_rbtree_insert(&tree, &record.node) == nullptr, "a key is there twice");
        }
        for (Record &record : records) zt_rbtree_delete(&tree, &record.node);
    }
};

struct Boost {
    struct Record : boost::intrusive::set_base_hook<
                        boost::intrusive::link_mode<boost::intrusive::normal_link>> {
        uint32_t key;
    };
    using Function = bool (*)(const Record &, const Record &);
    struct Less {
        Function function;
        bool operator()(const Record &a, const Record &b) const { return function(a, b); }
    };
    using Set = boost::intrusive::set<Record, boost::intrusive::compare<Less>,
                                      boost::intrusive::constant_time_size<false>>;
    std::vector<Record> records;
    Set set{Less{hidden()}};

    explicit Boost(size_t count) : records(count) {
        const std::vector<uint32_t> keys = shuffled(count);
        for (size_t i = 0; i < count; ++i) records[i].key = keys[i];
    }
    // The compiler must not see which function it is.
    static Function hidden() {
        Function function = [](const Record &a, const Record &b) { return a.key < b.key; };
        benchmark::DoNotOptimize(function);
        return function;
    }
    void step() {
        for (Record &record : records) require(set.insert(record).second, "a key is there twice");
        for (Record &record : records) set.erase(set.iterator_to(record));
    }
};

struct Standard {
    std::vector<uint32_t> keys;
    std::set<uint32_t> set;
    explicit Standard(size_t count) : keys(shuffled(count)) {}
    void step() {
        for (uint32_t key : keys) require(set.insert(key).second, "a key is there twice");
        for (uint32_t key : keys) set.erase(key);
    }
};

}  // namespace

void add_tree() {
    for (size_t count : kGrowth) add_fixture<Ours>(name("tree", count, "zt"), count, count);
    for (size_t count : {1000U, 100000U}) {
        add_fixture<Boost>(name("tree", count, "boost"), count, count);
        add_fixture<Standard>(name("tree", count, "std::set"), count, count);
    }
}

}  // namespace bench
