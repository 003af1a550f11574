// What the crash handler shares with the back-trace on demand.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_OS_BACKTRACE_HPP
#define ZT_SRC_OS_BACKTRACE_HPP

#include <cstddef>

#include "zt/backtrace.h"

namespace zt::detail {

// A frame's text is cut to this, NUL included. On the stack of a signal handler.
inline constexpr size_t kFrameTextBytes = 4096;

// The application's print function; null when it has given none.
zt_backtrace_print_t application_print();
void set_application_print(zt_backtrace_print_t print);

// Prints the calling thread's name and call stack. Neither allocates nor locks, so that it can run
// after a crash anywhere; the C library's unwinder must have been used once before.
void print_backtrace(zt_backtrace_print_t print);

}  // namespace zt::detail

#endif  // ZT_SRC_OS_BACKTRACE_HPP
