#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The number typed into a field, or a sentence that says what is wrong with it.
struct TypedNumber {
    std::optional<double> value;
    std::string problem; ///< empty if there is a value
};

// The unit may be typed after the number; a comma is read as a decimal point.

/// An offset in frames of that rate, as seconds. Refuses fractions of a frame, and offsets larger than
/// `furthestSeconds`.
TypedNumber offsetFromFrames(std::string_view text, double frameRate, double furthestSeconds);
TypedNumber offsetFromSeconds(std::string_view text, double furthestSeconds);
/// In dB; `lowest` and `highest` are allowed.
TypedNumber gainFromText(std::string_view text, double lowest, double highest);

} // namespace orvane
