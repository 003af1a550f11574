// A buffer between inaccessible pages: a step past its end, or before its start, is a crash.
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

class Guarded {
  public:
    // Room for up to 64 KiB, all 0.
    Guarded() { mprotect(first(), kRoom, PROT_READ | PROT_WRITE); }
    ~Guarded() { munmap(map_, 3 * kRoom); }
    Guarded(const Guarded &) = delete;

    // The last count bytes, or copies of these: an inaccessible page follows.
    char *last(size_t count) const { return first() + kRoom - count; }
    char *last(std::string_view bytes) const {
        return std::copy(bytes.begin(), bytes.end(), last(bytes.size())) - bytes.size();
    }
    // The bytes right behind an inaccessible page.
    char *first() const { return static_cast<char *>(map_) + kRoom; }

  private:
    static constexpr size_t kRoom = 65536;  // a multiple of every page size in use
    void *map_ = mmap(nullptr, 3 * kRoom, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
};
