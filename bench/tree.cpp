// The red-black tree: so many random keys inserted, then deleted in the same order. The keys are new in
// every round, or the processor would learn the way that each of them takes.
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
        uint64_t key;
    };
    std::vector<Record> records;
    Random random;
    zt_rbtree_t tree{nullptr, compare};

    explicit Ours(size_t count) : records(count) {}
    static int32_t compare(zt_rbtree_node_t *first, zt_rbtree_node_t *second) {
        const uint64_t a = ZT_CONTAINER_OF(first, Record, node)->key;
        const uint64_t b = ZT_CONTAINER_OF(second, Record, node)->key;
        return (a > b) - (a < b);  // no branch: half of them would be mispredicted
    }
    void step() {
        for (Record &record : records) {
            record.key = random.next();
            require(zt_rbtree_insert(&tree, &record.node) == nullptr, "a key is there twice");
        }
        for (Record &record : records) zt_rbtree_delete(&tree, &record.node);
    }
};

struct Boost {
    struct Record : boost::intrusive::set_base_hook<
                        boost::intrusive::link_mode<boost::intrusive::normal_link>> {
        uint64_t key;
    };
    using Function = bool (*)(const Record &, const Record &);
    struct Less {
        Function function;
        bool operator()(const Record &a, const Record &b) const { return function(a, b); }
    };
    using Set = boost::intrusive::set<Record, boost::intrusive::compare<Less>,
                                      boost::intrusive::constant_time_size<false>>;
    std::vector<Record> records;
    Random random;
    Set set{Less{hidden()}};

    explicit Boost(size_t count) : records(count) {}
    // The compiler must not see which function it is.
    static Function hidden() {
        Function function = [](const Record &a, const Record &b) { return a.key < b.key; };
        benchmark::DoNotOptimize(function);
        return function;
    }
    void step() {
        for (Record &record : records) {
            record.key = random.next();
            require(set.insert(record).second, "a key is there twice");
        }
        for (Record &record : records) set.erase(set.iterator_to(record));
    }
};

struct Standard {
    std::vector<uint64_t> keys;
    std::set<uint64_t> set;
    Random random;
    explicit Standard(size_t count) : keys(count) {}
    void step() {
        for (uint64_t &key : keys) {
            key = random.next();
            require(set.insert(key).second, "a key is there twice");
        }
        for (uint64_t key : keys) set.erase(key);
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
