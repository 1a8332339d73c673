#include "OrvaneSyncCore/Models/SourceCorrections.h"

#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Text.h"
#include "Timecode/Timecode.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
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
                          ", and at " + std::string(timecodeRate::name(rate)) + " frames go to " +
                          std::to_string(most - 1));
}

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
    std::ranges::replace(text, ';', ':'); // which a shell would take for the end of the command
    return (seconds < 0 && whole > 0 ? "-" : "") + text;
}

JSON toJSON(const SourceCorrections& corrections) {
    JSON json = JSON::object();
    if (corrections.soundOffset) json.set("soundOffset", *corrections.soundOffset);
    if (corrections.soundDate) json.set("soundDate", *corrections.soundDate);
    if (corrections.timecodeRate) json.set("timecodeRate", timecodeRate::name(*corrections.timecodeRate));
    if (corrections.days) json.set("days", rawValue(*corrections.days));
    return json;
}

template <>
SourceCorrections fromJSON<SourceCorrections>(const JSON& json) {
    const auto text = [&](std::string_view key) {
        const JSON* value = json.find(key);
        const std::string* stored = value != nullptr ? value->string() : nullptr;
        return stored != nullptr ? std::optional(*stored) : std::nullopt;
    };
    SourceCorrections result;
    const auto keep = [&](SourceCorrections one) {
        try {
            one.check();
            result = std::move(one);
        } catch (const CorrectionError&) { // as good as none
        }
    };
    if (const auto rate = text("timecodeRate")) result.timecodeRate = timecodeRate::fromName(*rate);
    if (auto offset = text("soundOffset")) keep({std::move(offset), std::nullopt, result.timecodeRate});
    if (auto date = text("soundDate")) keep({result.soundOffset, std::move(date), result.timecodeRate});
    if (const auto days = text("days")) result.days = fromRawValue<MatchingDays>(*days);
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
