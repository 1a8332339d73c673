#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Timecode/Timecode.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

// Texts, counts and seconds of any value: no conversion ends the program, and what is printed is read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const TimecodeFrameRate rate =
        TimecodeUtils::timecodeFrameRateFromIXML(text).value_or(TimecodeFrameRate::fps29_97d);
    if (const auto timecode = Timecode::fromString(text, rate)) {
        if (!std::isfinite(timecode->realTimeValue())) std::abort();
        if (!Timecode::fromString(timecode->stringValue(), rate)) std::abort();
    }
    TimecodeUtils::tcToSeconds(text, 25);

    double seconds = 0;
    std::int64_t frames = 0;
    if (size < sizeof seconds) return 0;
    std::memcpy(&seconds, data, sizeof seconds);
    std::memcpy(&frames, data, sizeof frames);
    TimecodeUtils::frameRate(seconds);
    TimecodeUtils::secondsToTC(seconds, rate);
    TimecodeUtils::secondsToTC(1, seconds);
    TimecodeUtils::bextToTC(static_cast<std::uint64_t>(frames), seconds, rate);
    const std::string printed = TimecodeUtils::framesToTC(frames, rate);
    const auto again = Timecode::fromString(printed, rate);
    if (frames >= 0 && (!again || again->stringValue() != printed)) std::abort();
    return 0;
}
