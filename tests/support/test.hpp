// What every test uses: GoogleTest, the standard headers and the rest of this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/capture.hpp"
#include "support/choices.hpp"
#include "support/faults.hpp"
#include "support/guarded.hpp"
#include "support/threads.hpp"

// Its run time has ways of its own with signals, cancellation and address space.
#if defined(__SANITIZE_THREAD__)
inline constexpr bool kThreadSanitizer = true;
#else
inline constexpr bool kThreadSanitizer = false;
#endif
