// Alternate signal stacks, mapped apart so that unused pages cost nothing.
// SPDX-License-Identifier: MIT
#include "os/alt_stack.hpp"

#include <signal.h>
#include <sys/mman.h>

#include <cstddef>

namespace zt::detail {
namespace {

// Room for a dump through the application's own print function. The guard below it is as large as
// the largest page of the supported architectures.
constexpr size_t kStackBytes = size_t{64} * 1024;
constexpr size_t kGuardBytes = size_t{64} * 1024;
constexpr size_t kMappedBytes = kGuardBytes + kStackBytes;

bool has_alt_stack() {
    stack_t current;
    return sigaltstack(nullptr, &current) != 0 || (current.ss_flags & SS_DISABLE) == 0;
}

}  // namespace

void *alt_stack_install() {
    if (has_alt_stack()) return nullptr;
    void *memory = mmap(nullptr, kMappedBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return nullptr;

    stack_t stack{};
    stack.ss_sp = static_cast<char *>(memory) + kGuardBytes;
    stack.ss_size = kStackBytes;
    if (mprotect(stack.ss_sp, kStackBytes, PROT_READ | PROT_WRITE) == 0 &&
        sigaltstack(&stack, nullptr) == 0) {
        return memory;
    }
    munmap(memory, kMappedBytes);
    return nullptr;
}

void alt_stack_remove(void *memory) {
    if (memory == nullptr) return;
    stack_t none{};
    none.ss_flags = SS_DISABLE;
    // Refused while it is in use: a thread that calls pthread_exit in a signal handler stands on
    // it.
    if (sigaltstack(&none, nullptr) == 0) munmap(memory, kMappedBytes);
}

}  // namespace zt::detail
