// The blocking queue against the system calls and locks that it cannot do without, and the ring buffer
// against Boost's. One thread puts and gets: nobody waits.
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <boost/lockfree/spsc_queue.hpp>
#include <cstring>

#include "support.hpp"
#include "zt/queue.h"
#include "zt/ring_buf.h"

namespace bench {
namespace {

struct Queue {
    zt_queue_t queue;
    explicit Queue(size_t capacity) {
        require(zt_queue_create(&queue, static_cast<uint32_t>(capacity)) == 0, "no queue");
    }
    ~Queue() { zt_queue_destroy(&queue); }
    void step() {
        zt_queue_add_tail(&queue, this, 0);
        require(zt_queue_get_head(&queue, 0) == this, "the queue has lost an item");
    }
};

// Two pairs of a recursive lock and two events: what a put and a get have to do at least.
struct QueueFloor {
    pthread_mutex_t lock;
    int events[2];
    explicit QueueFloor(size_t) {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&lock, &attributes);
        for (int &event : events) event = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    }
    ~QueueFloor() {
        for (int event : events) close(event);
        pthread_mutex_destroy(&lock);
    }
    void step() {
        for (int event : events) {
            pthread_mutex_lock(&lock);
            pthread_mutex_unlock(&lock);
            const uint64_t one = 1;
            require(write(event, &one, sizeof one) == sizeof one, "an event cannot be set");
        }
    }
};

constexpr size_t kRing = 4096;

struct Ring {
    zt_ring_buf_t ring;
    size_t size;
    uint8_t *storage = room(kRing), *in, *out;
    explicit Ring(size_t bytes) : size(bytes), in(room(bytes)), out(room(bytes)) {
        zt_ring_buf_init(&ring, kRing, storage);
    }
    void step() {
        const auto count = static_cast<uint32_t>(size);
        zt_ring_buf_put(&ring, in, count);
        require(zt_ring_buf_get(&ring, out, count) == count, "the ring has lost bytes");
    }
};

struct Spsc {
    boost::lockfree::spsc_queue<uint8_t, boost::lockfree::capacity<kRing>> ring;
    size_t size;
    uint8_t *in, *out;
    explicit Spsc(size_t bytes) : size(bytes), in(room(bytes)), out(room(bytes)) {}
    void step() {
        ring.push(in, size);
        require(ring.pop(out, size) == size, "the ring has lost bytes");
    }
};

// Through a function pointer, so that the two copies stay two calls of the C library's.
struct Copies {
    void *(*copy)(void *, const void *, size_t) = std::memcpy;
    size_t size, at = 0;
    uint8_t *storage = room(kRing), *in, *out;
    explicit Copies(size_t bytes) : size(bytes), in(room(bytes)), out(room(bytes)) {
        benchmark::DoNotOptimize(copy);
    }
    void step() {
        copy(storage + at, in, size);
        copy(out, storage + at, size);
        at = (at + size) % kRing;
    }
};

}  // namespace

void add_queues() {
    add_fixture<Queue>("queue/16/zt", 16);
    add_fixture<QueueFloor>("queue/16/floor", 16);
    add_fixture<Ring>("ring_buf/256/zt", 256);
    add_fixture<Spsc>("ring_buf/256/boost", 256);
    add_fixture<Copies>("ring_buf/256/memcpy", 256);
}

}  // namespace bench
