#include "FCPXMLKit/model/Time.h"

#include "FCPXMLKit/model/Digits.h"

#include <array>
#include <charconv>

namespace orvane::fcpxml {

namespace {

std::size_t digitsAt(std::string_view text, std::size_t at) {
    std::size_t count = 0;
    while (at + count < text.size() && isDigit(text[at + count])) ++count;
    return count;
}

std::optional<std::int64_t> integer(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} ? std::optional(value) : std::nullopt;
}

struct Match {
    std::string_view numerator;
    std::string_view denominator; ///< empty when there is none
};

/// A sign, digits, optionally "/" and digits, then "s", all beginning at `start`.
std::optional<Match> matchAt(std::string_view text, std::size_t start) {
    const std::size_t sign = text[start] == '+' || text[start] == '-' ? 1 : 0;
    const std::size_t count = digitsAt(text, start + sign);
    if (count == 0) return std::nullopt;
    Match match{text.substr(start, sign + count), {}};
    std::size_t end = start + sign + count;
    if (end < text.size() && text[end] == '/') {
        const std::size_t below = digitsAt(text, end + 1);
        match.denominator = text.substr(end + 1, below);
        end += 1 + below;
        if (below == 0) return std::nullopt;
    }
    if (end >= text.size() || text[end] != 's') return std::nullopt;
    return match;
}

} // namespace

std::string_view attributeText(FrameSampling sampling) {
    static constexpr std::array<std::string_view, 6> texts{"floor",          "nearest-neighbor",
                                                           "frame-blending", "optical-flow-classic",
                                                           "optical-flow",   "optical-flow-frc"};
    return texts.at(static_cast<std::size_t>(sampling));
}

std::optional<Time> Time::fromString(std::string_view text) {
    for (std::size_t start = 0; start < text.size(); ++start) {
        const auto match = matchAt(text, start);
        if (!match) continue;
        const auto numerator = integer(match->numerator);
        const auto denominator =
            match->denominator.empty() ? std::optional<std::int64_t>(1) : integer(match->denominator);
        if (!numerator || !denominator || *denominator == 0) return std::nullopt;
        return Time(*numerator, *denominator);
    }
    return std::nullopt;
}

std::string Time::description() const {
    const auto text = [](const BInt& value) {
        std::int64_t small = 0;
        return value.fits(small) ? std::to_string(small) : value.asString();
    };
    std::string result = text(value_.numerator());
    if (!(value_.denominator() == BInt(1))) result.append("/").append(text(value_.denominator()));
    return result += 's';
}

Time Time::toFrame(const Time& frameDuration, FrameSampling sampling) const {
    const BFraction frames = value_ / frameDuration.value_;
    BInt quotient = frames.numerator().quotientAndRemainder(frames.denominator()).first;
    if (sampling == FrameSampling::nearestNeighbor) {
        const Time rest = *this - frameDuration * BFraction(quotient, 1);
        if (rest.magnitude() * 2 >= frameDuration)
            quotient = quotient + BInt(value_.numerator().isNegative() ? -1 : 1);
    }
    return frameDuration * BFraction(quotient, 1);
}

} // namespace orvane::fcpxml
