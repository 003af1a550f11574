// What the cases share: the registration, the sizes and the data.
//
// A benchmark is named case/size/who. scripts/bench-report.py pairs those of one case and size, and
// bench/expected.tsv says which of them is measured against which.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace bench {

// A piece of data: its length, and how far its start lies behind a 64-byte boundary.
struct Piece {
    size_t size;
    size_t offset;
};

inline constexpr Piece kPieces[] = {{16, 0},    {64, 0},      {256, 0},  {1024, 0},
                                    {65536, 0}, {1 << 20, 0}, {1021, 3}, {1000003, 1}};

std::string name(const std::string &test, size_t size, const std::string &who);
std::string name(const std::string &test, const Piece &piece, const std::string &who);

// Random bytes, the same in every run and for everybody, that live as long as the process.
const uint8_t *random_bytes(const Piece &piece);

// Room for size bytes, offset bytes behind a 64-byte boundary, touched.
uint8_t *room(size_t size, size_t offset = 0);

// Stops the run: a case that does not do what it claims must not be timed.
void require(bool condition, const char *what);

// Empties the upper halves of the vector registers. Some peers leave them in use, which makes whatever
// is measured next several times slower.
void settle();

// Registers a case whose body is one operation on items items (or bytes).
template <class Body>
void add(const std::string &full_name, size_t items, Body body) {
    benchmark::RegisterBenchmark(full_name.c_str(), [items, body](benchmark::State &state) {
        settle();
        for (auto _ : state) {
            body();
            benchmark::ClobberMemory();
        }
        if (items > 1) {
            state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(items));
        }
    });
}

// Registers a case whose step() is one operation on items items. The fixture is made anew for every
// repetition, outside of the time that counts.
template <class Fixture>
void add_fixture(const std::string &full_name, size_t size, size_t items = 1) {
    benchmark::RegisterBenchmark(full_name.c_str(), [size, items](benchmark::State &state) {
        const auto fixture = std::make_unique<Fixture>(size);
        settle();
        for (auto _ : state) {
            fixture->step();
            benchmark::ClobberMemory();
        }
        if (items > 1) {
            state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(items));
        }
    });
}

// The sizes at which the growth of an operation's time is looked at.
inline constexpr size_t kGrowth[] = {10, 1000, 100000, 1000000};

// A cheap source of random numbers, the same for everybody, for use inside of what is measured. None
// comes twice.
class Random {
  public:
    uint64_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return state_;
    }
    // A number below limit, which is below 2^32.
    size_t below(size_t limit) { return (next() >> 32) * limit >> 32; }

  private:
    uint64_t state_ = 88172645463325252;
};

// One function a source file, each registering that file's cases.
void add_crc();
void add_digests();
void add_base64();
void add_tree();
void add_heap();
void add_sort();
void add_queues();
void add_id_pool();
void add_windows();
void add_publish();
void add_supervision();
void add_texts();
void add_small();

}  // namespace bench
