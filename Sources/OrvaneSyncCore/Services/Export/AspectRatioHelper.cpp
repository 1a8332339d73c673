#include "OrvaneSyncCore/Services/Export/AspectRatioHelper.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orvane::AspectRatioHelper {

namespace {

constexpr std::array<double, presetIdentifiers.size()> ratios{16.0 / 9, 1.85,    2.0, 2.35,
                                                              2.39,     4.0 / 3, 1.0, 0.5625};

} // namespace

std::optional<double> ratio(std::string_view identifier) {
    const auto found = std::ranges::find(presetIdentifiers, identifier);
    if (found == presetIdentifiers.end()) return std::nullopt;
    return ratios.at(static_cast<std::size_t>(found - presetIdentifiers.begin()));
}

int heightFromWidth(int width, std::string_view identifier) {
    const auto shape = ratio(identifier);
    if (!shape || !(*shape > 0)) return 0;
    const double height = std::round(width / *shape);
    if (std::abs(height) >= std::numeric_limits<int>::max()) return 0;
    const int pixels = static_cast<int>(height);
    return pixels % 2 == 0 ? pixels : pixels + 1;
}

} // namespace orvane::AspectRatioHelper
