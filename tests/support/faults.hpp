// Counts what the library holds and fails its calls. A test program that links faults.cpp has its
// zt_malloc, zt_zalloc and zt_free, and its versions of the system's functions, called by the library.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace faults {

enum class Mode { kOnce, kFromThenOn };
enum class Of { kAllocations, kEverything };  // zt_malloc and zt_zalloc alone; all that can fail

// Lets the n-th call from now (counted from 1; 0: none) fail, alone or with all later ones.
void fail_at(uint64_t n, Mode mode, Of of = Of::kAllocations);

// No call fails any more. True when one has failed since fail_at.
bool disarm();

// Allocated through the library and not yet freed.
int64_t live();

// The same, and open descriptors, mappings, mutexes and their attributes.
int64_t held();

}  // namespace faults
