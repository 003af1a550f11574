// How an operation that has several implementations for different processors finds the best one.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_FORMAT_KERNEL_HPP
#define ZT_SRC_FORMAT_KERNEL_HPP

#include <atomic>
#include <cstddef>
#include <span>

namespace zt::detail {

// One implementation of an operation.
template <typename Function>
struct Kernel {
    const char *name;
    bool (*runs_here)();  // null: on every processor
    Function *function;
};

// An operation's kernels, the best first and the portable one last. The choice is made on the first
// call and costs one load from then on; threads that meet there choose the same.
template <typename Function>
class Dispatch {
  public:
    constexpr explicit Dispatch(std::span<const Kernel<Function>> kernels) : kernels_(kernels) {}

    Function *get() {
        Function *chosen = chosen_.load(std::memory_order_relaxed);
        return chosen != nullptr ? chosen : choose();
    }

    // For tests: chooses the best kernel but `skipped` of those that run here; false if there is none.
    bool force(size_t skipped) {
        for (const Kernel<Function> &kernel : kernels_) {
            if (kernel.runs_here != nullptr && !kernel.runs_here()) continue;
            if (skipped-- > 0) continue;
            chosen_.store(kernel.function, std::memory_order_relaxed);
            return true;
        }
        return false;
    }

  private:
    [[gnu::noinline, gnu::cold]] Function *choose() {
        size_t i = 0;
        while (kernels_[i].runs_here != nullptr && !kernels_[i].runs_here()) ++i;
        chosen_.store(kernels_[i].function, std::memory_order_relaxed);
        return kernels_[i].function;
    }

    std::span<const Kernel<Function>> kernels_;
    std::atomic<Function *> chosen_{nullptr};
};

}  // namespace zt::detail

#endif  // ZT_SRC_FORMAT_KERNEL_HPP
