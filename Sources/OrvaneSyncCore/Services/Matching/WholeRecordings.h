#pragma once

#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include <cstddef>
#include <stop_token>
#include <unordered_map>
#include <vector>

namespace orvane {

/// Which files hold one recording without a break, by `TakeMembership` of all files and not of those alone
/// that meet one clip. Where a clip would lie under a recording in parts, no part tells by itself.
struct WholeRecordings {
    /// By file: the earliest one that its parts follow without a break; itself for a file that is whole.
    std::vector<std::size_t> firstOf;
    /// By file: from the start of the first part to the end of the last, seconds since midnight of the first
    /// one's day; its own place for a file that is whole.
    std::vector<FilePlace> places;
    std::vector<double> startsAt; ///< by file, of its first sample, seconds from the start of the whole

    bool isFirst(std::size_t file) const { return firstOf[file] == file; }
    /// The part in which that moment of the whole lies; the last one that begins before it.
    std::size_t partAt(std::size_t file, double seconds) const;
    /// Of files, one of each whole.
    std::vector<std::size_t> oneOfEach(const std::vector<std::size_t>& files) const;

    /// `longestBreakSeconds`: what may lie between two parts. By the rule `same` those of two days are two
    /// recordings. Throws Stopped. Pure; any thread.
    static WholeRecordings of(const std::vector<Recording>& recordings, MatchingDays days,
                              double longestBreakSeconds, const std::stop_token& stop);

  private:
    friend class WholesFinder;
    std::unordered_map<std::size_t, std::vector<std::size_t>> parts_; ///< by the first, in their order
};

} // namespace orvane
