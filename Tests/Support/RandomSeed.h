#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>
#include <ranges>

namespace orvane::test {

/// The seed of all random tests of a run: what ORVANE_SEED says, so that a failure can be seen again, else
/// another one in every run. Printed where it was drawn, and with each failure behind that.
inline unsigned randomSeed() {
    static const unsigned seed = [] {
        // Nothing changes the environment while tests run.
        const char* given = std::getenv("ORVANE_SEED");
        return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                : std::random_device{}();
    }();
    struct Printing : testing::EmptyTestEventListener {
        void OnTestPartResult(const testing::TestPartResult& result) override {
            if (result.failed()) print();
        }
        static void print() { std::cout << "ORVANE_SEED=" << seed << "\n"; }
    };
    static const bool isPrinted = [] {
        Printing::print();
        testing::UnitTest::GetInstance()->listeners().Append(new Printing);
        return true;
    }();
    static_cast<void>(isPrinted);
    return seed;
}

/// As many seeds from one on.
inline auto seedsFrom(unsigned first, unsigned count) {
    return std::views::iota(0U, count) | std::views::transform([first](unsigned i) { return first + i; });
}

/// The seeds of a test over as many random cases, beginning with that.
inline auto seeds(unsigned count) { return seedsFrom(randomSeed(), count); }

/// From 1 on unless ORVANE_SEED says otherwise: where some random case in hundreds is known to be one of
/// which the test says too much.
inline auto sameSeeds(unsigned count) {
    return seedsFrom(std::getenv("ORVANE_SEED") != nullptr ? randomSeed() : 1, count);
}

} // namespace orvane::test
