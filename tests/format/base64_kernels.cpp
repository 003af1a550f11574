// Has each round of a test of base64 (GTEST_REPEAT) run on the next of the kernels that the processor has.
// SPDX-License-Identifier: MIT
#include "format/base64_kernels.hpp"

#include <gtest/gtest.h>

using namespace zt::detail;

struct NextKernel : testing::Environment {
    size_t round = 0;
    void SetUp() override {  // past the last one all stay with that
        g_base64_encode.force(round), g_base64_decode.force(round), g_base64_count.force(round), ++round;
    }
};
[[maybe_unused]] static auto *const g_environment = testing::AddGlobalTestEnvironment(new NextKernel);
