#pragma once

#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace orvane {

/// What the service says of a clip, by the texts of `LockitField`; no value is blank.
using LockitFields = std::map<std::string, std::string>;

/// Shot and take as one text, such as "12A-3", each without white space around it; a blank text counts as
/// none. The take alone without a shot, the shot alone without a take.
std::optional<std::string> composedTake(const std::optional<std::string>& shot,
                                        const std::optional<std::string>& take);

/// What a clip of the service says. Fields without a value are left out.
LockitFields lockitFields(const LockitClip& clip);

/// A day's answer, as far as it is of use.
struct ClipMatchResponse {
    /// By the file name that was sent; of a name that occurs twice the last. Absent where the answer has no
    /// list of matches.
    std::optional<std::unordered_map<std::string, LockitFields>> matches;
};

/// As `decodeMatches`.
ClipMatchResponse decodedMatches(std::string_view body, std::size_t names);

} // namespace orvane
