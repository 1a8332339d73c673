#include "Timecode/Timecode.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace orvane {

namespace {

/// Exact: the product is corrected by its own rounding error.
std::int64_t truncatedProduct(double fraction, int factor) {
    const double product = std::trunc(fraction * factor);
    const bool roundedUp = std::fma(fraction, static_cast<double>(factor), -product) < 0;
    return static_cast<std::int64_t>(product) - (roundedUp ? 1 : 0);
}

/// Frame numbers count the skipped ones too. Every quantity here is a whole number (a ten-minute block has
/// exactly 17982, 35964 or 71928 frames), so no result depends on a fraction of a frame.
std::int64_t withDroppedNumbers(std::int64_t total, TimecodeFrameRate rate) {
    const std::int64_t dropped = timecodeRate::framesDroppedPerMinute(rate);
    const std::int64_t block = std::int64_t{timecodeRate::hundredthsForElapsedFrames(rate)} * 600 / 100;
    const std::int64_t tens = total / block;
    const std::int64_t over = std::max<std::int64_t>(total % block - dropped, 0);
    const std::int64_t perMinute = (block - dropped) / 10;
    return total + 9 * dropped * tens + dropped * (over / perMinute);
}

void negateFirst(Timecode::Components& c) {
    for (std::int64_t* component : {&c.days, &c.hours, &c.minutes, &c.seconds, &c.frames, &c.subFrames}) {
        if (*component == 0) continue;
        *component = -*component;
        return;
    }
}

Timecode::Components componentsFrom(std::int64_t wholeFrames, double fraction, bool negative,
                                    TimecodeFrameRate rate) {
    const std::int64_t total =
        timecodeRate::isDrop(rate) ? withDroppedNumbers(wholeFrames, rate) : wholeFrames;
    const std::int64_t n = timecodeRate::maxFrames(rate);
    const std::int64_t seconds = total / n;
    Timecode::Components c;
    c.days = seconds / 86400;
    c.hours = seconds / 3600 % 24;
    c.minutes = seconds / 60 % 60;
    c.seconds = seconds % 60;
    c.frames = total % n;
    c.subFrames = truncatedProduct(fraction, Timecode::subFramesPerFrame);
    if (negative) negateFirst(c);
    return c;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isColon(char c) { return c == ':' || c == ';'; }
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Reads the parts of a timecode text from the left; each call reads the named part or leaves the position
/// unchanged.
class TextReader {
  public:
    explicit TextReader(std::string_view text) : text_(text) {}

    bool atEnd() const { return text_.empty(); }
    bool take(bool (*matches)(char)) {
        if (text_.empty() || !matches(text_.front())) return false;
        text_.remove_prefix(1);
        return true;
    }
    /// False without a digit. A number beyond 64 bits leaves `value` absent.
    bool takeNumber(std::optional<std::int64_t>& value) {
        std::size_t count = 0;
        while (count < text_.size() && isDigit(text_[count])) ++count;
        if (count == 0) return false;
        std::int64_t parsed = 0;
        const auto [end, error] = std::from_chars(text_.data(), text_.data() + count, parsed);
        if (error == std::errc{}) value = parsed;
        text_.remove_prefix(count);
        return true;
    }

  private:
    std::string_view text_;
};

using Groups = std::array<std::optional<std::int64_t>, 6>;

/// Hours to subframes, to the end of the text.
bool readClock(TextReader reader, Groups& groups) {
    for (std::size_t group = 1; group <= 4; ++group) {
        if (group > 1 && !reader.take(isColon)) return false;
        if (!reader.takeNumber(groups[group])) return false;
    }
    reader.take([](char c) { return c == '.'; });
    reader.takeNumber(groups[5]);
    return reader.atEnd();
}

bool readGroups(std::string_view text, Groups& groups) {
    if (readClock(TextReader(text), groups)) return true;
    groups = {};
    TextReader reader(text);
    reader.takeNumber(groups[0]);
    if (!reader.take([](char c) { return isColon(c) || isSpace(c); })) return false;
    return readClock(reader, groups);
}

} // namespace

Timecode Timecode::fromRealTime(double seconds, TimecodeFrameRate rate) {
    double elapsed = seconds / (1.0 / timecodeRate::frameRateForRealTimeCalculation(rate));
    elapsed += std::copysign(Timecode::elapsedNudge, elapsed);
    if (!(std::abs(elapsed) < Timecode::frameCountLimit)) return {Components{}, rate};
    double whole = 0;
    const double fraction = std::modf(std::abs(elapsed), &whole);
    return {componentsFrom(static_cast<std::int64_t>(whole), fraction, elapsed < 0, rate), rate};
}

Timecode Timecode::fromFrameCount(std::int64_t frames, TimecodeFrameRate rate) {
    if (!(std::abs(static_cast<double>(frames)) < Timecode::frameCountLimit)) return {Components{}, rate};
    return {componentsFrom(std::abs(frames), 0, frames < 0, rate), rate};
}

std::optional<Timecode> Timecode::fromString(std::string_view text, TimecodeFrameRate rate) {
    Groups groups;
    if (!readGroups(text, groups)) return std::nullopt;
    int present = 0;
    for (const auto& group : groups) present += group ? 1 : 0;
    constexpr int fewestGroups = 4;
    if (present < fewestGroups) return std::nullopt;
    const auto at = [&](std::size_t i) { return groups[i].value_or(0); };
    return Timecode({at(0), at(1), at(2), at(3), at(4), at(5)}, rate);
}

std::string Timecode::stringValue() const {
    std::array<char, 160> text{};
    const auto& c = components_;
    using Long = long long;
    const int length =
        std::snprintf(text.data(), text.size(), "%02lld:%02lld:%02lld%c%0*lld", Long{c.hours},
                      Long{c.minutes}, Long{c.seconds}, timecodeRate::frameSeparator(frameRate_),
                      timecodeRate::frameDigits(frameRate_), Long{c.frames});
    std::string result = c.days != 0 ? std::to_string(c.days) + " " : std::string();
    return result.append(text.data(), static_cast<std::size_t>(length));
}

double Timecode::realTimeValue() const {
    // In floating point throughout: the components of a text may have any 64-bit value.
    const auto number = [](std::int64_t value) { return static_cast<double>(value); };
    const auto& c = components_;
    double count = 0;
    if (timecodeRate::isDrop(frameRate_)) {
        const double minutes = number(c.days) * 1440 + number(c.hours) * 60 + number(c.minutes);
        count = (minutes * 60 + number(c.seconds)) * timecodeRate::maxFrames(frameRate_) + number(c.frames) -
                (minutes - std::floor(minutes / 10)) * timecodeRate::framesDroppedPerMinute(frameRate_);
    } else {
        const double seconds =
            number(c.days) * 86400 + number(c.hours) * 3600 + number(c.minutes) * 60 + number(c.seconds);
        count = std::round(timecodeRate::frameRateForElapsedFramesCalculation(frameRate_) * seconds) +
                number(c.frames);
    }
    constexpr double wholeLimit = 9223372036854775808.0; // 2^63
    if (!(count >= -wholeLimit && count < wholeLimit)) count = 0;
    return (count + number(c.subFrames) / subFramesPerFrame) *
           (1.0 / timecodeRate::frameRateForRealTimeCalculation(frameRate_));
}

} // namespace orvane
