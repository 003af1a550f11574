// A buffer between inaccessible pages: a step past its end, or before its start, is a crash.
// SPDX-License-Identifier: MIT
#ifndef ZT_TESTS_SUPPORT_GUARDED_HPP
#define ZT_TESTS_SUPPORT_GUARDED_HPP

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>

class Guarded {
  public:
    // Room for up to size bytes, all 0.
    explicit Guarded(size_t size)
        : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
          room_((size + page_ - 1) / page_ * page_),
          map_(static_cast<char *>(
              mmap(nullptr, room_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        mprotect(map_ + page_, room_, PROT_READ | PROT_WRITE);
    }
    ~Guarded() { munmap(map_, room_ + 2 * page_); }
    Guarded(const Guarded &) = delete;
    Guarded &operator=(const Guarded &) = delete;

    // The last count bytes: an inaccessible page follows.
    char *last(size_t count) const { return first() + room_ - count; }
    // The bytes right behind an inaccessible page.
    char *first() const { return map_ + page_; }

  private:
    size_t page_, room_;
    char *map_;
};

#endif  // ZT_TESTS_SUPPORT_GUARDED_HPP
