// SPDX-License-Identifier: MIT
#include "zt/status.h"

#include "support/test.hpp"

TEST(Status, TranslatesErrnoAndUnknownNames) {
    const int rows[][2] = {{0, 0}, {9, 16}, {35, 6}, {101, 55}, {115, 43}, {116, 6}, {-1, 6}};
    for (const auto &[error, status] : rows) EXPECT_EQ(zt_get_status_by_errno(error), status);
    for (const char *name : {"OutOfMemory", "", "Succes", "Successful"}) EXPECT_EQ(zt_code_to_status(name), 6);
}

using Rows = std::vector<zt_status_entry_t>;

static const std::pair<Rows, const char *> kBatches[] = {
    {{{100, "MyFirst", "first"}}, ""},
    {{{-101, "AnotherOne", "another"}, {300, "b\xC3", "high"}, {55, "B", "low"}}, ""},
    {{}, ""},
    {{{7, "Seven", ""}}, "repeat status code!!! status=7 code=Seven\n"},
    {{{200, "Timeout", ""}}, "repeat status code!!! status=200 code=Timeout\n"},
    {{{201, "New", ""}, {300, "C", ""}, {1, "D", ""}}, "repeat status code!!! status=300 code=C\n"},
    {{{203, "MyFirst", ""}}, "repeat status code!!! status=203 code=MyFirst\n"},
    // A number that is shared within a batch belongs to the lesser name.
    {{{400, "bb", nullptr}, {401, "Ab", ""}, {400, "b", "by name"}, {402, "bbb", ""}}, ""},
};

static void expect_known(const Rows &registered) {
    for (int status = 0; status < 55; ++status) EXPECT_EQ(zt_code_to_status(zt_get_status_code(status)), status);
    for (const auto &[status, code, description] : registered) {
        EXPECT_EQ(zt_code_to_status(code), status);
        EXPECT_TRUE(description == nullptr || zt_get_status_string(status) == description) << code;
    }
    EXPECT_EQ(zt_get_status_code(-1) + std::string(zt_get_status_string(201)), "UnknownUnknown status code");
}

TEST(Status, RegistersWholeBatchesOrNothing) {
    Rows registered;
    for (size_t step = 0; step < 2 * std::size(kBatches); ++step) {
        const auto &[rows, message] = kBatches[step / 2];
        const auto add = [&batch = rows] { zt_status_extend_register(batch.data(), batch.size()); };
        // Without memory the first time: were anything kept, the second time would clash.
        if (step % 2 == 0) faults::fail_at(1, faults::Mode::kOnce);
        EXPECT_EQ(capture_flushed_stdout(add), message);
        if (step % 2 != 0 && *message == '\0') registered.insert(registered.end(), rows.begin(), rows.end());

        faults::fail_at(1, faults::Mode::kOnce);
        expect_known(registered);
        EXPECT_FALSE(faults::disarm()) << "a look-up allocates";
        EXPECT_EQ(faults::live(), registered.empty() ? 0 : 1);
    }
}
