#include "OrvaneSyncCore/Models/SourceCorrections.h"

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Text.h"
#include "Timecode/Timecode.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

namespace orvane {

namespace {

constexpr std::string_view recordKey = "sourceCorrections";

struct SignedLabel {
    bool isNegative = false;
    Timecode::Components clock;
};

SignedLabel labelOf(const std::string& text) {
    std::string_view rest = text;
    const bool isNegative = rest.starts_with('-');
    if (isNegative || rest.starts_with('+')) rest.remove_prefix(1);
    const auto isClock = [](char c) { return (c >= '0' && c <= '9') || c == ':' || c == ';'; };
    const auto parsed = std::ranges::all_of(rest, isClock)
                            ? Timecode::fromString(rest, TimecodeFrameRate::fps24)
                            : std::nullopt;
    constexpr std::int64_t hoursOfDay = 24, sixty = 60;
    if (!parsed || std::ranges::count_if(rest, [](char c) { return c == ':' || c == ';'; }) != 3)
        throw CorrectionError("the sound offset '" + text + "' is no [-]HH:MM:SS:FF");
    const auto& clock = parsed->components();
    if (clock.hours >= hoursOfDay || clock.minutes >= sixty || clock.seconds >= sixty)
        throw CorrectionError("the sound offset '" + text +
                              "' is outside of a day: hours go to 23, minutes "
                              "and seconds to 59");
    return {isNegative, clock};
}

void checkFrame(const std::string& text, const SignedLabel& label, TimecodeFrameRate rate) {
    const int most = timecodeRate::maxFrames(rate);
    if (label.clock.frames < most) return;
    throw CorrectionError("the sound offset '" + text + "' has frame " + std::to_string(label.clock.frames) +
                          ", and at " + rateText(rate) + " frames go to " + std::to_string(most - 1));
}

// Covers clocks that were reset to 1970, and any shoot.
constexpr std::chrono::year earliestSoundYear{1970}, latestSoundYear{2199};

std::chrono::sys_days dayOf(const std::string& text) {
    const auto number = [&](std::size_t at, std::size_t length) {
        const auto value = platform::text::decimalInteger(text.substr(at, length));
        return static_cast<int>(value.value_or(0));
    };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    constexpr std::size_t length = 10;
    bool isForm = text.size() == length;
    for (std::size_t i = 0; isForm && i < length; ++i)
        isForm = i == 4 || i == 7 ? text[i] == '-' : isDigit(text[i]);
    if (isForm) {
        const std::chrono::year_month_day day{std::chrono::year(number(0, 4)),
                                              std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                              std::chrono::day(static_cast<unsigned>(number(8, 2)))};
        if (day.ok() && (day.year() < earliestSoundYear || day.year() > latestSoundYear))
            throw CorrectionError("the sound date '" + text + "' is outside of the years 1970 to 2199");
        if (day.ok()) return day;
    }
    throw CorrectionError("the sound date '" + text + "' is no day YYYY-MM-DD of the calendar");
}

} // namespace

SourceCorrections SourceCorrections::fromTexts(std::optional<std::string> soundOffset,
                                               std::optional<std::string> soundDate,
                                               const std::optional<std::string>& timecodeRate) {
    SourceCorrections result{std::move(soundOffset), std::move(soundDate), std::nullopt};
    if (timecodeRate) {
        result.timecodeRate = timecodeRate::fromName(*timecodeRate);
        if (!result.timecodeRate)
            result.timecodeRate = TimecodeUtils::timecodeFrameRateFromIXML(timecodeRate);
        if (!result.timecodeRate)
            throw CorrectionError("the timecode rate '" + *timecodeRate +
                                  "' is none; give frames per second such as 23.976, 25 or 29.97DF");
    }
    result.check();
    return result;
}

void SourceCorrections::check() const {
    soundDay();
    soundOffsetSeconds(TimecodeFrameRate::fps120);
}

double SourceCorrections::soundOffsetSeconds(TimecodeFrameRate rateOfClips) const {
    if (!soundOffset) return 0;
    const auto rate = timecodeRate.value_or(rateOfClips);
    const SignedLabel label = labelOf(*soundOffset);
    checkFrame(*soundOffset, label, rate);
    const double seconds = Timecode(label.clock, rate).realTimeValue();
    return label.isNegative ? -seconds : seconds;
}

std::optional<long> SourceCorrections::soundDay() const {
    if (!soundDate) return std::nullopt;
    return dayOf(*soundDate).time_since_epoch().count();
}

std::string offsetText(double seconds, TimecodeFrameRate rate) {
    const double frames = std::abs(seconds) * timecodeRate::frameRateForRealTimeCalculation(rate);
    const std::int64_t whole = std::isfinite(frames) ? std::llround(frames) : 0;
    std::string text = TimecodeUtils::framesToTC(whole, rate);
    std::ranges::replace(text, ';', ':'); // a shell reads ";" as the end of the command
    return (seconds < 0 && whole > 0 ? "-" : "") + text;
}

namespace {

std::string storedText(const std::string& text) { return text; }
std::string storedText(TimecodeFrameRate rate) { return std::string(timecodeRate::name(rate)); }
std::string storedText(MatchingDays days) { return std::string(rawValue(days)); }

/// The value is a text; one that this version does not understand counts as absent.
template <class T>
struct LenientForm {
    static void put(JSON& json, std::string_view key, const T& value) {
        if (value) json.set(key, storedText(*value));
    }
    static T taken(const JSON& json, std::string_view key) {
        const JSON* value = json.find(key);
        const std::string* text = value != nullptr ? value->string() : nullptr;
        if (text == nullptr) return std::nullopt;
        if constexpr (std::is_same_v<T, std::optional<TimecodeFrameRate>>)
            return timecodeRate::fromName(*text);
        else if constexpr (std::is_same_v<T, std::optional<MatchingDays>>)
            return fromRawValue<MatchingDays>(*text);
        else
            return *text;
    }
};

bool isUsable(const SourceCorrections& corrections) {
    try {
        corrections.check();
        return true;
    } catch (const CorrectionError&) {
        return false;
    }
}

} // namespace

template <>
struct JSONFields<SourceCorrections> {
    static constexpr std::tuple list{fieldAs<LenientForm>("soundOffset", &SourceCorrections::soundOffset),
                                     fieldAs<LenientForm>("soundDate", &SourceCorrections::soundDate),
                                     fieldAs<LenientForm>("timecodeRate", &SourceCorrections::timecodeRate),
                                     fieldAs<LenientForm>("days", &SourceCorrections::days)};
};

JSON toJSON(const SourceCorrections& corrections) { return fieldsToJSON(corrections); }

template <>
SourceCorrections fromJSON<SourceCorrections>(const JSON& json) {
    auto result = madeFromJSON<SourceCorrections>(json);
    if (!isUsable({result.soundOffset, std::nullopt, result.timecodeRate})) result.soundOffset.reset();
    if (!isUsable({std::nullopt, result.soundDate})) result.soundDate.reset();
    return result;
}

void setSourceCorrections(JSON& record, const SourceCorrections& corrections) {
    if (!corrections.isEmpty()) record.set(recordKey, toJSON(corrections));
}

SourceCorrections sourceCorrectionsFrom(const JSON& record) {
    const JSON* stored = record.find(recordKey);
    return stored == nullptr ? SourceCorrections{} : fromJSON<SourceCorrections>(*stored);
}

} // namespace orvane
