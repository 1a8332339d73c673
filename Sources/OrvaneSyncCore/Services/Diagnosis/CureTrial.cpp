#include "OrvaneSyncCore/Services/Diagnosis/CureTrial.h"

#include "OrvaneSyncCore/Models/AgreedLag.h"
#include "OrvaneSyncCore/Services/Diagnosis/KeptFiles.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace orvane {

namespace {

bool isOptionOfMatching(const CureOption& option) { return rowOf(option.kind).isOfMatching; }

MatchRules rulesWith(MatchRules rules, const std::vector<CureOption>& options,
                     const std::vector<MediaAsset>& videos) {
    using enum CureOption::Kind;
    SourceCorrections given;
    for (const auto& [kind, value] : options) switch (kind) {
        case soundOffset:
            given.soundOffset = value;
            break;
        case soundDate:
            given.soundDate = value;
            break;
        case timecodeRate:
            given.timecodeRate = SourceCorrections::fromTexts({}, {}, value).timecodeRate;
            break;
        case days:
            given.days = fromRawValue<MatchingDays>(value);
            break;
        case exclude:
        case video:
        case audio:
        case withoutFolder: // these select files (`KeptFiles`)
        case setting:
        case choose:
            break;
        }
    if (given.timecodeRate) rules.timecodeRate = given.timecodeRate;
    if (given.soundOffset)
        rules.soundOffsetSeconds =
            given.soundOffsetSeconds(rules.timecodeRate.value_or(rateOfMostClips(videos)));
    if (given.soundDate) rules.soundDay = given.soundDay();
    if (given.days) rules.days = *given.days;
    return rules;
}

bool haveSameFirstSound(const SyncGroup& before, const SyncGroup& after) {
    if (before.audioMatches.empty() || after.audioMatches.empty())
        return before.audioMatches.empty() == after.audioMatches.empty();
    constexpr double same = 0.001;
    const AudioMatch &was = before.audioMatches.front(), &is = after.audioMatches.front();
    return was.audio->id == is.audio->id && std::abs(was.syncOffsetSeconds - is.syncOffsetSeconds) < same;
}

/// Whether the clip has, before and after, a doubt of that kind with the same message. Before, it has that
/// cure: doubts of one kind may have several.
bool isReportedAgain(const SyncDoubts& before, const UUID& was, const SyncDoubt& doubt,
                     const SyncDoubts& after, const UUID& is) {
    const auto had = before.byGroup.find(was), has = after.byGroup.find(is);
    return had != before.byGroup.end() && has != after.byGroup.end() &&
           std::ranges::any_of(had->second, [&](const SyncDoubt& one) {
               return one.kind == doubt.kind && one.cure == doubt.cure &&
                      std::ranges::any_of(has->second, [&](const SyncDoubt& other) {
                          return other.kind == one.kind && other.message == one.message;
                      });
           });
}

/// Whether a doubt of the clip names these options too, so that losing its sound is no surprise.
bool isOfferedFor(const SyncDoubts& doubts, const UUID& clip, const CureWay& way) {
    const auto own = doubts.byGroup.find(clip);
    return own != doubts.byGroup.end() && std::ranges::any_of(own->second, [&](const SyncDoubt& doubt) {
               return std::ranges::any_of(doubt.cure.parts(), [&](const DoubtCure::Part& part) {
                   const auto* other = std::get_if<CureWay>(&part);
                   return other != nullptr && *other == way;
               });
           });
}

/// Whether the clip's camera heard the recording at its place.
bool isHeard(const DoubtInput& input, const SyncGroup& group, const AudioMatch& match) {
    if (input.heardLags != nullptr)
        if (const auto lag = input.heardLags->find(match.id); lag != input.heardLags->end())
            return std::abs(lag->second.seconds) < inPlaceSeconds;
    if (input.heardClaims == nullptr) return false;
    const auto claim =
        input.heardClaims->find(SoundClaim{group.id, match.audio->id, match.syncOffsetSeconds}.key());
    return claim != input.heardClaims->end() && claim->second.offsetSeconds &&
           std::abs(*claim->second.offsetSeconds - match.syncOffsetSeconds) < inPlaceSeconds;
}
/// Whether the clip loses a recording that its camera heard at its place.
bool losesHeard(const DoubtInput& input, const SyncGroup& before, const SyncGroup& after) {
    return std::ranges::any_of(before.audioMatches, [&](const AudioMatch& match) {
        return isHeard(input, before, match) &&
               std::ranges::none_of(after.audioMatches, [&](const AudioMatch& other) {
                   return other.audio->id == match.audio->id;
               });
    });
}

/// What a way of the cure changes for the clips of its scan.
struct Outcome {
    int helped = 0; ///< clips in doubt that get other sound
    int lost = 0;   ///< other clips that lose all of their sound
};

} // namespace

bool CureTrial::helps(const CardDoubt& doubt) const {
    const CureWay* way = doubt.doubt.cure.firstWay();
    if (way == nullptr || !std::ranges::all_of(way->options, isOptionOfMatching)) return true;
    const KeptFiles kept(input_.folders, *way);
    std::vector<MediaAsset> videos, audios;
    for (const SyncGroup& group : input_.groups)
        if (kept.has(group.video)) videos.push_back(group.video);
    for (const MediaAsset& recording : input_.recordings)
        if (kept.has(recording)) audios.push_back(recording);
    const MatchRules rules = rulesWith(input_.rules, way->options, videos);
    const SyncGroupList groups = SyncEngine().match(videos, audios, rules, stop_);

    std::unordered_map<UUID, const SyncGroup*> byVideo;
    for (const SyncGroup& group : groups) byVideo[group.video.id] = &group;
    const std::unordered_set<UUID> doubted(doubt.groupIDs.begin(), doubt.groupIDs.end());
    Outcome outcome;
    // Clips in doubt with the same sound as before, and their groups after the cure.
    std::vector<std::pair<UUID, UUID>> unchanged;
    for (const SyncGroup& before : input_.groups) {
        const auto found = byVideo.find(before.video.id);
        if (found == byVideo.end() || before.isLocked) continue;
        const SyncGroup& now = *found->second;
        const bool hasSound = !now.audioMatches.empty();
        if (!way->scan && losesHeard(input_, before, now)) return false;
        if (!doubted.contains(before.id))
            outcome.lost += before.matchStatus.isSettled() && !before.audioMatches.empty() && !hasSound &&
                                    !isOfferedFor(before_, before.id, *way)
                                ? 1
                                : 0;
        else if (haveSameFirstSound(before, now))
            unchanged.emplace_back(before.id, now.id);
        else
            outcome.helped += hasSound ? 1 : 0;
    }
    if (outcome.lost > 0 && (!way->scan || outcome.helped == 0)) return false;
    if (unchanged.empty()) return true;
    DoubtInput after{groups, audios, rules, input_.trimMode, {}, input_.names};
    after.folders = input_.folders;
    after.timecodeChannel = input_.timecodeChannel;
    const SyncDoubts doubts = SyncDoubts::of(after, stop_);
    return std::ranges::none_of(unchanged, [&](const auto& ids) {
        return isReportedAgain(before_, ids.first, doubt.doubt, doubts, ids.second);
    });
}

} // namespace orvane
