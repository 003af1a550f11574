// Linked to a test of base64, has each of its rounds (GTEST_REPEAT) run on the next of the kernels that
// the processor has.
// SPDX-License-Identifier: MIT
#include "format/base64_kernels.hpp"

#include <gtest/gtest.h>

namespace {

struct NextKernel : testing::Environment {
    size_t round = 0;

    void SetUp() override {
        using namespace zt::detail;
        const bool one_more = g_base64_encode.force(round) && g_base64_decode.force(round);
        ASSERT_EQ(g_base64_count.force(round++), one_more) << "the three have the same kernels";
        if (!one_more) printf("that was the last kernel; once more on it\n");
    }
};

[[maybe_unused]] const testing::Environment *const g_registered = testing::AddGlobalTestEnvironment(new NextKernel);

}  // namespace
