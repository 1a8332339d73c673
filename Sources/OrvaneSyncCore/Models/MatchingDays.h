#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace orvane {

/// Which days' recordings a clip meets.
enum class MatchingDays : std::uint8_t {
    automatic,  ///< as `midnight`; of a neighbouring day only what looks like a wrong clock
    same,       ///< those of its own day
    midnight,   ///< those of its own day, and across midnight
    neighbours, ///< by time of day, those of its own day, of the day before and of the day after
};
template <>
struct RawValues<MatchingDays> {
    static constexpr std::array<std::string_view, 4> texts{"auto", "same", "midnight", "neighbours"};
};
std::string_view displayText(MatchingDays days);

} // namespace orvane
