#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCore/Utilities/NearestWord.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/JSON.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace orvane::cli {

namespace {

using platform::JSON;

/// Prints the answer as a line for people, or under a key for programs. A null is "none".
void answer(Context& context, const Arguments& arguments, std::string_view key, const JSON& value) {
    if (!arguments.has("--json")) {
        context.out << (value.isNull()              ? "none"
                        : value.string() != nullptr ? *value.string()
                                                    : value.dump())
                    << "\n";
        return;
    }
    JSON json;
    json.set(key, value);
    context.out << json.dump(JSON::Layout::pretty) << "\n";
}

double positiveRate(const Arguments& arguments, std::string_view option) {
    const auto rate = arguments.number(option);
    if (!rate) throw UsageError(std::string(option) + " is missing");
    if (!(*rate > 0)) throw UsageError(std::string(option) + " must be above 0");
    return *rate;
}

TimecodeFrameRate rate(const Arguments& arguments) {
    const auto named = arguments.value("--rate");
    if (named && arguments.has("--fps")) throw UsageError("--fps or --rate, not both");
    if (!named && !arguments.has("--fps")) throw UsageError("--fps or --rate is missing");
    if (!named) return TimecodeUtils::frameRate(positiveRate(arguments, "--fps"));
    if (const auto found = timecodeRate::fromName(*named)) return *found;
    std::vector<std::string_view> names;
    for (const auto each : timecodeRate::all()) names.push_back(timecodeRate::name(each));
    throw UsageError("--rate takes the name of a rate such as fps29_97d, not '" + *named + "'" +
                     didYouMean(*named, names));
}

double number(const std::string& text) {
    if (const auto value = numberFrom(text)) return *value;
    throw UsageError("'" + text + "' is no number");
}

std::int64_t whole(const std::string& text) {
    if (const auto value = integerFrom(text)) return *value;
    throw UsageError("'" + text + "' is no whole number");
}

JSON rateOrNull(const std::optional<TimecodeFrameRate>& found) {
    return found ? JSON(timecodeRate::name(*found)) : JSON();
}

void toSeconds(Context& context, const Arguments& arguments, const std::string& text) {
    const double fps = positiveRate(arguments, "--fps");
    if (const std::string why = TimecodeUtils::whyNoTimecode(text, TimecodeUtils::frameRate(fps));
        !why.empty())
        throw UsageError("'" + text + "': " + why);
    answer(context, arguments, "seconds", TimecodeUtils::tcToSeconds(text, fps));
}

void expectWithinTimecode(double frames) {
    if (!(std::abs(frames) < Timecode::frameCountLimit))
        throw UsageError("that is more than a timecode can hold");
}

void fromSeconds(Context& context, const Arguments& arguments, const std::string& text) {
    const double seconds = number(text);
    const TimecodeFrameRate frameRate = rate(arguments);
    expectWithinTimecode(seconds * timecodeRate::rate(frameRate).doubleValue());
    answer(context, arguments, "timecode", TimecodeUtils::secondsToTC(seconds, frameRate));
}

void fromFrames(Context& context, const Arguments& arguments, const std::string& text) {
    const std::int64_t frames = whole(text);
    expectWithinTimecode(static_cast<double>(frames));
    answer(context, arguments, "timecode", TimecodeUtils::framesToTC(frames, rate(arguments)));
}

void fromSamples(Context& context, const Arguments& arguments, const std::string& text) {
    const std::int64_t samples = whole(text);
    if (samples < 0) throw UsageError("a sample count is not negative");
    const double sampleRate = positiveRate(arguments, "--sample-rate");
    answer(context, arguments, "timecode",
           TimecodeUtils::bextToTC(static_cast<std::uint64_t>(samples), sampleRate, rate(arguments)));
}

void rateOf(Context& context, const Arguments& arguments, const std::string& text) {
    answer(context, arguments, "rate", rateOrNull(TimecodeUtils::frameRate(number(text))));
}

void rateFromText(Context& context, const Arguments& arguments, const std::string& text) {
    answer(context, arguments, "rate", rateOrNull(TimecodeUtils::timecodeFrameRateFromIXML(text)));
}

using Conversion = void (*)(Context&, const Arguments&, const std::string&);
const std::map<std::string_view, Conversion>& conversions() {
    static const std::map<std::string_view, Conversion> table{
        {"to-seconds", toSeconds},     {"from-seconds", fromSeconds}, {"from-frames", fromFrames},
        {"from-samples", fromSamples}, {"rate-of", rateOf},           {"rate", rateFromText}};
    return table;
}

void timecode(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    if (words.empty()) throw UsageError("which conversion?");
    const auto conversion = conversions().find(words.front());
    if (conversion == conversions().end()) throw UsageError("there is no conversion '" + words.front() + "'");
    if (words.size() != 2) throw UsageError(words.front() + " takes one value");
    conversion->second(context, arguments, words[1]);
}

constexpr std::string_view details =
    "\n"
    "  to-seconds TEXT --fps R                   a timecode in seconds\n"
    "  from-seconds S (--fps R | --rate CASE)    seconds as a timecode\n"
    "  from-frames N (--fps R | --rate CASE)     a frame count as a timecode\n"
    "  from-samples N --sample-rate HZ (--fps R | --rate CASE)\n"
    "                                            a sample count as a timecode\n"
    "  rate-of FPS                               the rate of that many frames\n"
    "  rate TEXT                                 the rate in a recorder's words\n";

} // namespace

const Command& timecodeCommand() {
    static const Command command{"timecode",
                                 "CONVERSION VALUE [options]",
                                 "Timecode arithmetic.",
                                 "orvanesync timecode from-samples 172800000 --sample-rate 48000 --fps 29.97",
                                 {{"--fps", "R", "frames per second, such as 25 or 29.97"},
                                  {"--rate", "CASE", "a frame rate by its name, such as fps29_97d"},
                                  {"--sample-rate", "HZ", "samples per second"}},
                                 timecode,
                                 details};
    return command;
}

} // namespace orvane::cli
