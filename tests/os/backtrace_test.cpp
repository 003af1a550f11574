// SPDX-License-Identifier: MIT
#include "zt/backtrace.h"

#include <execinfo.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <csignal>
#include <cstdarg>
#include <thread>

#include "zt/memory.h"
#include "zt/thread.h"

namespace {

// What a child process does with the handler installed, then its exit status.
using Body = int (*)();

int fault() { return *reinterpret_cast<volatile int *>(std::atomic<uintptr_t>(64).load()); }

int overflow() {
    volatile char frame[4096] = {1};
    return frame[0] == 0 ? 0 : overflow() + frame[0];
}

// In a thread of the library, and on request in the main thread at the same time.
template <Body body, bool here_too = false>
int in_thread() {
    zt_thread_t thread = nullptr;
    const auto run = [](zt_thread_t *, void *) -> int32_t { return body(); };
    const zt_status_t status = zt_thread_create_and_run(&thread, 3, run, nullptr, "worker");
    const int result = here_too ? body() : 0;
    return zt_thread_wait_and_destory(&thread, nullptr) + status + result;
}

int survive_all() {
    zt_backtrace_enable_noexit();
    errno = 12345;
    for (const int signo : {SIGSEGV, SIGBUS, SIGILL, SIGABRT, SIGFPE, SIGSYS}) raise(signo);
    return errno - 12345;
}

// The C library finds its heap damaged and aborts with a lock of malloc held.
[[maybe_unused]] int damage_heap() {
    std::thread([] { pause(); }).detach();  // in a single thread malloc would not lock
    auto *block = static_cast<char *>(zt_malloc(100'000));
    zt_memset(block + malloc_usable_size(block), 0xFF, sizeof(size_t));  // the next block's size
    return zt_malloc(120'000) != nullptr;
}

int fault_while_stdio_is_locked() {
    std::atomic<bool> locked{false};
    std::thread([&] { flockfile(stdout), locked = true, pause(); }).detach();
    while (!locked) std::this_thread::yield();
    return fault();
}

int break_stdout() {
    int ends[2];
    return pipe(ends) + dup2(ends[1], STDOUT_FILENO) + close(ends[0]) + close(ends[1]);
}

int fault_here(const char *, ...) { return fault(); }
int abort_here(const char *, ...) { std::abort(); }
std::atomic<bool> g_hangs{false};
int hang_once(const char *, ...) { return g_hangs.exchange(true) ? 0 : pause(); }

// Counts the frames that read as the C library has it down from how many were announced.
int g_frames_left = 1000;
int compare_frames(const char *format, ...) {
    va_list rest;
    va_start(rest, format);
    const int number = format[0] == '*' ? 0 : va_arg(rest, int);
    if (std::string_view(format) == "backtrace() returned %d addresses\n") g_frames_left = number;
    if (std::string_view(format) == "Frame %d:  %s\n") {
        const std::string text = va_arg(rest, const char *);
        const uintptr_t address = std::stoull(text.substr(text.rfind('[') + 1), nullptr, 16);
        g_frames_left -= text == *backtrace_symbols(reinterpret_cast<void *const *>(&address), 1);
    }
    va_end(rest);
    return 0;
}

// A whole dump, unmixed with anything. @ stands for it in the rows.
const std::string kDump =
    "=========>>>Dump stack start<<<=========\nsigno: [0-9]+\n\\*\\*\\* Thread: [a-z_]+ \\*\\*\\*\n"
    "backtrace\\(\\) returned ([1-9]|[12][0-9]|3[0-2]) addresses\n(Frame [0-9]+:  [^\n]+\n)+"
    "=========>>>Dump stack end<<<===========\n";

struct Death {
    const char *name;
    Body body;
    int signal;  // that ends the process; 0: it exits with status 0
    std::string output;
    zt_backtrace_print_t print = nullptr;
};

const Death kDeaths[] = {
    {"fault", fault, SIGSEGV, "^@$"},
    {"sent", [] { return raise(SIGABRT); }, SIGABRT, "^@$"},
    {"another", [] { return raise(SIGUSR1); }, SIGUSR1, "^$"},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // have their own malloc
    {"in_malloc", damage_heap, SIGABRT, "@$"},
#endif
    {"in_stdio", fault_while_stdio_is_locked, SIGSEGV, "^@$"},
    {"overflow", overflow, SIGSEGV, "^@$"},
    {"overflow_in_thread", in_thread<overflow>, SIGSEGV, "Thread: worker "},
    {"two_threads", in_thread<fault, true>, SIGSEGV, "^@$"},
    {"to_be_cancelled", in_thread<[] { return pthread_cancel(pthread_self()) + fault(); }>, SIGSEGV,
     "^@$"},
    {"fault_in_print", [] { return raise(SIGBUS); }, SIGSEGV, "^$", fault_here},
    {"abort_in_print", [] { return raise(SIGABRT); }, SIGABRT, "^$", abort_here},
    {"stuck_in_print", in_thread<fault, true>, SIGSEGV, "^$", hang_once},
    {"no_stdout", [] { return close(STDOUT_FILENO) + fault(); }, SIGSEGV, "^$"},
    {"broken_pipe", [] { return break_stdout() + fault(); }, SIGSEGV, "^$"},
    {"survives", survive_all, 0, "^(@ ====== !!!crashed!!! ======\n){6}$"},
    {"survives_twice", in_thread<survive_all, true>, 0, "^(@ ====== !!!crashed!!! ======\n){12}$"},
    {"survives_broken_pipe", [] { return break_stdout(), survive_all(); }, 0, "^$"},
    {"survives_no_fault", [] { return zt_backtrace_enable_noexit(), fault(); }, SIGSEGV,
     "^@ ====== !!!crashed!!! ======\n$"},
    {"on_demand", [] { return printf("before, "), zt_backtrace(), puts("after"), fflush(stdout); },
     0, "^before, .{3} Thread: backtrace_test .*\nafter\n$"},
    {"frame_texts", [] { return zt_backtrace(), g_frames_left; }, 0, "^$", compare_frames},
};

void run(const Death &row) {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    alarm(30);
    zt_backtrace_segfault(row.print);
    _exit(row.body());
}

TEST(Backtrace, EveryDeathEndsWithItsDumpAndItsSignal) {
    for (const Death &row : kDeaths) {
        SCOPED_TRACE(row.name);
        std::string output = row.output;
        if (const size_t at = output.find('@'); at < output.size()) output.replace(at, 1, kDump);
        const auto ends_so = [&](int status) { return (status & ~0x80) == row.signal; };
        EXPECT_EXIT(run(row), ends_so, output);
    }
}

}  // namespace
