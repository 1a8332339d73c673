#include "OrvaneSyncApp/ViewModels/Settings/PatternDoubts.h"

#include "OrvaneSyncApp/ViewModels/Settings/Quotes.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane::patternDoubts {

namespace {

/// Whether the token is `name` with a width, such as "{name:3}".
bool isWidthForm(std::string_view token, std::string_view name) {
    const std::string opening = "{" + std::string(name) + ":";
    if (!token.starts_with(opening)) return false;
    token.remove_prefix(opening.size());
    token.remove_suffix(1);
    return !token.empty() && std::ranges::all_of(token, [](char c) { return c >= '0' && c <= '9'; });
}

/// The first text in braces that is no token, or a brace without its partner.
template <class IsToken>
std::string firstUnknown(std::string_view pattern, IsToken isToken, std::string_view whatThereIs) {
    std::size_t at = 0;
    while ((at = pattern.find_first_of("{}", at)) != std::string_view::npos) {
        const std::size_t end = pattern.find('}', at);
        const std::size_t next = pattern.find('{', at + 1);
        if (pattern[at] == '}' || end == std::string_view::npos || next < end)
            return "A brace is not paired and stays in the name as it is.";
        const std::string_view token = pattern.substr(at, end - at + 1);
        if (!isToken(token))
            return inQuotes(token) + " is no token here and stays in the name as it is. " +
                   std::string(whatThereIs);
        at = end + 1;
    }
    return "";
}

bool isBlank(std::string_view text) { return platform::text::trimmed(text).empty(); }

} // namespace

std::string clipName(std::string_view pattern) {
    if (isBlank(pattern)) return "Without a pattern clips are named {scene}-{take}.";
    return firstUnknown(
        pattern,
        [](std::string_view token) {
            return isWidthForm(token, "counter") ||
                   std::ranges::find(GroupNaming::tokenCatalogue, token, &GroupNaming::TokenInfo::token) !=
                       GroupNaming::tokenCatalogue.end();
        },
        "The buttons below insert those that there are.");
}

std::string eventName(std::string_view pattern) {
    if (isBlank(pattern)) return "Without a pattern the events of the scenes have no name.";
    return firstUnknown(
        pattern,
        [](std::string_view token) {
            return token == "{scene}" || token == "{eventName}" || isWidthForm(token, "scene");
        },
        "There are {eventName}, {scene} and {scene:3}.");
}

std::string rateSuffix(std::string_view pattern) {
    if (isBlank(pattern)) return "Without a suffix the clip has the name of the one that it is made of.";
    return firstUnknown(
        pattern, [](std::string_view token) { return token == "{fps}"; }, "There is {fps}.");
}

std::string mainRole(std::string_view role) {
    if (isBlank(role)) return "Final Cut Pro takes no role without a name.";
    if (role.find('.') != std::string_view::npos)
        return "What follows a point is a subrole, and the tracks have subroles of their own.";
    return "";
}

std::string role(std::string_view role) {
    if (isBlank(role)) return "Final Cut Pro takes no role without a name.";
    if (std::ranges::count(role, '.') > 1) return "A role has one point at most, before its subrole.";
    return "";
}

std::string subrole(std::string_view role) {
    if (isBlank(role)) return "Final Cut Pro takes no role without a name.";
    if (role.find('.') != std::string_view::npos) return "A subrole has no point in its name.";
    return "";
}

std::string timecode(std::string_view text) {
    if (isBlank(text)) return "Without a timecode the offset applies to all clips.";
    const std::string why = TimecodeUtils::whyNoTimecode(text, TimecodeFrameRate::fps60);
    return why.empty() ? "" : inQuotes(text) + " does not count: " + why + ".";
}

} // namespace orvane::patternDoubts
