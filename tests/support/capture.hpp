// What a piece of code writes to standard output, by stdio or by write(2).
// SPDX-License-Identifier: MIT
#ifndef ZT_TESTS_SUPPORT_CAPTURE_HPP
#define ZT_TESTS_SUPPORT_CAPTURE_HPP

#include <gtest/gtest.h>

#include <string>

template <typename Body>
std::string capture_stdout(Body body) {
    testing::internal::CaptureStdout();
    body();
    return testing::internal::GetCapturedStdout();
}

#endif  // ZT_TESTS_SUPPORT_CAPTURE_HPP
