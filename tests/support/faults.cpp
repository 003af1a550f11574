// SPDX-License-Identifier: MIT
#include "support/faults.hpp"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "zt/memory.h"

static std::atomic<int64_t> g_countdown{INT64_MAX};  // the call that brings it from 1 to 0 fails
static std::atomic<bool> g_from_then_on{false}, g_everything{false};
static std::atomic<int64_t> g_live{0}, g_others{0};

static bool fails_now() {
    const int64_t left = g_countdown.fetch_sub(1);
    return g_from_then_on ? left <= 1 : left == 1;
}
[[maybe_unused]] static bool fails(int error) {
    return g_everything && error != 0 && fails_now() && (errno = error, true);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__clang__)
constexpr bool kMallocFails = false;  // a sanitizer has its own
#else
constexpr bool kMallocFails = true;
extern "C" void *__libc_malloc(size_t), *__libc_calloc(size_t, size_t), *__libc_realloc(void *, size_t);
void *malloc(size_t size) { return fails(ENOMEM) ? nullptr : __libc_malloc(size); }
void *calloc(size_t n, size_t size) { return fails(ENOMEM) ? nullptr : __libc_calloc(n, size); }
void *realloc(void *block, size_t size) { return fails(ENOMEM) ? nullptr : __libc_realloc(block, size); }
#endif

static bool block_fails() { return !(kMallocFails && g_everything) && fails_now(); }
static void *counted(void *block, int by) { return g_live += block != nullptr ? by : 0, block; }
void *zt_malloc(uint32_t size) { return counted(block_fails() ? nullptr : std::malloc(size), 1); }
void *zt_zalloc(uint32_t size) { return counted(block_fails() ? nullptr : std::calloc(1, size), 1); }
void zt_free(void *block) { std::free(counted(block, -1)); }

// A signal stack that is not in use can always be given up; and sanitizers insist on theirs.
[[maybe_unused]] static bool may_fail(const stack_t *stack) {
    return kMallocFails && (!stack || stack->ss_flags != SS_DISABLE);
}
[[maybe_unused]] static int given_back(intptr_t result) {
    EXPECT_TRUE(!g_everything || static_cast<int>(result) == 0) << "was not held";
    return 1;
}

// The system's function, in a version that gives `failed` when it is its turn to fail, and otherwise makes
// `more` of what is held. They all take numbers and pointers, six at most, and these pass as they come.
#define FALLIBLE(name, error, failed, more)                                                                    \
    extern "C" intptr_t my_##name(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t) __asm__(#name);  \
    [[gnu::used]] intptr_t my_##name(intptr_t a, intptr_t b, intptr_t c, intptr_t d, intptr_t e, intptr_t f) { \
        const auto system = (decltype(&my_##name))dlsym(RTLD_NEXT, #name);                                     \
        const intptr_t got = fails(error) ? (failed) : system(a, b, c, d, e, f);                               \
        return g_others += (more), got;                                                                        \
    }
// clang-format off
#if !defined(__SANITIZE_THREAD__) && !defined(ZT_FUZZ)  // run times that call some of these themselves
FALLIBLE(pthread_mutexattr_init, ENOMEM, ENOMEM, int(got) == 0) FALLIBLE(pthread_mutexattr_settype, ENOMEM, ENOMEM, 0)
FALLIBLE(pthread_mutex_init, ENOMEM, ENOMEM, int(got) == 0) FALLIBLE(pthread_create, EAGAIN, EAGAIN, 0)
FALLIBLE(pthread_setname_np, ERANGE, ERANGE, 0) FALLIBLE(pthread_getname_np, ERANGE, ERANGE, 0)
FALLIBLE(mmap, ENOMEM, -1, got != -1) FALLIBLE(mprotect, ENOMEM, -1, 0) FALLIBLE(sigaltstack, may_fail((stack_t *)a) ? EPERM : 0, -1, 0)
FALLIBLE(eventfd, EMFILE, -1, 0) FALLIBLE(eventfd_read, EIO, -1, 0) FALLIBLE(syscall, EIO, -1, 0)
FALLIBLE(poll, ENOMEM, -1, 0) FALLIBLE(open, EMFILE, -1, 0) FALLIBLE(fcntl, EMFILE, -1, 0) FALLIBLE(fstat, EIO, -1, 0)
FALLIBLE(fopen, EMFILE, 0, 0) FALLIBLE(fseek, EIO, -1, 0) FALLIBLE(ftell, EIO, -1, 0) FALLIBLE(fread, EIO, c - 1, 0)
FALLIBLE(backtrace, ENOMEM, -1, 0) FALLIBLE(dladdr1, ENOENT, 0, 0) FALLIBLE(system, EAGAIN, -1, 0)
FALLIBLE(sem_wait, g_from_then_on ? 0 : EINTR, -1, 0)  // is tried again
FALLIBLE(pthread_mutexattr_destroy, 0, 0, -given_back(got)) FALLIBLE(pthread_mutex_destroy, 0, 0, -given_back(got))
FALLIBLE(munmap, 0, 0, -given_back(got)) FALLIBLE(close, 0, 0, given_back(got) - 1)
    #endif
    // clang-format on

    namespace faults {
    void fail_at(uint64_t n, Mode mode, Of of) {
        g_from_then_on = mode == Mode::kFromThenOn, g_everything = of == Of::kEverything;
        g_countdown = n > 0 ? static_cast<int64_t>(n) : INT64_MAX;
    }
    bool disarm() { return g_everything = false, g_countdown.exchange(INT64_MAX) < 1; }
    int64_t live() { return g_live; }
    int64_t held() {
        const std::filesystem::directory_iterator descriptors("/proc/self/fd");
        return g_live + g_others + std::distance(begin(descriptors), end(descriptors));
    }

}  // namespace faults
