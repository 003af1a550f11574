// Counting wake-up events on eventfd descriptors.
// SPDX-License-Identifier: MIT
#include "zt/event.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <type_traits>

#include "zt/memory.h"
#include "zt/time.h"

static_assert(std::is_standard_layout_v<zt_event_t> && sizeof(zt_event_t) == 4);
static_assert(offsetof(zt_event_t, fd) == 0);

namespace {

constexpr int32_t kPolledOnStack = 16;

// 0 means 'not open' in the record: a counter that got descriptor 0 moves above it.
int open_counter() {
    const int fd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (fd != 0) return fd;
    const int moved = fcntl(fd, F_DUPFD_CLOEXEC, 1);
    const int error = errno;
    close(fd);
    errno = error;
    return moved;
}

// Takes the whole counter; 0 when the event is not set.
uint64_t consume(const zt_event_t *event) {
    eventfd_t value = 0;
    return eventfd_read(event->fd, &value) == 0 ? value : 0;
}

// Waits for POLLIN across signals, with poll's results. One start time for all rounds, so no part
// of a millisecond gets lost or waited for twice.
int poll_in(const zt_event_t *event, int32_t timeout_ms) {
    pollfd polled = {event->fd, POLLIN, 0};
    const uint64_t start = zt_time_get_ms();
    int32_t left = timeout_ms;
    for (;;) {
        const int ready = poll(&polled, 1, left);
        if (ready >= 0 || errno != EINTR) return ready;
        if (timeout_ms <= 0) continue;
        const uint64_t elapsed = zt_time_get_ms() - start;
        if (elapsed >= static_cast<uint64_t>(timeout_ms)) return -1;
        left = timeout_ms - static_cast<int32_t>(elapsed);
    }
}

// Polls count events once, with room for them in polled.
int poll_all(zt_event_t *const *events, int32_t count, pollfd *polled, int32_t timeout_ms) {
    for (int32_t i = 0; i < count; ++i) polled[i] = {events[i]->fd, POLLIN, 0};
    return poll(polled, static_cast<nfds_t>(count), timeout_ms);
}

// The same beyond what fits on the stack. The size is summed in 64 bits: a count of 2^29 is 4 GiB.
int poll_allocated(zt_event_t *const *events, int32_t count, int32_t timeout_ms) {
    const uint64_t bytes = static_cast<uint64_t>(count) * sizeof(pollfd);
    if (bytes > UINT32_MAX) return ZT_STATUS_OUT_OF_MEMORY;
    auto *const polled = static_cast<pollfd *>(zt_zalloc(static_cast<uint32_t>(bytes)));
    if (polled == nullptr) return ZT_STATUS_OUT_OF_MEMORY;

    int ready = 0;
    pthread_cleanup_push(zt_free, polled);  // also when the thread is cancelled in poll
    ready = poll_all(events, count, polled, timeout_ms);
    pthread_cleanup_pop(1);
    return ready;
}

}  // namespace

zt_status_t zt_event_init(zt_event_t *event) {
    event->fd = open_counter();
    return event->fd < 0 ? zt_get_status_by_errno(errno) : ZT_STATUS_SUCCESS;
}

void zt_event_deinit(zt_event_t *event) {
    if (event == nullptr) return;
    if (event->fd > 0) close(event->fd);
    event->fd = 0;
}

int zt_event_set(zt_event_t *event) {
    // Not through write or eventfd_write, which are cancellation points: whoever sets an event has
    // something to announce, and cancelled here would leave the other side asleep.
    static constexpr eventfd_t kOne = 1;
    return syscall(SYS_write, event->fd, &kOne, sizeof kOne) == sizeof kOne ? 0 : -1;
}

int zt_event_clear(zt_event_t *event) {
    eventfd_t value = 0;
    return eventfd_read(event->fd, &value);
}

bool zt_event_is_set(const zt_event_t *event) {
    // Exactly POLLIN: with an error or a hang-up beside it there is nothing to consume safely.
    pollfd polled = {event->fd, POLLIN, 0};
    return poll(&polled, 1, 0) > 0 && polled.revents == POLLIN;
}

bool zt_event_try_wait(zt_event_t *event) { return consume(event) != 0; }

int zt_event_wait(zt_event_t *event, int32_t timeout_ms) {
    const int ready = poll_in(event, timeout_ms);
    if (ready <= 0) return ready;

    const uint64_t sets = consume(event);
    if (sets == 0) return -1;  // another waiter was faster
    // A cut to 0 or below would read as a time-out or a failure.
    const auto cut = static_cast<int32_t>(static_cast<uint32_t>(sets));
    return cut > 0 ? cut : INT32_MAX;
}

int zt_event_wait_for_multiple(zt_event_t *const *events, int32_t count, int32_t timeout_ms) {
    if (count <= 0) return poll(nullptr, 0, timeout_ms);
    if (count > kPolledOnStack) return poll_allocated(events, count, timeout_ms);
    pollfd polled[kPolledOnStack];
    return poll_all(events, count, polled, timeout_ms);
}
