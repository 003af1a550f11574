// Models: what a random test does with the code and something simpler side by side. Every decision
// comes from a Choices, so that a seeded generator and a fuzzer's input drive the same model.
// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class Choices {
  public:
    Choices(uint32_t seed, uint64_t steps) : seeded_(true), seed_(seed), steps_(steps), random_(seed) {}
    explicit Choices(std::span<const uint8_t> input) : input_(input) {}

    // Whether to take another step: until a failure, and while steps or input are left.
    bool more() { return !testing::Test::HasFailure() && (seeded_ ? steps_ > 0 && steps_-- : !input_.empty()); }
    uint64_t steps_left() const { return steps_; }

    // Any number below n, of 64 bits when n is 0. An input that has come to its end gives 0.
    uint64_t operator()(uint64_t n = 0) {
        uint64_t value = seeded_ ? random_() : 0;
        for (uint64_t most = n - 1; most > 0 && !input_.empty(); most >>= 8, input_ = input_.subspan(1))
            value = value << 8 | input_[0];
        return n > 0 ? value % n : value;
    }
    // A number below n that each seed has for itself: every n seeds meet them all.
    uint64_t variant(uint64_t n) { return seeded_ ? seed_ % n : (*this)(n); }
    template <typename T>
    T pick(std::initializer_list<T> of) {
        return of.begin()[(*this)(of.size())];
    }
    // Letters, or any bytes.
    std::string text(uint64_t size, std::string_view letters = {}) {
        std::string made(size, '\0');
        for (char &c : made) c = letters.empty() ? char((*this)(256)) : letters[(*this)(letters.size())];
        return made;
    }

  private:
    bool seeded_ = false;
    uint32_t seed_ = 0;
    uint64_t steps_ = 0;
    std::mt19937_64 random_;
    std::span<const uint8_t> input_;
};

using Model = void (*)(Choices &);

inline std::vector<Model> g_models;  // those of this program, in the order of its source

inline void run_seeds(Model model, uint32_t seeds, uint64_t steps) {
    for (uint32_t seed = 0; seed < seeds && !testing::Test::HasFailure(); ++seed) {
        Choices random(seed, steps);
        model(random);
        EXPECT_FALSE(testing::Test::HasFailure()) << "seed " << seed << ", " << random.steps_left() << " steps left";
    }
}

// Defines a model that gets its decisions from `random`. It is a test, of so many seeds with so many
// steps each, and what the fuzzer drives.
#define ZT_MODEL(suite, name, seeds, steps)                                                  \
    static void suite##name(Choices &random);                                                \
    [[maybe_unused]] static const Model k##suite##name = g_models.emplace_back(suite##name); \
    TEST(suite, name) { run_seeds(suite##name, seeds, steps); }                              \
    static void suite##name(Choices &random)
