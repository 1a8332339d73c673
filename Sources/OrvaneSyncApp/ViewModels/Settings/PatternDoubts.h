#pragma once

#include <string>
#include <string_view>

/// Checks of texts with tokens. Each returns a sentence for the user on why the text would not give what was
/// intended; empty if it does. Pure.
namespace orvane::patternDoubts {

/// For the pattern of clip names.
std::string clipName(std::string_view pattern);
/// For the pattern of a scene's event name.
std::string eventName(std::string_view pattern);
/// For the suffix of the names of off-speed clips.
std::string rateSuffix(std::string_view pattern);
/// For a main role of Final Cut Pro, without a subrole.
std::string mainRole(std::string_view role);
/// For a role that may have a subrole.
std::string role(std::string_view role);
/// For a subrole alone.
std::string subrole(std::string_view role);
/// For a start timecode; empty is the same as none.
std::string timecode(std::string_view text);

} // namespace orvane::patternDoubts
