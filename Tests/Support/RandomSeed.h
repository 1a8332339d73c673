#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>
#include <ranges>
#include <string>

namespace orvane::test {

/// The seed of a random test: what ORVANE_SEED says, so that a failure can be seen again, else another one in
/// every run. Printed where it was drawn.
inline unsigned randomSeed() {
    // Nothing changes the environment while tests run.
    const char* given = std::getenv("ORVANE_SEED");
    const unsigned seed =
        given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device{}();
    std::cout << "ORVANE_SEED=" << seed << "\n";
    return seed;
}

/// The seeds of a test over as many random cases: from ORVANE_SEED on, else from 1.
inline auto seeds(unsigned count) {
    const unsigned first = std::getenv("ORVANE_SEED") != nullptr ? randomSeed() : 1;
    return std::views::iota(first, first + count);
}

} // namespace orvane::test
