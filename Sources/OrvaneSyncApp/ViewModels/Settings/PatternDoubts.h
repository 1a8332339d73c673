#pragma once

#include <string>
#include <string_view>

/// Why a text with tokens would not come out as it is meant, for people; empty where it does. Pure.
namespace orvane::patternDoubts {

/// Of a clip's name.
std::string clipName(std::string_view pattern);
/// Of a scene's event.
std::string eventName(std::string_view pattern);
/// Behind the name of an off-speed clip.
std::string rateSuffix(std::string_view pattern);
/// The main role of Final Cut Pro, without a subrole.
std::string mainRole(std::string_view role);
/// A role that may bear a subrole.
std::string role(std::string_view role);
/// A subrole by itself.
std::string subrole(std::string_view role);
/// A start timecode; an empty one counts as none.
std::string timecode(std::string_view text);

} // namespace orvane::patternDoubts
