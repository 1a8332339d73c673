#include "OrvaneSyncCore/Services/Matching/MeetingOrder.h"

#include "OrvaneSyncCore/Services/Matching/RecordingParts.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <span>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

using TCRange = SyncEngine::TCRange;
using Candidate = TakeMembership::Candidate;

// A recording whose overlap is below this share of the best one's makes the clip ambiguous.
constexpr double ambiguityShare = 0.5;
constexpr double roundingSeconds = 1e-6; // of sums of parts
constexpr double adjoiningSeconds = SplitRecordingDetector::contiguityToleranceSeconds;

/// What is ranked as one recording: all files of a take in parts, or a single file.
struct RankedRecording {
    std::vector<std::size_t> files; ///< best first
    double coveredSeconds = 0;      ///< of the clip
    std::size_t first = 0;          ///< position of its first file among the meetings
    bool isOfOtherDay = false;
    bool endsEarly = false;     ///< one of its files ends before the length that its header states
    UnitNearness nearness = {}; ///< only set for those that cover most of the clip

    std::pair<std::ptrdiff_t, std::ptrdiff_t> distances() const {
        return {-static_cast<std::ptrdiff_t>(nearness.commonFolders),
                -static_cast<std::ptrdiff_t>(nearness.commonNames)};
    }
};

/// The files that meet one clip, the one with the longest overlap first.
struct Files {
    std::vector<Meeting> meetings;
    std::vector<std::size_t> met; ///< their positions in the original order
    std::vector<Candidate> candidates;
    RecordingParts parts;
};

/// Among the recordings with the longest overlap, puts those of the video's own unit first. The rest of `met`
/// is already sorted.
void putNearestInFront(std::vector<std::size_t>& met, const MediaAsset& video,
                       const std::vector<Meeting>& meetings, const std::vector<Recording>& recordings) {
    const auto assetOf = [&](std::size_t i) -> const MediaAsset& {
        return *recordings[meetings[i].recording].asset;
    };
    const double most = meetings[met.front()].overlapSeconds;
    const bool isCut = assetOf(met.front()).endsEarly();
    const auto end = std::ranges::find_if(met, [&](std::size_t i) {
        return meetings[i].overlapSeconds < most - roundingSeconds || assetOf(i).endsEarly() != isCut;
    });
    const std::string_view folder = folderPath(assetOf(met.front()));
    if (std::all_of(met.begin(), end, [&](std::size_t i) { return folderPath(assetOf(i)) == folder; }))
        return;
    std::stable_sort(met.begin(), end, [&](std::size_t a, std::size_t b) {
        return UnitNearness::of(video, assetOf(a)) > UnitNearness::of(video, assetOf(b));
    });
}

Files filesOf(const MediaAsset& video, const TCRange& clip, const std::vector<Meeting>& meetings,
              const std::vector<Recording>& recordings) {
    Files files;
    const std::size_t count = meetings.size();
    files.met.resize(count);
    std::iota(files.met.begin(), files.met.end(), std::size_t{0});
    // With equal overlap, a complete file comes before a copy that broke off, which has no sound beyond the
    // clip.
    std::ranges::stable_sort(files.met, std::greater{}, [&](std::size_t i) {
        return std::pair(meetings[i].overlapSeconds, !recordings[meetings[i].recording].asset->endsEarly());
    });
    putNearestInFront(files.met, video, meetings, recordings);
    files.meetings.reserve(count);
    files.parts.reserve(count);
    for (const std::size_t i : files.met) {
        const Meeting& meeting = meetings[i];
        const Recording& recording = recordings[meeting.recording];
        const double apart = recording.place.range.startSeconds - clip.startSeconds;
        files.meetings.push_back(meeting);
        files.parts.push_back(
            {&recording, std::round((meeting.offsetSeconds - apart) / secondsADay) * secondsADay});
    }
    return files;
}

/// False if all files have a moment in common, as most files that meet one clip: then none begins where
/// another ends.
bool mayAdjoin(const RecordingParts& parts) {
    double lastStart = parts.front().range().startSeconds, firstEnd = parts.front().range().endSeconds;
    for (const RecordingPart& part : parts) {
        lastStart = std::max(lastStart, part.range().startSeconds);
        firstEnd = std::min(firstEnd, part.range().endSeconds);
    }
    return lastStart + adjoiningSeconds >= firstEnd;
}

/// By file: whether another one begins at its end or ends at its start, or continues it after a part that was
/// lost.
std::vector<bool> adjoining(const std::vector<Candidate>& files) {
    std::vector<bool> result(files.size(), false);
    std::vector<std::size_t> byStart(files.size());
    std::iota(byStart.begin(), byStart.end(), std::size_t{0});
    const auto startOf = [&](std::size_t i) { return files[i].range.startSeconds; };
    std::ranges::sort(byStart, {}, startOf);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const double end = files[i].range.endSeconds;
        auto next = std::ranges::lower_bound(byStart, end - adjoiningSeconds, {}, startOf);
        for (; next != byStart.end() && startOf(*next) <= end + SplitRecordingDetector::largestGapSeconds;
             ++next)
            if (*next != i &&
                SplitRecordingDetector::mayAdjoin(*files[i].audio, end, *files[*next].audio, startOf(*next)))
                result[i] = result[*next] = true;
    }
    return result;
}

/// The members of the take of the file `seed`, best first; `others` are the files that may belong to the
/// take.
std::vector<std::size_t> takeFrom(std::size_t seed, const Files& files,
                                  const std::vector<std::size_t>& others) {
    std::vector<std::size_t> listed{seed};
    for (const std::size_t i : others)
        if (i != seed) listed.push_back(i);
    std::vector<Candidate> candidates;
    candidates.reserve(listed.size());
    for (const std::size_t i : listed) candidates.push_back(files.candidates[i]);
    std::vector<std::size_t> members;
    for (const TakeMembership::Member& member : TakeMembership::of(candidates).members)
        members.push_back(listed[member.candidate]);
    std::ranges::sort(members);
    return members;
}

RankedRecording rankedRecordingOf(const TCRange& clip, const Files& files, std::vector<std::size_t> members) {
    const Meeting& best = files.meetings[members.front()];
    RankedRecording one{std::move(members), best.overlapSeconds, files.met.size(), best.isOfOtherDay};
    std::vector<TCRange> ranges;
    for (const std::size_t file : one.files) {
        ranges.push_back(files.candidates[file].range);
        one.first = std::min(one.first, files.met[file]);
        one.endsEarly = one.endsEarly || files.candidates[file].audio->endsEarly();
    }
    if (one.files.size() > 1) one.coveredSeconds = coveredSeconds(clip, std::move(ranges));
    return one;
}

void measureNearness(std::vector<RankedRecording>& ranked, const Files& files, const MediaAsset& video) {
    const double most = std::ranges::max(ranked, {}, &RankedRecording::coveredSeconds).coveredSeconds;
    for (RankedRecording& one : ranked)
        if (one.coveredSeconds >= most - roundingSeconds)
            one.nearness = UnitNearness::of(video, *files.candidates[one.files.front()].audio);
}

/// Recordings that cover more of the clip first; of equal ones, those that were met first.
auto rankOf(const RankedRecording& one) {
    return std::tuple(-std::llround(one.coveredSeconds / roundingSeconds), one.endsEarly, one.distances(),
                      one.first);
}

/// Also moves recordings that cover little of the clip.
void putOtherDaysBehind(std::span<RankedRecording> ranked, double bestSeconds) {
    std::ranges::stable_partition(ranked, [&](const RankedRecording& one) {
        return !one.isOfOtherDay && one.coveredSeconds >= bestSeconds * ambiguityShare;
    });
}

/// The recording that the clip uses first, then the others without its files. Takes are only searched for
/// files that adjoin others; any other file covers the same alone.
std::vector<RankedRecording> rankedRecordings(const MediaAsset& video, const TCRange& clip,
                                              const Files& files) {
    const std::size_t count = files.meetings.size();
    const std::vector<bool> mayBePart =
        mayAdjoin(files.parts) ? adjoining(files.candidates) : std::vector<bool>(count, false);
    std::vector<std::size_t> left(count);
    std::iota(left.begin(), left.end(), std::size_t{0});
    // Two files may both continue in a third one. Which of them has it depends on which one the clip uses.
    std::vector<RankedRecording> ranked;
    std::vector<bool> isMember(count, false);
    for (std::size_t i = 0; i < count; ++i) {
        if (isMember[i]) continue;
        auto members = mayBePart[i] ? takeFrom(i, files, left) : std::vector<std::size_t>{i};
        for (const std::size_t file : members) isMember[file] = true;
        if (members.front() == i) ranked.push_back(rankedRecordingOf(clip, files, std::move(members)));
    }
    measureNearness(ranked, files, video);
    std::ranges::sort(ranked, {}, rankOf);
    putOtherDaysBehind(ranked, ranked.front().coveredSeconds);
    ranked.erase(ranked.begin() + 1, ranked.end());
    std::vector<bool> isTaken(count, false);
    for (const std::size_t file : ranked.front().files) isTaken[file] = true;
    for (std::size_t i = 0; i < count; ++i) {
        if (isTaken[i]) continue;
        std::erase_if(left, [&](std::size_t file) { return file < i || isTaken[file]; });
        ranked.push_back(rankedRecordingOf(
            clip, files, mayBePart[i] ? takeFrom(i, files, left) : std::vector<std::size_t>{i}));
        for (const std::size_t file : ranked.back().files) isTaken[file] = true;
    }
    return ranked;
}

/// Ranks all except the first, which the clip uses.
void rankOthers(std::vector<RankedRecording>& ranked) {
    const std::span others(ranked.begin() + 1, ranked.end());
    std::ranges::sort(others, {}, rankOf);
    putOtherDaysBehind(others, std::ranges::max(ranked, {}, &RankedRecording::coveredSeconds).coveredSeconds);
}

bool isInDoubt(const MediaAsset& video, const TCRange& clip, const std::vector<RankedRecording>& ranked,
               const std::vector<Candidate>& files) {
    const RankedRecording& best = ranked.front();
    const double least = best.coveredSeconds * ambiguityShare;
    const bool isAll = best.coveredSeconds >= clip.endSeconds - clip.startSeconds - roundingSeconds;
    const auto nearnessOf = [&](const RankedRecording& one) {
        return UnitNearness::of(video, *files[one.files.front()].audio);
    };
    const auto mayCompete = [&](const RankedRecording& one) {
        if (one.coveredSeconds >= least || (!best.isOfOtherDay && one.isOfOtherDay)) return false;
        // A recording of another unit, while the own unit's covers all of the clip.
        return !isAll || best.isOfOtherDay || nearnessOf(one) >= nearnessOf(best);
    };
    if (std::ranges::none_of(ranked, mayCompete)) return false;

    std::vector<Candidate> listed; // the primary recording first
    std::vector<const RankedRecording*> rankedOfFile;
    for (const RankedRecording& one : ranked)
        for (const std::size_t file : one.files) {
            listed.push_back(files[file]);
            rankedOfFile.push_back(&one);
        }
    const auto isCutShort = [&](const Candidate& file) {
        return std::ranges::any_of(
            listed, [&](const Candidate& other) { return TakeMembership::isCutShort(file, other); });
    };
    return std::ranges::any_of(TakeMembership::of(listed).alternates, [&](std::size_t alternate) {
        return mayCompete(*rankedOfFile[alternate]) && !isCutShort(listed[alternate]);
    });
}

} // namespace

double coveredSeconds(const TCRange& clip, std::vector<TCRange> ranges) {
    std::ranges::sort(ranges, {}, &TCRange::startSeconds);
    double covered = 0, from = clip.startSeconds;
    for (const TCRange& range : ranges) {
        const double start = std::max(range.startSeconds, from),
                     end = std::min(range.endSeconds, clip.endSeconds);
        if (!(end > start)) continue;
        covered += end - start;
        from = end;
    }
    return covered;
}

namespace {

/// Removes recordings of another day than the header's, if the own unit's sound of that day covers all of the
/// clip and is nearer to it by its folders: the header, the recordings' dates and the folders then agree.
void leaveOutOtherDays(const MediaAsset& video, const TCRange& clip, std::vector<Meeting>& meetings,
                       const std::vector<Recording>& recordings) {
    if (std::ranges::none_of(meetings, &Meeting::isOfOtherDay)) return;
    const auto nearnessOf = [&](const Meeting& meeting) {
        return UnitNearness::of(video, *recordings[meeting.recording].asset);
    };
    const auto isOfHeadersDay = [&](const Meeting& meeting) {
        return !meeting.isOfOtherDay && recordings[meeting.recording].place.day;
    };
    UnitNearness nearest;
    for (const Meeting& meeting : meetings)
        if (isOfHeadersDay(meeting)) nearest = std::max(nearest, nearnessOf(meeting));
    std::vector<TCRange> own;
    for (const Meeting& meeting : meetings)
        if (isOfHeadersDay(meeting) && nearnessOf(meeting) == nearest) {
            const double start = clip.startSeconds + meeting.offsetSeconds;
            own.push_back({start, start + recordings[meeting.recording].place.range.durationSeconds()});
        }
    constexpr double lateByHandSeconds = 1;
    if (coveredSeconds(clip, std::move(own)) < clip.durationSeconds() - lateByHandSeconds) return;
    std::erase_if(meetings, [&](const Meeting& meeting) {
        return meeting.isOfOtherDay && nearnessOf(meeting) < nearest;
    });
}

} // namespace

MatchStatus rankMeetings(const MediaAsset& video, const TCRange& clip, std::vector<Meeting>& meetings,
                         const std::vector<Recording>& recordings) {
    leaveOutOtherDays(video, clip, meetings, recordings);
    if (meetings.size() == 1) return MatchStatus::matched();
    Files files = filesOf(video, clip, meetings, recordings);
    if (isOneRecording(files.parts)) {
        meetings = std::move(files.meetings);
        return MatchStatus::splitRecording(static_cast<int>(meetings.size()));
    }
    const bool isPlain =
        std::ranges::none_of(files.meetings, &Meeting::isOfOtherDay) && !mayAdjoin(files.parts);
    const double least = files.meetings.front().overlapSeconds * ambiguityShare;
    if (isPlain && files.meetings.back().overlapSeconds >= least) {
        meetings = std::move(files.meetings);
        return MatchStatus::matched();
    }
    files.candidates.reserve(files.parts.size());
    for (const RecordingPart& part : files.parts)
        files.candidates.push_back({&*part.file->asset, part.range()});
    std::vector<RankedRecording> ranked = rankedRecordings(video, clip, files);
    rankOthers(ranked);
    const bool isSettled = !isInDoubt(video, clip, ranked, files.candidates);
    auto listed = meetings.begin();
    for (const RankedRecording& one : ranked)
        for (const std::size_t file : one.files) *listed++ = files.meetings[file];
    return isSettled ? MatchStatus::matched() : MatchStatus::ambiguous(static_cast<int>(meetings.size()));
}

} // namespace orvane
