#pragma once

#include "Platform/Text.h"

#include <string>
#include <string_view>

namespace orvane {

using platform::text::formatted;
/// "1 clip", "3 clips".
std::string counted(long long count, std::string_view one, std::string_view many);
/// Minutes and seconds, or hours too, such as "1:05" and "1:00:07"; empty for nothing.
std::string clockText(double seconds);

} // namespace orvane
