#include "OrvaneSyncCore/Services/Takes/SeparateUnits.h"

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"

#include <algorithm>

namespace orvane {

namespace {

constexpr std::size_t fewestClips = 3; // of a unit, as evidence of how it works
constexpr double secondsOfADay = 86400;

/// The times at which a unit's cameras rolled, as ranges without a gap.
class RollingTimes {
  public:
    explicit RollingTimes(std::vector<SyncEngine::TCRange> ranges) {
        std::ranges::sort(ranges, {}, &SyncEngine::TCRange::startSeconds);
        for (const SyncEngine::TCRange& range : ranges)
            if (!stretches_.empty() && range.startSeconds <= stretches_.back().endSeconds)
                stretches_.back().endSeconds = std::max(stretches_.back().endSeconds, range.endSeconds);
            else
                stretches_.push_back(range);
    }
    double totalSeconds() const {
        double seconds = 0;
        for (const SyncEngine::TCRange& stretch : stretches_) seconds += stretch.durationSeconds();
        return seconds;
    }
    double secondsTogether(const RollingTimes& other) const {
        double seconds = 0;
        auto theirs = other.stretches_.begin();
        for (const SyncEngine::TCRange& own : stretches_) {
            while (theirs != other.stretches_.end() && theirs->endSeconds <= own.startSeconds) ++theirs;
            for (auto one = theirs; one != other.stretches_.end() && one->startSeconds < own.endSeconds;
                 ++one)
                seconds += SyncEngine::overlapDuration(own, *one).value_or(0);
        }
        return seconds;
    }

  private:
    std::vector<SyncEngine::TCRange> stretches_;
};

/// On the axis of days and times if all clips have a day, else by time of day.
std::vector<SyncEngine::TCRange> rangesOf(const std::vector<const SeparateUnits::Clip*>& clips, bool byDay) {
    std::vector<SyncEngine::TCRange> ranges;
    ranges.reserve(clips.size());
    for (const auto* clip : clips) {
        const double shift = byDay ? secondsOfADay * static_cast<double>(*clip->day) : 0;
        ranges.push_back({clip->range.startSeconds + shift, clip->range.endSeconds + shift});
    }
    return ranges;
}

/// The share of the time of one of the two, whichever is larger, for which the other one rolls as well.
double shareTogether(const RollingTimes& a, const RollingTimes& b) {
    const double shorter = std::min(a.totalSeconds(), b.totalSeconds());
    return shorter > 0 ? a.secondsTogether(b) / shorter : 0;
}

bool isNearer(const SyncGroup& clip, const MediaAsset& sound, const MediaAsset& other) {
    return UnitNearness::of(clip.video, sound) > UnitNearness::of(clip.video, other);
}

bool areOfOneSlate(const MediaAsset& a, const MediaAsset& b) {
    return a.ixmlData && b.ixmlData && a.ixmlData->scene && a.ixmlData->take &&
           a.ixmlData->scene == b.ixmlData->scene && a.ixmlData->take == b.ixmlData->take;
}

} // namespace

SeparateUnits::SeparateUnits(std::vector<Clip> clips) : clips_(std::move(clips)) {
    std::erase_if(clips_, [](const Clip& clip) { return clip.group->primaryAudio() == nullptr; });
}

std::string SeparateUnits::folderApart(const MediaAsset& of, const MediaAsset& from) {
    const auto own = folderNames(of.url), others = folderNames(from.url);
    std::string path = "/";
    for (std::size_t i = 0; i < own.size(); ++i) {
        path.append(own[i]) += '/';
        if (i >= others.size() || own[i] != others[i]) return path;
    }
    return {};
}

std::vector<const SeparateUnits::Clip*> SeparateUnits::clipsOf(std::string_view folder) const {
    std::vector<const Clip*> clips;
    for (const Clip& clip : clips_)
        if (clip.group->primaryAudio()->url.path.starts_with(folder)) clips.push_back(&clip);
    return clips;
}

SeparateUnits::Relation SeparateUnits::relation(const MediaAsset& a, const MediaAsset& b) const {
    constexpr double mostOfUnits = 0.5, leastOfOneScene = 0.8;
    std::string own = folderApart(a, b), other = folderApart(b, a);
    if (own.empty() || other.empty()) return Relation::oneScene;
    if (other < own) std::swap(own, other);
    const auto [known, isNew] = known_.try_emplace({own, other}, Relation::oneScene);
    if (isNew) {
        const auto clips = clipsOf(own), others = clipsOf(other);
        const auto areDated = [](const auto& all) {
            return std::ranges::all_of(all, [](const Clip* clip) { return clip->day.has_value(); });
        };
        const bool byDay = areDated(clips) && areDated(others);
        const double share =
            shareTogether(RollingTimes(rangesOf(clips, byDay)), RollingTimes(rangesOf(others, byDay)));
        const bool areEnough = std::min(clips.size(), others.size()) >= fewestClips;
        if (share < mostOfUnits && areEnough)
            known->second = Relation::twoUnits;
        else if (share < leastOfOneScene)
            known->second = Relation::unclear;
    }
    return known->second;
}

SeparateUnits::Relation SeparateUnits::relation(const SyncGroup& a, const SyncGroup& b) const {
    const MediaAsset *own = a.primaryAudio(), *other = b.primaryAudio();
    if (own == nullptr || other == nullptr || own->id == other->id || !isNearer(a, *own, *other) ||
        !isNearer(b, *other, *own) || areOfOneSlate(*own, *other))
        return Relation::oneScene;
    return relation(*own, *other);
}

bool SeparateUnits::have(const SyncGroup& a, const SyncGroup& b) const {
    return relation(a, b) == Relation::twoUnits;
}

bool SeparateUnits::mayHave(const SyncGroup& a, const SyncGroup& b) const {
    return relation(a, b) == Relation::unclear;
}

bool SeparateUnits::areOfTwo(const MediaAsset& one, const MediaAsset& other) const {
    return relation(one, other) == Relation::twoUnits && !areOfOneSlate(one, other);
}

bool SeparateUnits::isOfOther(const SyncGroup& clip, const MediaAsset& recording) const {
    const MediaAsset* own = clip.primaryAudio();
    return own != nullptr && isNearer(clip, *own, recording) && areOfTwo(*own, recording);
}

} // namespace orvane
