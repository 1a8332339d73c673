#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>
#include <ranges>
#include <string_view>

namespace orvane::test {

/// The seed of all random tests of a run: the number in ORVANE_SEED, a random one for "new", else 1, so that
/// a failure comes from a change and not from the seed. Printed at its first use, and with each failure after
/// that.
inline unsigned randomSeed() {
    static const unsigned seed = [] {
        // Nothing changes the environment while tests run.
        const char* given = std::getenv("ORVANE_SEED");
        if (given == nullptr) return 1U;
        return given == std::string_view("new") ? std::random_device{}()
                                                : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
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

/// `count` seeds: `first` and those after it.
inline auto seedsFrom(unsigned first, unsigned count) {
    return std::views::iota(0U, count) | std::views::transform([first](unsigned i) { return first + i; });
}

/// `count` seeds for a test with random cases, from `randomSeed` on.
inline auto seeds(unsigned count) { return seedsFrom(randomSeed(), count); }

} // namespace orvane::test
