// The id pool: with so many ids in use, one at random is freed, another handed out in its place, and
// one looked up. The peer locks a plain mutex, where the pool's is recursive.
#include <mutex>
#include <unordered_map>

#include "support.hpp"
#include "zt/id_pool.h"

namespace bench {
namespace {

struct Ours {
    zt_id_pool_t pool;
    std::vector<int32_t> ids;
    Random random;

    explicit Ours(size_t count) : ids(count) {
        require(zt_id_pool_create(&pool, static_cast<uint32_t>(count)) == 0, "no pool");
        for (int32_t &id : ids) require(zt_id_pool_alloc(&pool, this, &id) == 0, "no id");
    }
    ~Ours() { zt_id_pool_destroy(&pool); }
    void step() {
        int32_t &id = ids[random.below(ids.size())];
        void *pointer = nullptr;
        const bool freed = zt_id_pool_free(&pool, id);
        const bool given = zt_id_pool_alloc(&pool, this, &id) == 0;
        const bool found = zt_id_pool_lookup(&pool, ids[random.below(ids.size())], &pointer);
        require(freed && given && found && pointer == this, "the pool has lost an id");
    }
};

struct Map {
    std::mutex lock;
    std::unordered_map<int32_t, void *> map;
    int32_t next_id = 1;
    std::vector<int32_t> ids;
    Random random;

    explicit Map(size_t count) : ids(count) {
        map.reserve(count);
        for (int32_t &id : ids) id = alloc();
    }
    int32_t alloc() {
        const std::lock_guard guard(lock);
        while (!map.try_emplace(next_id, this).second) next_id = next_id % INT32_MAX + 1;
        const int32_t id = next_id;
        next_id = next_id % INT32_MAX + 1;
        return id;
    }
    bool free(int32_t id) {
        const std::lock_guard guard(lock);
        return map.erase(id) == 1;
    }
    void *lookup(int32_t id) {
        const std::lock_guard guard(lock);
        const auto found = map.find(id);
        return found == map.end() ? nullptr : found->second;
    }
    void step() {
        int32_t &id = ids[random.below(ids.size())];
        const bool freed = free(id);
        id = alloc();
        require(freed && lookup(ids[random.below(ids.size())]) == this, "the map has lost an id");
    }
};

}  // namespace

void add_id_pool() {
    for (size_t count : kGrowth) add_fixture<Ours>(name("id_pool", count, "zt"), count);
    add_fixture<Ours>("id_pool/10000/zt", 10000);
    add_fixture<Map>("id_pool/10000/std::unordered_map", 10000);
}

}  // namespace bench
