#include "support.hpp"

#ifdef __x86_64__
#include <immintrin.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

namespace bench {

std::string name(const std::string &test, size_t size, const std::string &who) {
    return test + "/" + std::to_string(size) + "/" + who;
}

std::string name(const std::string &test, const Piece &piece, const std::string &who) {
    std::string size = std::to_string(piece.size);
    if (piece.offset != 0) size += "@" + std::to_string(piece.offset);
    return test + "/" + size + "/" + who;
}

uint8_t *room(size_t size, size_t offset) {
    void *block = nullptr;
    require(posix_memalign(&block, 64, size + offset + 64) == 0, "memory");
    std::memset(block, 0x5a, size + offset + 64);
    return static_cast<uint8_t *>(block) + offset;
}

const uint8_t *random_bytes(const Piece &piece) {
    static std::map<std::pair<size_t, size_t>, const uint8_t *> made;
    const uint8_t *&bytes = made[{piece.size, piece.offset}];
    if (bytes == nullptr) {
        uint8_t *fresh = room(piece.size, piece.offset);
        Random random;
        for (size_t i = 0; i < piece.size; ++i)
            fresh[i] = static_cast<uint8_t>(random.next() >> 32);
        bytes = fresh;
    }
    return bytes;
}

#ifdef __x86_64__
namespace {
__attribute__((target("avx"))) void zero_upper_halves() { _mm256_zeroupper(); }
}  // namespace

void settle() {
    if (__builtin_cpu_supports("avx")) zero_upper_halves();
}
#else
void settle() {}
#endif

void require(bool condition, const char *what) {
    if (condition) return;
    std::fprintf(stderr, "bench: %s\n", what);
    std::exit(1);
}

}  // namespace bench

int main(int argc, char **argv) {
    bench::add_crc();
    bench::add_digests();
    bench::add_base64();
    bench::add_tree();
    bench::add_heap();
    bench::add_sort();
    bench::add_queues();
    bench::add_id_pool();
    bench::add_windows();
    bench::add_publish();
    bench::add_supervision();
    bench::add_texts();
    bench::add_small();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
