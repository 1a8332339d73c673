#include "OrvaneSyncApp/ViewModels/Inspector/TypedValues.h"

#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Timecode/ExactRate.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

/// The number without its unit. Signs and decimal points outside of ASCII are accepted.
std::optional<double> typedNumberIn(std::string_view typed, std::string_view unit) {
    std::string text(platform::text::trimmed(typed));
    const std::string lower = platform::text::lowercased(text);
    if (lower.ends_with(platform::text::lowercased(unit))) text.resize(text.size() - unit.size());
    constexpr std::string_view minus = "−";
    if (text.starts_with(minus)) text.replace(0, minus.size(), "-");
    std::ranges::replace(text, ',', '.');
    return platform::text::decimalNumber(platform::text::trimmed(text));
}

TypedNumber withinReach(double seconds, double furthestSeconds) {
    if (std::abs(seconds) > furthestSeconds)
        return {{}, "The sound can be moved by " + formatted("%.0f hours at most.", furthestSeconds / 3600)};
    return {seconds, {}};
}

} // namespace

TypedNumber offsetFromFrames(std::string_view text, double frameRate, double furthestSeconds) {
    const auto frames = typedNumberIn(text, "f");
    if (!frames || *frames != std::round(*frames)) return {{}, "Type whole frames, such as +3 or -12."};
    return withinReach(*frames / exactRateValue(frameRate), furthestSeconds);
}

TypedNumber offsetFromSeconds(std::string_view text, double furthestSeconds) {
    const auto seconds = typedNumberIn(text, "s");
    if (!seconds) return {{}, "Type seconds, such as 0.12 or -1.5."};
    return withinReach(*seconds, furthestSeconds);
}

TypedNumber gainFromText(std::string_view text, double lowest, double highest) {
    const auto gain = typedNumberIn(text, "dB");
    if (!gain) return {{}, "Type a gain in dB, such as -3.5."};
    if (*gain < lowest || *gain > highest)
        return {{}, "The gain must be " + formatted("%.0f dB to ", lowest) + formatted("%+.0f dB.", highest)};
    return {gain, {}};
}

} // namespace orvane
