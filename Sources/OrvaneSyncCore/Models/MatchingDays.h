#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace orvane {

/// From which days a clip may get recordings.
enum class MatchingDays : std::uint8_t {
    automatic,  ///< as `midnight`, and what a wrong clock probably put on a neighbouring day
    same,       ///< the clip's own day
    midnight,   ///< the clip's own day, also across midnight
    neighbours, ///< by time of day: the clip's own day, the day before and the day after
};
template <>
struct RawValues<MatchingDays> {
    static constexpr std::array<std::string_view, 4> texts{"auto", "same", "midnight", "neighbours"};
};
std::string_view displayText(MatchingDays days);

} // namespace orvane
