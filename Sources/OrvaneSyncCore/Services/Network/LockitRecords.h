#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// The records in the answers of LockitNetwork. Optional members may be missing or null; any other difference
// (a missing member, a value of another kind) makes the whole answer invalid.

struct LockitUser {
    std::string uuid;
    std::optional<std::string> email;
    std::optional<std::string> login;
};

struct LockitProject {
    std::string uuid;
    std::string name;
    std::optional<bool> isSeries;
    std::optional<bool> isPremium;
    std::optional<std::string> productionCompany;
};

struct LockitDate {
    std::int64_t year = 0;
    std::int64_t month = 0;
    std::int64_t day = 0;
};

struct LockitShootingDay {
    std::string uuid;
    std::optional<std::int64_t> day;
    std::optional<std::string> prefix;
    std::optional<std::string> suffix;
    std::optional<LockitDate> date;

    /// Such as "S12b"; "?" is used for an unknown number.
    std::string label() const;
};

struct LockitSet {
    std::optional<std::string> name;
};

struct LockitClipScene {
    std::optional<std::int64_t> number;
    std::optional<std::string> additional;
    std::optional<std::string> content;
    std::optional<std::string> comment;
    std::optional<std::string> dayNight;
    std::optional<std::string> insideOutside;
    std::optional<std::vector<LockitSet>> sets;
};

struct LockitClipSlate {
    std::optional<std::int64_t> number;
    std::optional<std::string> additional;
    std::optional<std::string> comment;
};

struct LockitClipTake {
    std::optional<std::int64_t> number;
    std::optional<std::string> comment;
    std::optional<bool> isPickup;
};

struct LockitClipEpisode {
    std::optional<std::int64_t> number;
    std::optional<std::string> name;
};

struct LockitCamera {
    std::optional<std::string> name;
    std::optional<std::string> label;
    std::optional<std::string> model;
};

/// Texts in the form that the service itself shows.
struct LockitPreformatted {
    std::optional<std::string> episode;
    std::optional<std::string> scene;
    std::optional<std::string> shot;
    std::optional<std::string> take;
    std::optional<std::string> takeComment;
    std::optional<std::vector<std::string>> tags;
};

struct LockitClip {
    std::optional<std::string> uuid;
    std::optional<std::string> clipName;
    std::optional<std::string> camRoll;
    std::optional<std::string> fileName;
    std::optional<LockitClipScene> scene;
    std::optional<LockitClipSlate> slate;
    std::optional<LockitClipTake> take;
    std::optional<LockitClipEpisode> episode;
    std::optional<LockitCamera> camera;
    std::optional<LockitPreformatted> preformatted;
};

/// Calls `decode` for an answer and converts its errors: throws DecodingError with a description for the
/// user, who sent the answer and what to do.
void understand(const std::function<void()>& decode);

// Each throws DecodingError, and platform::JSONError if the text is not JSON.

/// An answer that contains one record.
template <class Record>
Record decodedAnswer(std::string_view body);
/// An answer that is a list of records.
template <class Record>
std::vector<Record> decodedList(std::string_view body);

template <>
LockitUser decodedAnswer<LockitUser>(std::string_view body);
template <>
std::vector<LockitProject> decodedList<LockitProject>(std::string_view body);
template <>
std::vector<LockitShootingDay> decodedList<LockitShootingDay>(std::string_view body);

/// Calls back with each clip that matches a file name, in the order of the answer; names that the service
/// does not know are null in the answer and are skipped. `names` is the number of names sent, each of which
/// is matched at most once: an answer with more matches is rejected before the first call. The day's clips
/// without a match are checked but not used. Returns false if there is no list of matches.
bool decodeMatches(std::string_view body, std::size_t names,
                   const std::function<void(std::string_view filename, const LockitClip& clip)>& match,
                   const std::stop_token& stop);

JSON toJSON(const LockitProject& project);
/// Also has the label.
JSON toJSON(const LockitShootingDay& day);

} // namespace orvane
