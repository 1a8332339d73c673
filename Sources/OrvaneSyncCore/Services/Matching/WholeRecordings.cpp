#include "OrvaneSyncCore/Services/Matching/WholeRecordings.h"

#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>

namespace orvane {

/// Joins the parts of a shoot's recordings. Files are on the axis of days and times.
class WholesFinder {
  public:
    WholesFinder(const std::vector<Recording>& recordings, MatchingDays days, double longestBreakSeconds)
        : recordings_(recordings), isSameDayOnly_(days == MatchingDays::same), break_(longestBreakSeconds),
          near_(recordings.size()) {
        files_.reserve(recordings.size());
        for (const Recording& recording : recordings) {
            const double day = static_cast<double>(recording.place.day.value_or(0)) * secondsADay;
            const auto& range = recording.place.range;
            files_.push_back({&*recording.asset, {day + range.startSeconds, day + range.endSeconds}});
            result_.places.push_back(recording.place);
        }
        result_.startsAt.resize(recordings.size());
        result_.firstOf.resize(recordings.size());
        std::iota(result_.firstOf.begin(), result_.firstOf.end(), std::size_t{0});
        std::iota(near_.begin(), near_.end(), std::size_t{0});
    }

    WholeRecordings find(const std::stop_token& stop) {
        platform::StopCheck check(stop);
        Indices byStart = result_.firstOf;
        std::ranges::stable_sort(byStart, {}, [&](std::size_t i) { return startOf(i); });
        std::vector<bool> isBefore(files_.size(), false);
        for (const std::size_t i : byStart) {
            check();
            isBefore[i] = joinFollowing(i, byStart);
        }
        joinBeside(byStart, isBefore);
        std::vector<bool> hasOthers(files_.size(), false);
        for (const std::size_t i : byStart)
            if (nearRoot(i) != i) hasOthers[nearRoot(i)] = true;
        std::map<std::size_t, Indices> clusters;
        for (const std::size_t i : byStart)
            if (hasOthers[nearRoot(i)]) clusters[nearRoot(i)].push_back(i);
        for (auto& [root, files] : clusters) {
            check();
            takesAmong(std::move(files));
        }
        return std::move(result_);
    }

  private:
    using Candidate = TakeMembership::Candidate;
    using Indices = std::vector<std::size_t>;

    double startOf(std::size_t i) const { return files_[i].range.startSeconds; }
    double endOf(std::size_t i) const { return files_[i].range.endSeconds; }
    bool mayBeOfOneDay(std::size_t a, std::size_t b) const {
        const auto &own = recordings_[a].place.day, &other = recordings_[b].place.day;
        return own.has_value() == other.has_value() && (!isSameDayOnly_ || own == other);
    }

    /// The root of the file's group of near files. Files that may be of one take are in one group and are
    /// examined together.
    std::size_t nearRoot(std::size_t i) {
        while (near_[i] != i) i = near_[i] = near_[near_[i]];
        return i;
    }
    void join(std::size_t a, std::size_t b) { near_[nearRoot(a)] = nearRoot(b); }

    /// Returns whether any file follows.
    bool joinFollowing(std::size_t i, const Indices& byStart) {
        bool isFollowed = false;
        auto next =
            std::ranges::lower_bound(byStart, endOf(i) - SplitRecordingDetector::contiguityToleranceSeconds,
                                     {}, [&](std::size_t other) { return startOf(other); });
        for (; next != byStart.end() && startOf(*next) <= endOf(i) + break_; ++next)
            if (*next != i && mayBeOfOneDay(i, *next) &&
                SplitRecordingDetector::mayAdjoin(*files_[i].audio, endOf(i), *files_[*next].audio,
                                                  startOf(*next))) {
                join(i, *next);
                isFollowed = true;
            }
        return isFollowed;
    }
    /// Joins further channels of recordings that have parts.
    void joinBeside(const Indices& byStart, const std::vector<bool>& isBefore) {
        for (std::size_t i = 1; i < byStart.size(); ++i) {
            const std::size_t a = byStart[i - 1], b = byStart[i];
            if (startOf(b) - startOf(a) <= SplitRecordingDetector::contiguityToleranceSeconds &&
                mayBeOfOneDay(a, b) && (isBefore[a] || isBefore[b]))
                join(a, b);
        }
    }

    /// Divides `left`, sorted by start, into takes, and each take at its breaks.
    void takesAmong(Indices left) {
        while (left.size() > 1) {
            std::vector<Candidate> candidates;
            candidates.reserve(left.size());
            for (const std::size_t i : left) candidates.push_back(files_[i]);
            Indices members;
            for (const TakeMembership::Member& member : TakeMembership::of(candidates).members)
                members.push_back(left[member.candidate]);
            std::ranges::stable_sort(members, {}, [&](std::size_t i) { return startOf(i); });
            std::erase_if(left,
                          [&](std::size_t i) { return std::ranges::find(members, i) != members.end(); });
            auto first = members.begin();
            double end = endOf(*first);
            for (auto next = first + 1; next != members.end(); ++next) {
                if (startOf(*next) > end + break_) {
                    makeWhole(first, next, end);
                    first = next;
                }
                end = std::max(end, endOf(*next));
            }
            makeWhole(first, members.end(), end);
        }
    }
    void makeWhole(Indices::const_iterator first, Indices::const_iterator last, double end) {
        if (last - first < 2) return;
        result_.parts_[*first] = {first, last};
        FilePlace place = recordings_[*first].place;
        place.range.endSeconds = place.range.startSeconds + (end - startOf(*first));
        for (auto member = first; member != last; ++member) {
            result_.firstOf[*member] = *first;
            result_.places[*member] = place;
            result_.startsAt[*member] = startOf(*member) - startOf(*first);
        }
    }

    const std::vector<Recording>& recordings_;
    bool isSameDayOnly_;
    double break_;
    std::vector<Candidate> files_;
    Indices near_; ///< by file: a file that is near it; itself at the root
    WholeRecordings result_;
};

std::size_t WholeRecordings::partAt(std::size_t file, double seconds) const {
    const auto found = parts_.find(firstOf[file]);
    if (found == parts_.end()) return file;
    const auto behind = std::ranges::upper_bound(found->second, seconds, {},
                                                 [&](std::size_t part) { return startsAt[part]; });
    return behind == found->second.begin() ? found->second.front() : *std::prev(behind);
}

std::vector<std::size_t> WholeRecordings::oneOfEach(const std::vector<std::size_t>& files) const {
    std::vector<std::size_t> result;
    std::vector<bool> isKnown(firstOf.size());
    for (const std::size_t file : files) {
        if (isKnown[firstOf[file]]) continue;
        isKnown[firstOf[file]] = true;
        result.push_back(file);
    }
    return result;
}

WholeRecordings WholeRecordings::of(const std::vector<Recording>& recordings, MatchingDays days,
                                    double longestBreakSeconds, const std::stop_token& stop) {
    return WholesFinder(recordings, days, longestBreakSeconds).find(stop);
}

} // namespace orvane
