#include "OrvaneSyncCore/Services/Ingest/StartTimecode.h"

#include "Platform/Text.h"
#include "Timecode/Timecode.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace orvane::StatedTimecode {

namespace {

constexpr std::int64_t ntscNumerator = 1000, ntscDenominator = 1001;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether the rate is nearer to a whole number times 1000/1001 than to the whole number.
bool isFractional(double rate) {
    constexpr double quarterOfTheDifference = 0.00025;
    const double whole = std::ceil(rate - quarterOfTheDifference * rate);
    const double fractional = whole * ntscNumerator / ntscDenominator;
    return std::abs(rate - fractional) < std::abs(rate - whole);
}

} // namespace

std::optional<Label> labelIn(std::string_view text) {
    text = platform::text::trimmed(text);
    constexpr std::size_t length = 11, digits = 2;
    if (text.size() != length) return std::nullopt;
    std::array<int, 4> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::size_t at = i * (digits + 1);
        if (!isDigit(text[at]) || !isDigit(text[at + 1])) return std::nullopt;
        if (i > 0 && std::string_view(":;.,").find(text[at - 1]) == std::string_view::npos)
            return std::nullopt;
        numbers[i] = (text[at] - '0') * 10 + (text[at + 1] - '0');
    }
    constexpr std::size_t frameSeparatorAt = 8;
    const Label label{numbers[0], numbers[1], numbers[2], numbers[3], text[frameSeparatorAt] != ':'};
    if (label.hours > 23 || label.minutes > 59 || label.seconds > 59) return std::nullopt;
    return label;
}

std::optional<TimecodeFrameRate> rateOf(int base, bool isDrop, std::optional<double> pictureRate) {
    const bool fractional = pictureRate && *pictureRate > 0 ? isFractional(*pictureRate) : isDrop;
    const Fraction rate = fractional ? Fraction(base * ntscNumerator, ntscDenominator) : Fraction(base, 1);
    const auto exact = timecodeRate::from(rate, isDrop);
    return exact ? exact : timecodeRate::from(rate, false);
}

StartTimecode start(const Label& label, std::optional<TimecodeFrameRate> rate) {
    const Timecode::Components components{0, label.hours, label.minutes, label.seconds, label.frames, 0};
    std::string text = Timecode(components, rate.value_or(TimecodeFrameRate::fps24)).stringValue();
    return {std::move(text), rate};
}

} // namespace orvane::StatedTimecode
