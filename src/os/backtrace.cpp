// The calling thread's name and call stack as text.
// SPDX-License-Identifier: MIT
#include "os/backtrace.hpp"

#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>
#include <pthread.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>

namespace zt::detail {
namespace {

constexpr int kMaxFrames = 32;
constexpr size_t kThreadNameBytes = 16;  // all that the kernel keeps of a name

constinit zt_backtrace_print_t g_print = nullptr;  // set at program start

// The text that backtrace_symbols gives for the address, without its allocation: the offset counts
// from the symbol, or from the file's load bias where there is no symbol.
void describe_frame(void *address, char *text, size_t size) {
    Dl_info info{};
    void *found = nullptr;
    if (dladdr1(address, &info, &found, RTLD_DL_LINKMAP) == 0 || info.dli_fname == nullptr ||
        info.dli_fname[0] == '\0') {
        std::snprintf(text, size, "[%p]", address);
        return;
    }
    const bool named = info.dli_sname != nullptr;
    const auto *file = static_cast<const link_map *>(found);
    const uintptr_t base = named ? reinterpret_cast<uintptr_t>(info.dli_saddr) : file->l_addr;
    if (!named && base == 0) {
        std::snprintf(text, size, "%s() [%p]", info.dli_fname, address);
        return;
    }
    const auto at = reinterpret_cast<uintptr_t>(address);
    const bool behind = at >= base;
    std::snprintf(text, size, "%s(%s%c%#tx) [%p]", info.dli_fname, named ? info.dli_sname : "",
                  behind ? '+' : '-', static_cast<ptrdiff_t>(behind ? at - base : base - at),
                  address);
}

// Through stdio, so that the lines keep their order with the application's own output.
ZT_PRINTF(1, 2) int print_by_stdio(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int written = std::vprintf(format, arguments);
    va_end(arguments);
    std::fflush(stdout);
    return written;
}

}  // namespace

zt_backtrace_print_t application_print() { return g_print; }

void set_application_print(zt_backtrace_print_t print) { g_print = print; }

void print_backtrace(zt_backtrace_print_t print) {
    char name[kThreadNameBytes] = "";
    pthread_getname_np(pthread_self(), name, sizeof name);
    print("*** Thread: %s ***\n", name);

    void *frames[kMaxFrames];
    const int count = backtrace(frames, kMaxFrames);
    if (count < 0) return;
    print("backtrace() returned %d addresses\n", count);
    for (int i = 0; i < count; ++i) {
        char text[kFrameTextBytes];
        describe_frame(frames[i], text, sizeof text);
        print("Frame %d:  %s\n", i, text);
    }
}

}  // namespace zt::detail

void zt_backtrace() {
    const zt_backtrace_print_t print = zt::detail::application_print();
    zt::detail::print_backtrace(print != nullptr ? print : zt::detail::print_by_stdio);
}
