#pragma once

#include "Platform/Text.h"

#include <concepts>
#include <string>
#include <string_view>

namespace orvane {

using platform::text::formatted;
/// "1 clip", "3 clips".
std::string counted(long long count, std::string_view one, std::string_view many);
std::string counted(std::unsigned_integral auto count, std::string_view one, std::string_view many) {
    return counted(static_cast<long long>(count), one, many);
}
/// Minutes and seconds, or hours too, such as "1:05" and "1:00:07"; empty for nothing.
std::string clockText(double seconds);
/// Seconds with milliseconds, as sync is judged by eye and ear: "1.500 s".
std::string secondsText(double seconds);
/// Such as "3.2 MB", of a million bytes each.
std::string megabytesText(double bytes);
std::string megabytesText(std::integral auto bytes) { return megabytesText(static_cast<double>(bytes)); }
/// Hours, minutes and whole seconds since midnight, such as "09:03:20"; of any day as a clock has it then.
std::string timeOfDayText(double seconds);
/// Minutes and seconds to the hundredth, such as "01:23.45".
std::string fineClockText(double seconds);

} // namespace orvane
