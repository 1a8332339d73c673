#include "OrvaneSyncCore/Services/Naming/OffspeedNaming.h"

#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Services/Naming/Replacing.h"
#include "OrvaneSyncCore/Utilities/RateText.h"

namespace orvane::OffspeedNaming {

namespace {

std::string withSuffix(std::string_view baseName, std::string_view suffix, double fps) {
    constexpr std::string_view separators = "_- .";
    const std::string tail = replacingAll(suffix, "{fps}", rateText(fps), GroupNaming::longestName);
    std::string name(baseName);
    if (!tail.empty() && separators.find(tail.front()) == std::string_view::npos) name += ' ';
    return name += tail;
}

} // namespace

std::string resolveNativeMOSName(std::string_view baseName, std::string_view suffix, double sensorFps) {
    return withSuffix(baseName, suffix, sensorFps);
}

std::string resolveProjectRateName(std::string_view baseName, std::string_view suffix, double projectFps) {
    return withSuffix(baseName, suffix, projectFps);
}

} // namespace orvane::OffspeedNaming
