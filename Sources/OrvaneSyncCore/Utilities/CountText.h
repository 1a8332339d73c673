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
/// Minutes and seconds, with hours if there are any, such as "1:05" and "1:00:07"; empty for 0.
std::string clockText(double seconds);
/// Seconds to the millisecond, such as "1.500 s".
std::string secondsText(double seconds);
/// Such as "3.2 MB"; a megabyte is a million bytes.
std::string megabytesText(double bytes);
std::string megabytesText(std::integral auto bytes) { return megabytesText(static_cast<double>(bytes)); }
/// Hours, minutes and whole seconds since midnight, such as "09:03:20". Times outside a day are taken modulo
/// 24 hours.
std::string timeOfDayText(double seconds);
/// Minutes and seconds to the hundredth, such as "01:23.45".
std::string fineClockText(double seconds);

} // namespace orvane
