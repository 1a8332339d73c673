#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

// Of more, too many would be alike by chance, and all of them are read.
constexpr std::size_t mostPairsByEar = 60;

/// A clip that no timecode leads to its sound, and a recording in which that may be.
struct PairByEar {
    const Shoot::Clip* clip;
    const MediaAsset* recording;
    double laidSeconds; ///< clip time at which the recording begins once it is attached

    SoundClaim claim() const { return {clip->group->id, recording->id, 0, furthestAttachedSeconds}; }
};

/// Of clips without timecode all recordings, of others those without; empty where these are too many.
std::vector<PairByEar> pairsByEar(const Shoot& shoot) {
    std::vector<PairByEar> pairs;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (clip.isDecided || clip.group->matchStatus.kind != MatchStatus::Kind::unmatched ||
            !isAudible(clip))
            continue;
        const bool isWithout = !clip.place || countsFromZero(clip.group->video);
        for (const MediaAsset& recording : shoot.input.recordings) {
            if (recording.isAtmo() || !(recording.durationSeconds.value_or(0) > leastClaimedSeconds) ||
                recording.durationSeconds.value_or(0) > furthestAttachedSeconds ||
                (!isWithout && shoot.recordingByID.contains(recording.id)))
                continue;
            if (pairs.size() == mostPairsByEar) return {};
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
    constexpr std::size_t mostNamed = 8;
    std::string text;
    std::vector<const Shoot::Clip*> clips;
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
        if (clips.size() < mostNamed)
            text += (clips.empty() ? "" : ", ") + shoot.nameOf(*own->recording) + " in " +
                    shoot.nameOf(video) + " with an offset of " +
                    framesText(seconds - own->laidSeconds, video) + " frames";
        clips.push_back(own->clip);
    }
    if (clips.empty()) return;
    if (clips.size() > mostNamed)
        text += ", and others in " + counted(clips.size() - mostNamed, "more clip", "more clips");
    addCardDoubt(doubts,
                 {SyncDoubt::Kind::noTimecode,
                  "what no timecode brings together, the microphones of the cameras heard: " + text,
                  "attach them by hand" +
                      cureWords::inTable("a file name under 'choice' and its offset under 'offset_frames'")},
                 clips);
}

} // namespace orvane
