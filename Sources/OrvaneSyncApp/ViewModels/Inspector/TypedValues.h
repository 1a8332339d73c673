#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// What was typed into a field, or what is wrong with it, for people.
struct TypedNumber {
    std::optional<double> value;
    std::string problem; ///< empty where there is a value
};

// The unit may stand behind the number; a comma counts as a point.

/// An offset in frames of that rate, as seconds. Fractions of a frame are refused, and so is what lies
/// further off than `furthestSeconds`.
TypedNumber offsetFromFrames(std::string_view text, double frameRate, double furthestSeconds);
TypedNumber offsetFromSeconds(std::string_view text, double furthestSeconds);
/// In dB, both ends allowed.
TypedNumber gainFromText(std::string_view text, double lowest, double highest);

} // namespace orvane
