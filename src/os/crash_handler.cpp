// The handler of fatal signals. It must come to its end wherever the crash happened: inside malloc
// or stdio, on a full stack, in several threads, in the print function itself.
// SPDX-License-Identifier: MIT
#include <execinfo.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "os/alt_stack.hpp"
#include "os/backtrace.hpp"
#include "zt/ids.h"

namespace {

using zt::detail::kFrameTextBytes;

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGABRT, SIGFPE, SIGSYS};

constexpr int kTurnSteps = 200;
constexpr timespec kTurnStep = {0, 10'000'000};  // 2 s in all
constexpr int kBlockedOutputMs = 100;            // a line that a non-blocking reader may take

constinit std::atomic<bool> g_no_exit{false};
constinit std::atomic<int64_t> g_dumper{0};  // kernel id of the thread that dumps; 0: none
static_assert(std::atomic<int64_t>::is_always_lock_free);

// The signal is blocked while the handler runs. Left pending, it would end a process that goes on.
void take_back_broken_pipe() {
    sigset_t broken_pipe;
    sigemptyset(&broken_pipe);
    sigaddset(&broken_pipe, SIGPIPE);
    constexpr timespec kNoWait{};
    sigtimedwait(&broken_pipe, nullptr, &kNoWait);
}

void write_all(const char *text, size_t length) {
    while (length > 0) {
        const ssize_t written = write(STDOUT_FILENO, text, length);
        if (written >= 0) {
            text += written;
            length -= static_cast<size_t>(written);
            continue;
        }
        if (errno == EINTR) continue;
        if (errno == EPIPE) return take_back_broken_pipe();
        pollfd output{STDOUT_FILENO, POLLOUT, 0};
        if (errno != EAGAIN || poll(&output, 1, kBlockedOutputMs) <= 0) return;
    }
}

// Past stdio, whose locks the crashed thread, or one that never gets on, may hold.
ZT_PRINTF(1, 2) int print_by_write(const char *format, ...) {
    char line[kFrameTextBytes + 64];
    va_list arguments;
    va_start(arguments, format);
    const int wanted = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (wanted > 0) write_all(line, std::min(static_cast<size_t>(wanted), sizeof line - 1));
    return wanted;
}

// Waits until no other thread dumps, but not for ever: that one may be stuck. False: this thread is
// dumping already and has come here again, by an abort, which unblocks its signal.
bool take_turn() {
    const int64_t self = zt_gettid();
    for (int step = 0; step < kTurnSteps; ++step) {
        int64_t dumper = 0;
        if (g_dumper.compare_exchange_strong(dumper, self)) return true;
        if (dumper == self) return false;
        nanosleep(&kTurnStep, nullptr);
    }
    g_dumper = self;
    return true;
}

// A thread that was stuck may have lost its turn meanwhile.
void end_turn() {
    int64_t self = zt_gettid();
    g_dumper.compare_exchange_strong(self, 0);
}

void dump(zt_backtrace_print_t print, int signo) {
    print("=========>>>Dump stack start<<<=========\n");
    print("signo: %d\n", signo);
    zt::detail::print_backtrace(print);
    print("=========>>>Dump stack end<<<===========\n");
}

// A fault of the processor comes again when its handler returns; what was sent does not.
bool recurs(int signo, const siginfo_t *info) {
    const bool is_fault = signo == SIGSEGV || signo == SIGBUS || signo == SIGILL || signo == SIGFPE;
    return is_fault && info->si_code > 0;
}

// The signal is blocked here: it strikes when the handler returns, so that a core dump shows the
// thread where it crashed. The turn is kept: no other thread starts a dump that would be cut short.
void take_default_action(int signo) {
    signal(signo, SIG_DFL);
    raise(signo);
}

void on_crash(int signo, siginfo_t *info, void *) {
    const int saved_errno = errno;
    // Otherwise a thread with a cancellation pending would vanish in the middle of its dump.
    int cancel_state = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state);
    if (!take_turn()) return take_default_action(signo);

    zt_backtrace_print_t print = zt::detail::application_print();
    if (print == nullptr) print = print_by_write;
    dump(print, signo);
    if (!g_no_exit) return take_default_action(signo);
    print(" ====== !!!crashed!!! ======\n");
    if (recurs(signo, info)) return take_default_action(signo);

    end_turn();
    pthread_setcancelstate(cancel_state, nullptr);
    errno = saved_errno;
}

}  // namespace

void zt_backtrace_segfault(zt_backtrace_print_t print) {
    if (print != nullptr) zt::detail::set_application_print(print);

    // The first use of the unwinder allocates and loads a library: not in the handler.
    void *frame = nullptr;
    backtrace(&frame, 1);
    zt::detail::alt_stack_install();

    struct sigaction action {};
    action.sa_sigaction = on_crash;
    action.sa_flags = SA_ONSTACK | SA_SIGINFO | SA_RESTART;
    sigemptyset(&action.sa_mask);
    // While one is handled the others wait if they were sent; a fault that is blocked makes the
    // kernel end the process, which is right for a crash inside the handler.
    for (const int signo : kSignals) sigaddset(&action.sa_mask, signo);
    sigaddset(&action.sa_mask, SIGPIPE);
    for (const int signo : kSignals) sigaction(signo, &action, nullptr);
}

void zt_backtrace_enable_noexit() { g_no_exit = true; }
