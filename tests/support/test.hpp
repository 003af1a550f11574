// What every test uses: GoogleTest, the standard headers and the rest of this folder.
// SPDX-License-Identifier: MIT
#ifndef ZT_TESTS_SUPPORT_TEST_HPP
#define ZT_TESTS_SUPPORT_TEST_HPP

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <deque>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/alloc_faults.hpp"
#include "support/capture.hpp"
#include "support/guarded.hpp"
#include "support/threads.hpp"

#endif  // ZT_TESTS_SUPPORT_TEST_HPP
