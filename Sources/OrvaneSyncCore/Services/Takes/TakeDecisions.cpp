#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace orvane {

namespace {

/// Maps a running number of `before` to that of `after`; absent for a channel that no longer exists.
class Renumbering {
  public:
    Renumbering(const SyncGroup& before, const Take& takeBefore, const SyncGroup& after,
                const Take& takeAfter) {
        for (const TakeFile& file : takeBefore.files) {
            const MediaAsset& own = *before.audioMatches[file.matchIndex].audio;
            if (file.role == TakeRole::mirror) continue;
            const TakeFile* now =
                fileOf(after, takeAfter, [&](const MediaAsset& one) { return one.url == own.url; });
            // A copy is only used when its original is gone.
            if (now == nullptr)
                now = fileOf(after, takeAfter, [&](const MediaAsset& one) {
                    return one.filename == own.filename && wasCopy(before, takeBefore, one);
                });
            for (int channel = 0; channel < file.channelCount; ++channel) {
                auto& number = numbers_[file.firstChannel + channel];
                if (!number && now != nullptr && channel < now->channelCount)
                    number = now->firstChannel + channel;
            }
        }
    }
    std::optional<int> of(int number) const {
        const auto found = numbers_.find(number);
        return found == numbers_.end() ? std::optional(number) : found->second;
    }
    std::set<int> of(const std::set<int>& numbers) const {
        std::set<int> result;
        for (const int number : numbers)
            if (const auto own = of(number)) result.insert(*own);
        return result;
    }

  private:
    template <class Condition>
    static const TakeFile* fileOf(const SyncGroup& group, const Take& take, Condition holds) {
        const auto found = std::ranges::find_if(take.files, [&](const TakeFile& file) {
            return file.role != TakeRole::mirror && holds(*group.audioMatches[file.matchIndex].audio);
        });
        return found == take.files.end() ? nullptr : &*found;
    }
    static bool wasCopy(const SyncGroup& before, const Take& take, const MediaAsset& audio) {
        return std::ranges::any_of(take.files, [&](const TakeFile& file) {
            return file.role == TakeRole::mirror &&
                   before.audioMatches[file.matchIndex].audio->url == audio.url;
        });
    }

    std::map<int, std::optional<int>> numbers_;
};

} // namespace

namespace {

/// The highest number of a channel in the clip's decisions; 0 without any.
int highestNumber(const SyncGroup& group) {
    int highest = 0;
    for (const auto* numbers : {&group.manualActiveTracks, &group.algorithmExcludedTracks})
        if (!numbers->empty()) highest = std::max(highest, *numbers->rbegin());
    for (const BlockOverride& range : group.manualBlockOverrides)
        highest = std::max(highest, range.trackIndex);
    return highest;
}

/// The clip with takes that are not parts of one sound: only the length of the picture shows that they are.
SyncGroup withSeparateTakes(const SyncGroup& group) {
    SyncGroup separate = group;
    separate.video.durationSeconds.reset();
    return separate;
}

} // namespace

bool countsTakesSeparately(const SyncGroup& group) {
    const int highest = group.audioMatches.size() > 1 ? highestNumber(group) : 0;
    return highest > 0 && highest > takeOf(group, assumedChannels).runningChannelCount() &&
           highest <= takeOf(withSeparateTakes(group), assumedChannels).runningChannelCount();
}

void countTakesTogether(SyncGroup& group) {
    if (countsTakesSeparately(group)) carryDecisions(group, withSeparateTakes(group));
}

void carryDecisions(SyncGroup& group, const SyncGroup& before) {
    if (highestNumber(group) == 0) return;
    const Take was = takeOf(before, assumedChannels), is = takeOf(group, assumedChannels);
    if (was.isEmpty() || is.isEmpty()) return;
    const Renumbering renumbered(before, was, group, is);
    group.manualActiveTracks = renumbered.of(group.manualActiveTracks);
    group.algorithmExcludedTracks = renumbered.of(group.algorithmExcludedTracks);
    std::vector<BlockOverride> ranges;
    for (BlockOverride range : group.manualBlockOverrides) {
        const auto number = renumbered.of(range.trackIndex);
        if (!number) continue;
        range.trackIndex = *number;
        ranges.push_back(range);
    }
    group.manualBlockOverrides = std::move(ranges);
}

void startWithRecording(SyncGroup& group, const SyncGroup& before) {
    if (group.isMOS() || before.isMOS()) return;
    if (group.audioMatches.front().audio->url == before.audioMatches.front().audio->url) return;
    group.measuredLUFS.reset();
    if (group.masterGainAuto) group.masterGainDB = 0;
    const auto isAnyHeard = [](const SyncGroup& clip, int channels) {
        const auto first = clip.manualActiveTracks.begin(); // the lowest numbers are those of the take
        return first != clip.manualActiveTracks.end() && *first <= channels;
    };
    const int channels = takeOf(group, assumedChannels).channelCount;
    if (isAnyHeard(group, channels) || !isAnyHeard(before, takeOf(before, assumedChannels).channelCount))
        return;
    for (int channel = 1; channel <= channels; ++channel) group.manualActiveTracks.insert(channel);
    group.manualActiveTracks.erase(group.manualActiveTracks.upper_bound(channels),
                                   group.manualActiveTracks.end());
    group.tracksManuallyEdited.reset();
}

void carryAnchor(SyncGroup& group, const SyncGroup& before) {
    std::optional<double>& anchor = group.audioAnchorOffsetInAudioSeconds;
    if (!anchor || before.isMOS()) return;
    if (group.isMOS()) return anchor.reset();
    const AudioMatch &was = before.audioMatches.front(), &is = group.audioMatches.front();
    if (was.audio->url == is.audio->url) return;
    constexpr double rounding = 1e-6; // seconds, far below one sample
    const double moved = *anchor + was.syncOffsetSeconds - is.syncOffsetSeconds;
    anchor = withinTake(takeOf(group, assumedChannels), moved);
    if (std::abs(*anchor - moved) > rounding) anchor.reset();
}

double withinTake(const Take& take, double secondsInPrimary) {
    const double inTake = std::max(secondsInPrimary + take.primaryStartSeconds, 0.0);
    const double end = take.durationSeconds > 0 ? take.durationSeconds : inTake;
    return std::min(inTake, end) - take.primaryStartSeconds;
}

} // namespace orvane
