#pragma once

#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include <cstddef>
#include <stop_token>
#include <unordered_map>
#include <vector>

namespace orvane {

/// Which files hold one recording without a break, by `TakeMembership` of all files, not only of those that
/// meet one clip. One part alone does not show whether a clip would lie under a recording in parts.
struct WholeRecordings {
    /// By file: the earliest file that its parts follow without a break; the file itself if it is whole.
    std::vector<std::size_t> firstOf;
    /// By file: from the start of the first part to the end of the last, seconds since midnight of the first
    /// part's day; its own place for a file that is whole.
    std::vector<FilePlace> places;
    std::vector<double> startsAt; ///< by file: its first sample, in seconds from the start of the whole

    bool isFirst(std::size_t file) const { return firstOf[file] == file; }
    /// The part that contains that moment of the whole: the last one that begins before it.
    std::size_t partAt(std::size_t file, double seconds) const;
    /// Of the given files, one for each whole recording.
    std::vector<std::size_t> oneOfEach(const std::vector<std::size_t>& files) const;

    /// `longestBreakSeconds`: the longest gap between two parts. With the rule `same`, parts of two days are
    /// two recordings. Throws Stopped. Pure; any thread.
    static WholeRecordings of(const std::vector<Recording>& recordings, MatchingDays days,
                              double longestBreakSeconds, const std::stop_token& stop);

  private:
    friend class WholesFinder;
    std::unordered_map<std::size_t, std::vector<std::size_t>> parts_; ///< by the first, in their order
};

} // namespace orvane
