#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"

#include <algorithm>
#include <iterator>

namespace orvane {

namespace {

using TCRange = SyncEngine::TCRange;

} // namespace

bool covers(const TCRange& sound, const TCRange& clip) {
    return sound.startSeconds <= clip.startSeconds + coverSlackSeconds &&
           sound.endSeconds >= clip.endSeconds - coverSlackSeconds;
}

void Cover::finish() {
    std::ranges::sort(ranges_, {}, [](const Range& one) { return one.range.startSeconds; });
    for (std::size_t i = 0; i < ranges_.size(); ++i) {
        ranges_[i].longest = i;
        if (i == 0) continue;
        const std::size_t before = ranges_[i - 1].longest;
        if (ranges_[before].range.endSeconds > ranges_[i].range.endSeconds) ranges_[i].longest = before;
    }
    for (std::size_t i = ranges_.size(); i-- > 0;) {
        ranges_[i].soonest = i;
        if (i + 1 == ranges_.size()) continue;
        const std::size_t behind = ranges_[i + 1].soonest;
        if (ranges_[behind].range.endSeconds < ranges_[i].range.endSeconds) ranges_[i].soonest = behind;
    }
}

std::optional<std::size_t> Cover::of(const TCRange& clip) const {
    const auto behind = std::ranges::upper_bound(ranges_, clip.startSeconds + coverSlackSeconds, {},
                                                 [](const Range& one) { return one.range.startSeconds; });
    if (behind == ranges_.begin()) return std::nullopt;
    const Range& longest = ranges_[std::prev(behind)->longest];
    return covers(longest.range, clip) ? std::optional(longest.item) : std::nullopt;
}

std::optional<std::size_t> Cover::ofEither(const TCRange& clip) const {
    if (const auto found = of(clip)) return found;
    const auto first = std::ranges::lower_bound(ranges_, clip.startSeconds - coverSlackSeconds, {},
                                                [](const Range& one) { return one.range.startSeconds; });
    if (first == ranges_.end()) return std::nullopt;
    const Range& soonest = ranges_[first->soonest];
    return covers(clip, soonest.range) ? std::optional(soonest.item) : std::nullopt;
}

double Cover::shareOf(double first, double last) const {
    double sound = 0, heardTo = first;
    for (const Range& one : ranges_) {
        const double from = std::max(one.range.startSeconds, heardTo),
                     to = std::min(one.range.endSeconds, last);
        if (to > from) sound += to - from;
        heardTo = std::max(heardTo, to);
    }
    return last > first ? sound / (last - first) : 0;
}

bool isCovered(const Shoot& shoot, const SyncGroup& group, double clipSeconds, double movedBySeconds) {
    std::vector<TCRange> ranges;
    for (const AudioMatch& match : group.audioMatches) {
        const double start = match.syncOffsetSeconds + movedBySeconds;
        ranges.push_back({start, start + match.audio->durationSeconds.value_or(0)});
        TCRange whole = ranges.back();
        if (const auto found = shoot.recordingByID.find(match.audio->id);
            found != shoot.recordingByID.end()) {
            whole.startSeconds -= shoot.wholes.startsAt[found->second];
            whole.endSeconds =
                whole.startSeconds + shoot.wholes.places[found->second].range.durationSeconds();
        }
        if (whole.durationSeconds() > 0 && covers({0, clipSeconds}, whole)) return true;
    }
    // All files together: a take may have been cut into several.
    std::ranges::sort(ranges, {}, &TCRange::startSeconds);
    double heardTo = 0;
    for (const TCRange& range : ranges)
        if (range.startSeconds <= heardTo + coverSlackSeconds) heardTo = std::max(heardTo, range.endSeconds);
    return heardTo >= clipSeconds - coverSlackSeconds && !ranges.empty();
}

} // namespace orvane
