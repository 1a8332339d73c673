#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

// Of more, too many would be alike by chance, and all of them are read.
constexpr std::size_t mostPairsByEar = 200;
constexpr double mostSecondsByEar = 36000;

/// A clip that no timecode leads to its sound, and a recording in which that may be.
struct PairByEar {
    const Shoot::Clip* clip;
    const MediaAsset* recording;
    double laidSeconds; ///< clip time at which the recording begins once it is attached

    SoundClaim claim() const { return {clip->group->id, recording->id, 0, furthestAttachedSeconds}; }
};

/// Folders with a file that counts from zero or has no time: the others there may go on from it, as what
/// counts while it runs.
class CountingFolders {
  public:
    explicit CountingFolders(const Shoot& shoot) {
        for (const Shoot::Clip& clip : shoot.clips)
            if (countsFromZero(clip.group->video)) folders_.insert(folderOf(clip.group->video));
        // A time reference of 0 is none.
        for (const MediaAsset& recording : shoot.input.recordings)
            if (!shoot.recordingByID.contains(recording.id)) folders_.insert(folderOf(recording));
    }
    bool hold(const MediaAsset& file) const { return folders_.contains(folderOf(file)); }

  private:
    std::set<std::string_view> folders_;
};

/// Of clips whose timecode is no time of day all recordings, of others those of which that is true; empty
/// where these are too many.
std::vector<PairByEar> pairsByEar(const Shoot& shoot) {
    std::vector<PairByEar> pairs;
    const CountingFolders counting(shoot);
    const std::vector<bool> isUsed = shoot.usedWholes();
    const auto hasTime = [&](const MediaAsset& recording) {
        const auto placed = shoot.recordingByID.find(recording.id);
        return placed != shoot.recordingByID.end() &&
               (!counting.hold(recording) || isUsed[shoot.wholes.firstOf[placed->second]]);
    };
    double seconds = 0;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (clip.isDecided || clip.group->matchStatus.kind != MatchStatus::Kind::unmatched ||
            !isAudible(clip))
            continue;
        const bool isWithout = !clip.place || counting.hold(clip.group->video);
        for (const MediaAsset& recording : shoot.input.recordings) {
            const double length = recording.durationSeconds.value_or(0);
            if (recording.isAtmo() || !(length > leastClaimedSeconds) || length > furthestAttachedSeconds ||
                (!isWithout && hasTime(recording)))
                continue;
            seconds += length;
            if (pairs.size() == mostPairsByEar || seconds > mostSecondsByEar) return {};
            const AudioMatch laid =
                SyncEngine::matchByTimecode(clip.group->video, recording, shoot.input.rules);
            pairs.push_back({&clip, &recording, laid.syncOffsetSeconds});
        }
    }
    return pairs;
}

} // namespace

void addClaimsByEar(const Shoot& shoot, std::vector<SoundClaim>& toHear) {
    for (const PairByEar& pair : pairsByEar(shoot))
        if (heardClaim(shoot, pair.claim()) == nullptr) toHear.push_back(pair.claim());
}

void addSoundsByEar(const Shoot& shoot, SyncDoubts& doubts) {
    if (shoot.input.heardClaims == nullptr) return;
    const auto pairs = pairsByEar(shoot);
    for (auto pair = pairs.begin(); pair != pairs.end();) {
        const auto next =
            std::find_if(pair, pairs.end(), [&](const PairByEar& other) { return other.clip != pair->clip; });
        std::vector<std::pair<const PairByEar*, double>> found;
        for (; pair != next; ++pair)
            if (const HeardClaim* heard = heardClaim(shoot, pair->claim());
                heard != nullptr && heard->offsetSeconds)
                found.emplace_back(&*pair, *heard->offsetSeconds);
        if (found.size() != 1) continue; // none, or sound that repeats
        const auto& [own, seconds] = found.front();
        const MediaAsset& video = own->clip->group->video;
        const double offset = seconds - microphoneDelaySeconds - own->laidSeconds;
        const std::string text = shoot.nameOf(*own->recording) + " in " + shoot.nameOf(video) +
                                 " with an offset of " + framesText(offset, video);
        doubts.byGroup[own->clip->group->id].push_back(
            {.kind = SyncDoubt::Kind::noTimecode,
             .message = "what no timecode brings together, the microphones of the cameras heard: " + text,
             .cure = cureWords::asHeard("attach them by hand", "'choice' and 'offset_frames'"),
             .own = text,
             .suggestion = SyncDoubt::Suggestion{own->recording->id, offset}});
    }
}

} // namespace orvane
