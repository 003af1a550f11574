// The binary heap: so many records with random keys inserted, then dequeued. The keys are new in every
// round, or the processor would learn them. The peers keep
// pointers to the records and compare through a function pointer as we do; the priority queue of the
// standard library has the comparison inlined.
#include <boost/heap/pairing_heap.hpp>
#include <queue>

#include "support.hpp"
#include "zt/heap.h"

namespace bench {
namespace {

struct Ours {
    struct Record {
        zt_heap_node_t node;
        uint64_t key;
    };
    std::vector<Record> records;
    Random random;
    zt_heap_t heap{};

    explicit Ours(size_t count) : records(count) {}
    static int32_t less(zt_heap_node_t *first, zt_heap_node_t *second) {
        return ZT_CONTAINER_OF(first, Record, node)->key <
               ZT_CONTAINER_OF(second, Record, node)->key;
    }
    void step() {
        for (Record &record : records) {
            record.key = random.next();
            zt_heap_insert(&heap, &record.node, less);
        }
        while (heap.root != nullptr) zt_heap_dequeue(&heap, less);
    }
};

struct Record {
    uint64_t key;
};
using Function = bool (*)(const Record *, const Record *);

// These heaps have the greatest on top.
bool after(const Record *a, const Record *b) { return a->key > b->key; }

struct Pairing {
    struct After {
        Function function;
        bool operator()(const Record *a, const Record *b) const { return function(a, b); }
    };
    std::vector<Record> records;
    Random random;
    boost::heap::pairing_heap<Record *, boost::heap::compare<After>> heap{After{hidden()}};

    explicit Pairing(size_t count) : records(count) {}
    // The compiler must not see which function it is.
    static Function hidden() {
        Function function = after;
        benchmark::DoNotOptimize(function);
        return function;
    }
    void step() {
        for (Record &record : records) {
            record.key = random.next();
            heap.push(&record);
        }
        while (!heap.empty()) heap.pop();
    }
};

struct Standard {
    struct After {
        bool operator()(const Record *a, const Record *b) const { return after(a, b); }
    };
    std::vector<Record> records;
    Random random;
    std::priority_queue<Record *, std::vector<Record *>, After> heap;

    explicit Standard(size_t count) : records(count) {}
    void step() {
        for (Record &record : records) {
            record.key = random.next();
            heap.push(&record);
        }
        while (!heap.empty()) heap.pop();
    }
};

}  // namespace

void add_heap() {
    for (size_t count : kGrowth) add_fixture<Ours>(name("heap", count, "zt"), count, count);
    for (size_t count : {1000U, 100000U}) {
        add_fixture<Pairing>(name("heap", count, "boost"), count, count);
        add_fixture<Standard>(name("heap", count, "std::priority_queue"), count, count);
    }
}

}  // namespace bench
