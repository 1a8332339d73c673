#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// Names of the additional clips that an export makes of offspeed material: the clip's own name and a suffix,
/// in which "{fps}" is replaced by the rate. A suffix that begins with "_", "-", a blank or a point is
/// appended directly, any other after a blank. Pure; any thread.
namespace OffspeedNaming {

std::string resolveNativeMOSName(std::string_view baseName, std::string_view suffix, double sensorFps);
std::string resolveProjectRateName(std::string_view baseName, std::string_view suffix, double projectFps);

} // namespace OffspeedNaming
} // namespace orvane
