// The stack on which the crash handler runs when a thread has overflowed its own.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_OS_ALT_STACK_HPP
#define ZT_SRC_OS_ALT_STACK_HPP

namespace zt::detail {

// Gives the calling thread an alternate signal stack, unless it has one already, and returns what
// alt_stack_remove takes: null when there is nothing to remove. Failure is ignored: then only the
// report of a stack overflow is lost.
void *alt_stack_install();

// Takes back what alt_stack_install gave to this thread.
void alt_stack_remove(void *memory);

}  // namespace zt::detail

#endif  // ZT_SRC_OS_ALT_STACK_HPP
