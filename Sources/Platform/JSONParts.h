#pragma once

#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::platform {

// Divide a long text into its records without parsing them: each part can then be parsed alone, on any
// thread, in little memory, and the work can be stopped between them. The parts are views into the text. Only
// what separates the parts is checked; an error within a part appears when it is parsed. Throw JSONError,
// also for a text of too many values (`JSON::densestText`), and Stopped.

/// The elements of a list; nothing for a text of another kind.
std::optional<std::vector<std::string_view>> listParts(std::string_view text,
                                                       const std::stop_token& stop = {});

/// The keys of an object, unescaped, with the texts of their values, in the order of the text.
using JSONMemberParts = std::vector<std::pair<std::string, std::string_view>>;
/// Nothing for a text of another kind.
std::optional<JSONMemberParts> memberParts(std::string_view text, const std::stop_token& stop = {});

} // namespace orvane::platform
