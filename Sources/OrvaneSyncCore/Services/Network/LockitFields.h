#pragma once

#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace orvane {

/// The service's fields for a clip, by the texts of `LockitField`; no value is blank.
using LockitFields = std::map<std::string, std::string>;

/// Shot and take as one text, such as "12A-3", each without white space around it; only one of them if the
/// other is absent or blank.
std::optional<std::string> composedTake(const std::optional<std::string>& shot,
                                        const std::optional<std::string>& take);

/// The fields of one of the service's clips. Fields without a value are left out.
LockitFields lockitFields(const LockitClip& clip);

/// The used part of a day's answer.
struct ClipMatchResponse {
    /// Key: the file name that was sent; if a name occurs twice, the last one counts. Absent if the answer
    /// has no list of matches.
    std::optional<std::unordered_map<std::string, LockitFields>> matches;
};

/// Errors are those of `decodeMatches`.
ClipMatchResponse decodedMatches(std::string_view body, std::size_t names, const std::stop_token& stop = {});

} // namespace orvane
