// Runs inputs through the models of the program that this is linked into: those that libFuzzer makes,
// or, in an ordinary test program, the files of the module's corpus.
// SPDX-License-Identifier: MIT
#include "support/test.hpp"

static void run_input(std::span<const uint8_t> input) {
    Choices choices(input);
    g_models[choices(g_models.size())](choices);
}

#ifdef ZT_FUZZ
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
    run_input({bytes, count});
    if (testing::Test::HasFailure()) std::abort();
    return 0;
}
#else
TEST(Corpus, HoldsNoFindings) {
    const std::string program = program_invocation_short_name,
                      module = program.substr(0, program.rfind("_test"));
    for (const auto &entry : std::filesystem::directory_iterator(ZT_CORPUS "/" + module)) {
        std::ifstream file(entry.path());
        const std::string input(std::istreambuf_iterator<char>(file), {});
        run_input({reinterpret_cast<const uint8_t *>(input.data()), input.size()});
        ASSERT_FALSE(HasFailure()) << entry.path();
    }
}
#endif
