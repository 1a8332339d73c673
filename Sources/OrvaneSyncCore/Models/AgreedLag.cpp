#include "OrvaneSyncCore/Models/AgreedLag.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace orvane::agreedLag {

std::optional<double> of(std::vector<double> lags, std::size_t fewest) {
    constexpr double closeSeconds = 0.015; // windows of 10 ms, whose place is rounded once more
    constexpr double mostly = 0.8;
    if (lags.empty()) return std::nullopt;
    const std::size_t all = lags.size();
    const auto middle = lags.begin() + std::ssize(lags) / 2;
    std::ranges::nth_element(lags, middle);
    std::erase_if(lags, [median = *middle](double lag) { return std::abs(lag - median) > closeSeconds; });
    if (lags.size() < fewest || static_cast<double>(lags.size()) < mostly * static_cast<double>(all))
        return std::nullopt;
    return std::accumulate(lags.begin(), lags.end(), 0.0) / static_cast<double>(lags.size());
}

} // namespace orvane::agreedLag
