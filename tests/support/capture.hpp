// What a piece of code writes to standard output, by stdio or by write(2).
// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <stdio_ext.h>

#include <cstdio>
#include <string>

template <typename Body>
std::string capture_stdout(Body body) {
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);  // only a flush empties it, also on a terminal
    testing::internal::CaptureStdout();
    body();
    return testing::internal::GetCapturedStdout();
}

// The same for code that must flush what it writes: whatever is left in the buffer is a failure.
template <typename Body>
std::string capture_flushed_stdout(Body body) {
    return capture_stdout([&] {
        body();
        EXPECT_EQ(__fpending(stdout), 0U) << "not flushed";
    });
}
