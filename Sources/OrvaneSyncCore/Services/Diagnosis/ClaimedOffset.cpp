#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"

#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {

namespace {

constexpr int fewestHeard = 2; // by chance, one in a thousand is found at a clear place
constexpr std::size_t heardAtOnce = 3, mostHeard = 6;

/// What was heard of clips that have sound.
struct InPlace {
    std::ptrdiff_t heard = 0, inPlace = 0;

    void add(const Shoot& shoot, const AudioMatch& match) {
        const auto lag = shoot.input.heardLags->find(match.id);
        if (lag == shoot.input.heardLags->end()) return;
        ++heard;
        if (std::abs(lag->second.seconds) < inPlaceSeconds) ++inPlace;
    }
    bool isMost() const {
        return static_cast<double>(inPlace) > explanation::majority * static_cast<double>(heard);
    }
};

InPlace heardOf(const Shoot& shoot, const std::function<bool(const MediaAsset& recording)>& isMeant) {
    InPlace count;
    if (shoot.input.heardLags == nullptr) return count;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (clip.group->manualAudioOffsetSeconds != 0) continue;
        for (const AudioMatch& match : clip.group->audioMatches)
            if (shoot.recordingByID.contains(match.audio->id) && isMeant(*match.audio))
                count.add(shoot, match);
    }
    return count;
}

} // namespace

void ClaimedOffset::add(const Shoot::Clip& clip, std::size_t recording, double offsetSeconds) {
    positioned_.push_back({&clip,
                           {.clipID = clip.group->id,
                            .recordingID = shoot_.recordings[recording].asset->id,
                            .offsetSeconds = offsetSeconds,
                            .reachSeconds = reach_}});
}

std::vector<const ClaimedOffset::Positioned*> ClaimedOffset::audible() const {
    std::vector<const Positioned*> all;
    for (const Positioned& one : positioned_)
        if (isAudible(*one.clip)) all.push_back(&one);
    std::vector<const Positioned*> result; // spread over the clips; every second one first
    const std::size_t count = std::min(all.size(), mostHeard);
    for (const std::size_t first : {0, 1})
        for (std::size_t i = first; i < count; i += 2)
            result.push_back(all[i * (all.size() - 1) / std::max<std::size_t>(count - 1, 1)]);
    return result;
}

bool ClaimedOffset::Heard::areSeveral() const { return clips >= fewestHeard; }
bool ClaimedOffset::Heard::isConfirmed() const { return areSeveral() && spreadSeconds == 0; }

void ClaimedOffset::Heard::refuseCorrection() {
    const double seconds = std::abs(correctionSeconds.value_or(0));
    if (seconds >= leastByHandSeconds) spreadSeconds = seconds;
}

CommonOffset ClaimedOffset::Heard::known(CommonOffset offset, const Shoot& shoot) const {
    const bool mayHear = shoot.input.heardClaims != nullptr || isUnasked;
    if (isConfirmed() || !mayHear) offset.unheardHourSeconds = 0;
    return offset;
}

CommonOffset ClaimedOffset::Heard::corrected(double offsetSeconds, TimecodeFrameRate rate) const {
    if (isOffsetWithin && isOfAWrongHour(offsetSeconds, rate)) return {offsetSeconds, 0, clips};
    const HeardClock clock = heardClock(offsetSeconds + correctionSeconds.value_or(0), rate);
    return {clock.seconds, 0, clips, clock.isExact};
}

ClaimedOffset::Heard ClaimedOffset::heard(std::vector<SoundClaim>* toHear) const {
    Heard result;
    std::vector<double> corrections;
    std::vector<MeasuredOffset> measured;
    const auto add = [&](const Positioned& one, double correction) {
        corrections.push_back(correction);
        if (one.clip->place) measured.push_back({likelyRange(*one.clip).startSeconds, correction});
    };
    int missed = 0;
    std::vector<SoundClaim> unheard;
    for (const Positioned* one : audible()) {
        const HeardClaim* heard = heardClaim(shoot_, one->claim);
        if (heard == nullptr) {
            unheard.push_back(one->claim);
        } else if (heard->offsetSeconds) {
            add(*one, *heard->offsetSeconds - one->claim.offsetSeconds);
        } else if (heard->couldHear) {
            ++missed;
        }
    }
    // The search for sound without timecode may have measured the same clock.
    for (const Positioned& one : positioned_) {
        const HeardClaim* heard =
            heardClaim(shoot_, one.claim) == nullptr
                ? heardClaim(shoot_, claimByEar(one.claim.clipID, one.claim.recordingID))
                : nullptr;
        if (heard == nullptr || !heard->offsetSeconds) continue;
        const double correction = *heard->offsetSeconds - one.claim.offsetSeconds;
        if (std::abs(correction) <= reach_ + coverSlackSeconds) add(one, correction);
    }
    result.clips = static_cast<int>(corrections.size());
    if (result.areSeveral()) {
        const auto [least, most] = std::ranges::minmax(corrections);
        result.spreadSeconds = most - least;
        result.isOffsetWithin = least <= 0 && most >= 0;
    }
    if (const auto agreed = agreementOf(std::move(corrections), fewestHeard, 0)) {
        result.correctionSeconds = agreed->seconds;
        result.spreadSeconds = 0;
        result.clips = static_cast<int>(agreed->count);
        result.isOffsetWithin =
            result.isOffsetWithin && std::abs(agreed->seconds) <= agreeingByHandSeconds; // no single clip
    }
    if (result.spreadSeconds > 0) result.drift = clockDriftOf(std::move(measured));
    result.isRefuted = result.clips == 0 && missed >= explanation::fewest;
    result.isUnasked = shoot_.input.heardClaims == nullptr && !unheard.empty();
    if (toHear != nullptr && !result.isConfirmed() && !result.isRefuted) {
        unheard.resize(std::min(unheard.size(), heardAtOnce));
        toHear->insert(toHear->end(), unheard.begin(), unheard.end());
    }
    return result;
}

bool ClaimedOffset::isSoundOfClipsInPlace() const {
    if (shoot_.input.heardLags == nullptr) return false;
    InPlace count;
    for (const Positioned& one : positioned_)
        if (one.clip->primary && one.clip->group->manualAudioOffsetSeconds == 0)
            count.add(shoot_, one.clip->group->audioMatches.front());
    return count.isMost();
}

bool isUnheard(const Shoot& shoot, const UUID& match) {
    return shoot.input.unheard != nullptr && shoot.input.unheard->contains(match);
}

bool isAudible(const Shoot::Clip& clip) { return mayHaveHeard(clip, leastClaimedSeconds); }

bool mayHaveHeard(const Shoot::Clip& clip, double leastSeconds) {
    const MediaAsset& video = clip.group->video;
    return !clip.group->isExcludedFromExport && video.channelCount.value_or(0) > 0 &&
           video.durationSeconds.value_or(0) >= leastSeconds && !video.isOffspeed();
}

const HeardClaim* heardClaim(const Shoot& shoot, const SoundClaim& claim) {
    if (shoot.input.heardClaims == nullptr) return nullptr;
    const auto found = shoot.input.heardClaims->find(claim.key());
    return found != shoot.input.heardClaims->end() ? &found->second : nullptr;
}

bool areHeardInPlace(const Shoot& shoot, const std::function<bool(const MediaAsset& recording)>& isMeant) {
    const InPlace count = heardOf(shoot, isMeant);
    return count.inPlace >= explanation::fewest && count.isMost();
}

bool areHeardOutOfPlace(const Shoot& shoot, const std::function<bool(const MediaAsset& recording)>& isMeant) {
    const InPlace count = heardOf(shoot, isMeant);
    return count.heard >= explanation::fewest && count.inPlace == 0;
}

} // namespace orvane
