// SPDX-License-Identifier: MIT
#include "zt/backtrace.h"

#include <execinfo.h>
#include <malloc.h>

#include "zt/thread.h"

#include "support/test.hpp"

static thread_local bool t_crashed = false;                          // from here on it must not allocate
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // have their own malloc
extern "C" void *__libc_malloc(size_t);
extern "C" __attribute__((weak)) void __gcov_dump();  // there when coverage is measured; it allocates
extern "C" void *malloc(size_t size) noexcept {
    return t_crashed && !__gcov_dump ? _exit(99), nullptr : __libc_malloc(size);
}
#endif

static void fault() { *reinterpret_cast<volatile int *>(std::atomic<uintptr_t>(64).load()) = t_crashed = true; }
// A zero that no compiler sees through, and a name: in an emulator it is another by default.
static const volatile int g_zero = pthread_setname_np(pthread_self(), "a_name");
static void be_killed() {
    const pid_t child = fork();
    if (child == 0) kill(getppid(), SIGBUS), _exit(0);
    while (waitpid(child, nullptr, 0) != child) continue;
}

static int32_t overflow(zt_thread_t *, void *) {
    volatile char frame[4096] = {1};
    return frame[0] == 0 ? 0 : overflow(nullptr, nullptr) + frame[0];
}

static void survive_all() {
    zt_backtrace_enable_noexit();
    for (const int signo : {SIGSEGV, SIGBUS, SIGILL, SIGABRT, SIGFPE, SIGSYS})
        if (errno = 12345, raise(signo), errno != 12345) _exit(1);
}

// The C library finds its heap damaged and aborts with a lock of malloc held, while another thread
// holds that of stdout.
static void abort_in_malloc() {
    flockfile(stdout);
    std::thread([] {
        auto *block = static_cast<char *>(malloc(100'000));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // have their own malloc
        memset(block + malloc_usable_size(block), 0xFF, 8);          // the next one's size
#endif
        raise(malloc(120'000) == block ? 0 : SIGABRT);
    }).join();
}

static int fault_here(const char *, ...) { return fault(), 0; }
static int abort_here(const char *, ...) { std::abort(); }
static std::atomic<bool> g_done{false};
static int hang_once(const char *, ...) { return g_done.exchange(true) ? 0 : pause(); }
static int raise_once(const char *, ...) { return g_done.exchange(true) ? 0 : raise(SIGFPE); }

// A process with the handler installed runs body, dumps so often and ends with the signal (0: it
// exits). Several dumps are those of a process that goes on.
static void expect(int signal, int dumps, void (*body)(), zt_backtrace_print_t print = nullptr) {
    const std::string output =
        "^(malloc[^\n]+\n)?(=========>>>Dump stack start<<<=========\nsigno: [0-9]+\n"
        ".{3} Thread: [a-z_]+ .{3}\nbacktrace.. returned ([1-9]|[12][0-9]|3[0-2]) addresses\n"
        "(Frame [0-9]+:  [^\n]+\n)+=========>>>Dump stack end<<<===========\n"
        "( ====== !!!crashed!!! ======\n){" +
        std::to_string(dumps > 1) + "}){" + std::to_string(dumps) + "}(qemu: [^\n]+\n)?$";
    EXPECT_EXIT((dup2(2, 1), alarm(10), zt_backtrace_segfault(print), body(), _exit(0)),
                [=](int status) { return (status & ~0x80) == signal; }, output);
}

TEST(Backtrace, EveryDeathEndsWithItsDumpAndItsSignal) {
    // The cancellation that is pending must not cut a dump short. (TSan's run time takes it in any handler.)
    const auto both = [] { on_threads(2, [](int) { kThreadSanitizer || pthread_cancel(pthread_self()), fault(); }); };
    expect(SIGSEGV, 1, both);
    if (!kThreadSanitizer) expect(SIGSEGV, 0, both, hang_once);
    expect(SIGSEGV, 1, [] { overflow(nullptr, nullptr); });
    expect(SIGSEGV, 1, [] {
        zt_thread_t thread = nullptr;
        if (zt_thread_create_and_run(&thread, 3, overflow, nullptr, "worker") == 0) pause();
    });
    expect(SIGABRT, 1, abort_in_malloc);
    expect(SIGSEGV, 1, [] { reinterpret_cast<void (*)()>(intptr_t{g_zero})(); });
    expect(SIGFPE, 1, [] { raise(SIGFPE + div(1, g_zero).quot); });  // sent where it is no fault
    expect(SIGSEGV, 0, [] { close(1), fault(); });
    expect(SIGSEGV, 0, [] {  // nobody reads, and not a byte more is taken
        int ends[2];
        if (pipe2(ends, O_NONBLOCK) != 0 || dup2(ends[1], 1) != 1) return;
        while (write(1, "x", 1) == 1) continue;
        fault();
    });
    expect(SIGBUS, 1, be_killed);
    expect(0, 2, [] { zt_backtrace_enable_noexit(), be_killed(), be_killed(); });
    expect(SIGUSR1, 0, [] { raise(SIGUSR1); });
    expect(SIGSEGV, 0, fault, fault_here);
    expect(SIGABRT, 0, zt_backtrace, abort_here);
    expect(SIGSEGV, 13, [] { on_threads(2, [](int) { survive_all(); }), fault(); });
    expect(0, 0, survive_all, raise_once);
    expect(0, 0, [] {
        int ends[2];
        if (pipe(ends) + dup2(ends[1], 1) + close(ends[0]) + close(ends[1]) == 1) survive_all();
    });
}

// On demand, through stdio, with the C library's own texts.
TEST(Backtrace, NamesFramesAsTheCLibraryDoes) {
    const auto text = capture_flushed_stdout([] { printf("before, "), zt_backtrace(); });
    std::string frames;
    int count = 0;
    for (size_t at = 0; (at = text.find("[0x", at + 1)) < text.size(); ++count) {
        auto *address = reinterpret_cast<void *>(std::stoull(text.substr(at + 1), nullptr, 16));
        const std::shared_ptr<char *> symbol(backtrace_symbols(&address, 1), free);
        frames += "Frame " + std::to_string(count) + ":  " + *symbol + "\n";
    }
    EXPECT_EQ(text, "before, *** Thread: a_name ***\nbacktrace() returned " + std::to_string(count) + " addresses\n" +
                        frames);
}
