// Counts and fails the library's allocations. A test program that links alloc_faults.cpp has its
// zt_malloc, zt_zalloc and zt_free called by the library in place of the library's own.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace alloc_faults {

enum class Mode { kOnce, kFromThenOn };

// Lets the n-th allocation from now (counted from 1; 0: none) fail, alone or with all later ones.
void fail_at(uint64_t n, Mode mode);

// No allocation fails any more. True when one has failed since fail_at.
bool disarm();

// Allocated through the library and not yet freed.
int64_t live();

// Calls body with the first allocation failing, then the second, and so on until a run meets
// no failure; once with only that one failing and once with all later ones failing too. body must
// release what it got: a leak is a failure of the test. Returns how many failures were injected.
uint64_t fail_each(void (*body)());

}  // namespace alloc_faults
