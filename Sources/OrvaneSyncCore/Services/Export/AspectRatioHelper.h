#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace orvane {

/// Shapes of the alternate frame, with the identifiers that the settings store.
namespace AspectRatioHelper {

inline constexpr std::span<const std::string_view, 8> presetIdentifiers =
    std::span(aspectRatioIdentifiers).first<8>();
/// The identifier for a size given in pixels; it has no ratio.
inline constexpr std::string_view customIdentifier = aspectRatioIdentifiers.back();

/// A choice of the settings screen, which shows them in this order.
struct Choice {
    std::string_view identifier;
    std::string_view text;
};
inline constexpr std::array<Choice, 8> choices{{
    {"16:9", "16:9 (HD / UHD)"},
    {"4:3", "4:3 (TV classic)"},
    {"2:1", "2:1 (Univisium)"},
    {"1:1", "1:1 (Square)"},
    {"2.35:1", "2.35:1 (Cinemascope)"},
    {"2.39:1", "2.39:1 (DCI scope)"},
    {"9:16", "9:16 (Vertical / Social)"},
    {customIdentifier, "Custom pixels…"},
}};

/// Width over height; absent for an unknown identifier.
std::optional<double> ratio(std::string_view identifier);
/// Pixels, always even, as video codecs require. 0 for an unknown identifier, or if the height would be out
/// of range.
int heightFromWidth(int width, std::string_view identifier);

} // namespace AspectRatioHelper
} // namespace orvane
