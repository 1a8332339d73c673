#include "OrvaneSyncCore/Utilities/NearestWord.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

namespace {

/// The number of insertions, deletions, replacements and swaps of neighbours between the two words.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> costs(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                costs[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = costs[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            costs[i][j] = std::min({replaced, costs[i - 1][j] + 1, costs[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                costs[i][j] = std::min(costs[i][j], costs[i - 2][j - 2] + 1);
        }
    }
    return costs.back().back();
}

/// The candidate with the smallest edit distance; absent if none is similar enough.
std::optional<std::string_view> nearest(std::string_view word, std::span<const std::string_view> candidates) {
    std::optional<std::string_view> best;
    constexpr std::size_t longestWord = 64;
    if (word.size() > longestWord) return best;
    // At most a third of the word may be wrong; a suggestion beyond that would only confuse.
    std::size_t bestDistance = word.size() / 3 + 1;
    for (const std::string_view candidate : candidates) {
        const std::size_t distance = editDistance(word, candidate);
        if (distance >= bestDistance) continue;
        bestDistance = distance;
        best = candidate;
    }
    return best;
}

} // namespace

std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates) {
    const auto meant = nearest(word, candidates);
    return meant ? " (did you mean '" + std::string(*meant) + "'?)" : "";
}

} // namespace orvane
