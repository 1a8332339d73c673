#include "Timecode/TimecodeFrameRate.h"

#include <algorithm>

namespace orvane::timecodeRate {

namespace {

struct Row {
    std::string_view name;
    Fraction rate;
    bool isDrop;
    int maxFrames;
    int dropped;
    int elapsedHundredths;
    int digits;
};

constexpr std::array<Row, timecodeFrameRateCount> rows{{
    {"fps23_976", {24000, 1001}, false, 24, 0, 2400, 2},
    {"fps24", {24, 1}, false, 24, 0, 2400, 2},
    {"fps24_98", {25000, 1001}, false, 25, 0, 2500, 2},
    {"fps25", {25, 1}, false, 25, 0, 2500, 2},
    {"fps29_97", {30000, 1001}, false, 30, 0, 3000, 2},
    {"fps29_97d", {30000, 1001}, true, 30, 2, 2997, 2},
    {"fps30", {30, 1}, false, 30, 0, 3000, 2},
    {"fps30d", {30, 1}, true, 30, 2, 2997, 2},
    {"fps47_952", {48000, 1001}, false, 48, 0, 4800, 2},
    {"fps48", {48, 1}, false, 48, 0, 4800, 2},
    {"fps50", {50, 1}, false, 50, 0, 5000, 2},
    {"fps59_94", {60000, 1001}, false, 60, 0, 6000, 2},
    {"fps59_94d", {60000, 1001}, true, 60, 4, 5994, 2},
    {"fps60", {60, 1}, false, 60, 0, 6000, 2},
    {"fps60d", {60, 1}, true, 60, 4, 5994, 2},
    {"fps90", {90, 1}, false, 90, 0, 9000, 2},
    {"fps95_904", {96000, 1001}, false, 96, 0, 9600, 2},
    {"fps96", {96, 1}, false, 96, 0, 9600, 2},
    {"fps100", {100, 1}, false, 100, 0, 10000, 2},
    {"fps119_88", {120000, 1001}, false, 120, 0, 12000, 3},
    {"fps119_88d", {120000, 1001}, true, 120, 8, 11988, 3},
    {"fps120", {120, 1}, false, 120, 0, 12000, 3},
    {"fps120d", {120, 1}, true, 120, 8, 11988, 3},
}};

const Row& row(TimecodeFrameRate rate) { return rows.at(static_cast<std::size_t>(rate)); }

} // namespace

std::string_view name(TimecodeFrameRate rate) { return row(rate).name; }

std::optional<TimecodeFrameRate> fromName(std::string_view name) {
    const auto found = std::find_if(rows.begin(), rows.end(), [&](const Row& r) { return r.name == name; });
    if (found == rows.end()) return std::nullopt;
    return static_cast<TimecodeFrameRate>(found - rows.begin());
}

std::array<TimecodeFrameRate, timecodeFrameRateCount> all() {
    std::array<TimecodeFrameRate, timecodeFrameRateCount> rates{};
    for (std::size_t i = 0; i < rates.size(); ++i) rates[i] = static_cast<TimecodeFrameRate>(i);
    return rates;
}

Fraction rate(TimecodeFrameRate rate) { return row(rate).rate; }
bool isDrop(TimecodeFrameRate rate) { return row(rate).isDrop; }
int maxFrames(TimecodeFrameRate rate) { return row(rate).maxFrames; }
int framesDroppedPerMinute(TimecodeFrameRate rate) { return row(rate).dropped; }
int hundredthsForElapsedFrames(TimecodeFrameRate rate) { return row(rate).elapsedHundredths; }
double frameRateForElapsedFramesCalculation(TimecodeFrameRate rate) {
    return row(rate).elapsedHundredths / 100.0;
}
double frameRateForRealTimeCalculation(TimecodeFrameRate rate) { return row(rate).rate.doubleValue(); }
char frameSeparator(TimecodeFrameRate rate) { return row(rate).isDrop ? ';' : ':'; }
int frameDigits(TimecodeFrameRate rate) { return row(rate).digits; }

std::optional<TimecodeFrameRate> from(const Fraction& rate, bool drop) {
    for (const TimecodeFrameRate candidate : all())
        if (row(candidate).rate == rate && row(candidate).isDrop == drop) return candidate;
    return std::nullopt;
}

} // namespace orvane::timecodeRate
