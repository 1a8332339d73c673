#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/HeardDates.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"
#include "OrvaneSyncCore/Services/Diagnosis/PairsByEar.h"
#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using RecorderOfDay = std::pair<std::string_view, std::optional<long>>;

/// A clip and the one recording in which it was heard.
struct HeardPair {
    PairByEar pair;
    double offsetSeconds;   ///< manual offset; `placeByClocks` removes the delay of the microphone
    bool isBeside = false;  ///< other clips gave another offset for its recorder
    bool isOfClock = false; ///< several clips gave this offset for its recorder

    RecorderOfDay recorder(const Shoot& shoot) const {
        const auto placed = shoot.recordingByID.find(pair.recording->id);
        return {shoot.recorderOf(*pair.recording), placed != shoot.recordingByID.end()
                                                       ? shoot.recordings[placed->second].place.day
                                                       : std::nullopt};
    }
};

/// The clips that were heard in exactly one recording.
std::vector<HeardPair> heardIn(const Shoot& shoot, const std::vector<PairByEar>& pairs) {
    std::vector<HeardPair> result;
    for (auto pair = pairs.begin(); pair != pairs.end();) {
        const auto next =
            std::find_if(pair, pairs.end(), [&](const PairByEar& other) { return other.clip != pair->clip; });
        std::vector<HeardPair> found;
        for (; pair != next; ++pair)
            if (const HeardClaim* heard = heardClaim(shoot, pair->claim());
                heard != nullptr && heard->offsetSeconds)
                found.push_back({*pair, *heard->offsetSeconds - pair->attachedSeconds});
        if (found.size() == 1) result.push_back(found.front()); // several may be sound that repeats
    }
    return result;
}
std::vector<HeardPair> heardAnywhere(const Shoot& shoot) { return heardIn(shoot, pairsByEar(shoot).heard); }

/// A clip, and its place as other clips of its folder show it: by its date, or by the error of their clock.
struct ClosePair {
    PairByEar pair;
    double startSeconds; ///< clip time at which the recording begins

    SoundClaim claim() const {
        return {pair.clip->group->id, pair.recording->id, startSeconds, closeReachSeconds, true};
    }
    std::optional<HeardPair> heard(const Shoot& shoot) const {
        const HeardClaim* heard = heardClaim(shoot, claim());
        if (heard == nullptr || !heard->offsetSeconds) return std::nullopt;
        return HeardPair{pair, *heard->offsetSeconds - pair.attachedSeconds};
    }
};

/// For short clips of cameras whose dates are off by one time.
std::vector<ClosePair> closePairs(const Shoot& shoot, const std::vector<HeardPair>& heard) {
    std::map<std::string_view, std::vector<HeardStart>> starts;
    std::set<const Shoot::Clip*> known;
    for (const HeardPair& one : heard) {
        known.insert(one.pair.clip);
        if (const auto start = heardStart(shoot, *one.pair.clip, one.pair.recording->id,
                                          one.offsetSeconds - microphoneDelaySeconds))
            starts[folderOf(one.pair.clip->group->video)].push_back(*start);
    }
    std::map<std::string_view, HeardDates> dates;
    for (const auto& [folder, own] : starts)
        if (const auto told = HeardDates::of(own); told.correction) dates[folder] = told;
    std::vector<ClosePair> pairs;
    if (dates.empty()) return pairs;
    const CountingFolders counting(shoot);
    const Cover sounds = datedRecordings(shoot);
    for (const Shoot::Clip& clip : shoot.clips) {
        const MediaAsset& video = clip.group->video;
        const auto own = dates.find(folderOf(video));
        const auto written = writtenSeconds(video);
        const double length = video.durationSeconds.value_or(0);
        if (own == dates.end() || !written || known.contains(&clip) ||
            !(isOpen(clip) || hasSoundByChance(shoot, clip, counting)) ||
            !mayHaveHeard(clip, leastCloseSeconds) || !isWithoutTime(clip, counting))
            continue;
        const double start = own->second.startOf(video, *written);
        const auto found = sounds.of({start, start + length});
        if (!found) continue;
        const Recording& sound = shoot.recordings[*found];
        pairs.push_back({{&clip, &*sound.asset, attachedAt(shoot, clip, *sound.asset)},
                         onLine(sound.place).startSeconds - start});
    }
    return pairs;
}

/// The offsets of a recorder's sound that single clips of a camera show, those that most clips share first.
std::vector<double> clockOffsets(std::vector<double> heard) {
    constexpr std::size_t mostClocks = 3; // the clock was set twice
    std::ranges::sort(heard);
    std::vector<std::vector<double>> parts;
    for (const double one : heard) {
        if (parts.empty() || one - parts.back().front() > 2 * agreeingByHandSeconds) parts.emplace_back();
        parts.back().push_back(one);
    }
    std::ranges::stable_sort(parts, std::ranges::greater(), [](const auto& part) { return part.size(); });
    parts.resize(std::min(parts.size(), mostClocks));
    std::vector<double> offsets;
    for (const auto& part : parts) offsets.push_back(part[part.size() / 2]);
    return offsets;
}

/// For cameras some of whose clips were heard within minutes of their timecode: the other clips, where the
/// same error of the clock puts them. Among these are clips that have other sound by chance, and short ones.
std::vector<ClosePair> pairsByClocks(const Shoot& shoot, const std::vector<HeardPair>& heard) {
    std::map<std::string_view, std::map<RecorderOfDay, std::vector<double>>> cameras;
    std::set<const Shoot::Clip*> known;
    for (const HeardPair& one : heard) {
        known.insert(one.pair.clip);
        cameras[folderOf(one.pair.clip->group->video)][one.recorder(shoot)].push_back(one.offsetSeconds);
    }
    std::vector<ClosePair> pairs;
    if (cameras.empty()) return pairs;
    const CountingFolders counting(shoot);
    const TakeFiles takes(shoot);
    std::map<std::string_view, std::vector<const Shoot::Clip*>> others;
    for (const Shoot::Clip& clip : shoot.clips) {
        const SyncGroup& group = *clip.group;
        const bool isDoubtful = group.manualAudioOffsetSeconds == 0 && hasUnheardSound(shoot, clip);
        if ((isOpen(clip) || isDoubtful) && mayHaveHeard(clip, leastCloseSeconds) &&
            !isWithoutTime(clip, counting) && !known.contains(&clip))
            others[folderOf(group.video)].push_back(&clip);
    }
    for (const auto& [camera, recorders] : cameras)
        for (const auto& [recorder, offsets] : recorders)
            for (const double offset : clockOffsets(offsets)) {
                Covers sounds(shoot.input.rules.days);
                for (std::size_t i = 0; i < shoot.recordings.size(); ++i) {
                    const Recording& recording = shoot.recordings[i];
                    FilePlace place = shoot.wholes.places[i];
                    if (!shoot.wholes.isFirst(i) || !takes.isFirst(*recording.asset) ||
                        recording.asset->isAtmo() ||
                        RecorderOfDay{shoot.recorderOf(*recording.asset), place.day} != recorder)
                        continue;
                    place.range = moved(place.range, offset);
                    sounds.add(place, i);
                }
                sounds.finish();
                for (const Shoot::Clip* clip : others[camera]) {
                    const auto found = sounds.of(clip->likelyPlace());
                    if (!found) continue;
                    const double start = likelyRange(*clip).startSeconds - offset -
                                         onLine(shoot.wholes.places[*found]).startSeconds;
                    const MediaAsset& sound = *shoot.recordings[shoot.wholes.partAt(*found, start)].asset;
                    const double attached = attachedAt(shoot, *clip, sound);
                    pairs.push_back({{clip, &sound, attached}, attached + offset});
                }
            }
    return pairs;
}

/// The clips of `pairsByClocks` that were heard there, and whose sound was not heard in its place.
std::vector<HeardPair> heardByClocks(const Shoot& shoot, const std::vector<HeardPair>& heard) {
    std::map<const Shoot::Clip*, std::vector<HeardPair>> found;
    for (const ClosePair& close : pairsByClocks(shoot, heard))
        if (const auto one = close.heard(shoot)) found[close.pair.clip].push_back(*one);
    std::vector<HeardPair> result;
    for (const auto& [clip, places] : found) {
        if (places.size() > 1) continue; // several may be sound that repeats
        if (clip->primary) {
            const HeardClaim* own = heardClaim(shoot, claimInPlace(*clip, clip->group->audioMatches.front()));
            if (own == nullptr || own->offsetSeconds) continue;
        }
        result.push_back(places.front());
    }
    return result;
}

/// Each clip is measured to about ten milliseconds, and cuts between cameras would show the difference. If
/// three clips of one recorder agree, all of them get the offset of its clock. From the other offsets the
/// delay of the microphone is subtracted.
void placeByClocks(const Shoot& shoot, std::vector<HeardPair>& all) {
    std::map<RecorderOfDay, std::vector<HeardPair*>> recorders;
    for (HeardPair& one : all)
        if (one.pair.clip->place && shoot.recordingByID.contains(one.pair.recording->id))
            recorders[one.recorder(shoot)].push_back(&one);
        else // without timecode, the offset is the delay between two starts, not that of a clock
            one.offsetSeconds -= microphoneDelaySeconds;
    const TimecodeFrameRate rate = rateOfLabels(shoot);
    for (auto& [recorder, found] : recorders) {
        std::ranges::sort(found, {}, &HeardPair::offsetSeconds);
        std::vector<HeardPair*> beside;
        for (auto first = found.begin(); first != found.end();) {
            const auto last = std::find_if(first, found.end(), [&](const HeardPair* one) {
                return one->offsetSeconds - (*first)->offsetSeconds > 2 * agreeingByHandSeconds;
            });
            std::vector<double> seconds;
            for (auto one = first; one != last; ++one) seconds.push_back((*one)->offsetSeconds);
            const auto clock = agreementOf(std::move(seconds), explanation::fewest, 0);
            for (; first != last; ++first) {
                double& own = (*first)->offsetSeconds;
                own = clock ? heardClock(clock->seconds, rate).seconds : own - microphoneDelaySeconds;
                (*first)->isOfClock = clock.has_value();
                if (!clock) beside.push_back(*first);
            }
        }
        for (HeardPair* one : beside) one->isBeside = beside.size() < found.size();
    }
}

/// Options that keep the first of these clips and the recordings in which no clip was found, as many as can
/// all be compared; empty if options do not separate them from the others.
DoubtCure scanOfTheRest(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips,
                        const std::set<UUID>& foundSound) {
    const std::size_t recordings =
        std::max<std::size_t>(shoot.input.recordings.size() - foundSound.size(), 1);
    const std::size_t most = std::max<std::size_t>(mostPairsByEar / recordings, 1);
    std::set<UUID> kept;
    for (const Shoot::Clip* clip : clips)
        if (kept.size() < most) kept.insert(clip->group->video.id);
    const TakeFiles takes(shoot);
    constexpr std::size_t mostByNumber = 40; // every second file of a card; the call is copied, not typed
    const auto options = LeavingOut(shoot).of(
        [&](const MediaAsset& file) {
            return file.kind == AssetKind::audio ? foundSound.contains(takes.firstOf(file))
                                                 : !kept.contains(file.id);
        },
        mostByNumber);
    if (!options || options->count() == 0) return {};
    return "listen again" + DoubtCure(CureWay{{}, CureScan{"some of these clips", options->options()}}) +
           ", or ";
}

} // namespace

SoundClaim claimByEar(const UUID& clip, const UUID& recording) {
    return {clip, recording, 0, furthestAttachedSeconds};
}

void addClaimsByEar(const Shoot& shoot, std::vector<SoundClaim>& toHear) {
    const auto ask = [&](const SoundClaim& claim) {
        if (heardClaim(shoot, claim) == nullptr) toHear.push_back(claim);
    };
    for (const PairByEar& pair : pairsByEar(shoot).heard) ask(pair.claim());
    for (const PairByEar& pair : pairsWithinMinutes(shoot)) ask(pair.claim());
    for (const ClosePair& close : closePairs(shoot, heardAnywhere(shoot))) ask(close.claim());
    for (const ClosePair& close : pairsByClocks(shoot, heardIn(shoot, pairsWithinMinutes(shoot)))) {
        ask(close.claim());
        if (const Shoot::Clip& clip = *close.pair.clip; clip.primary && close.heard(shoot))
            ask(claimInPlace(clip, clip.group->audioMatches.front()));
    }
}

void addPairsNotHeard(const Shoot& shoot, SyncDoubts& doubts) {
    if (shoot.input.heardClaims == nullptr) return;
    const PairsByEar pairs = pairsByEar(shoot);
    if (!pairs.areLikeliest) return;
    std::set<const Shoot::Clip*> found;
    std::set<UUID> foundSound;
    for (const HeardPair& one : heardAnywhere(shoot)) {
        found.insert(one.pair.clip);
        foundSound.insert(one.pair.recording->id);
    }
    std::vector<const Shoot::Clip*> others;
    std::ranges::copy_if(pairs.clips, std::back_inserter(others),
                         [&](const Shoot::Clip* clip) { return !found.contains(clip); });
    if (others.empty()) return;
    constexpr double secondsAnHour = 3600;
    const std::string message =
        counted(pairs.count, "pair", "pairs") +
        " of clips and recordings that no timecode brings together are more than a run listens to (" +
        std::to_string(mostPairsByEar) + " pairs and " +
        platform::text::formatted("%.0f", mostSecondsByEar / secondsAnHour) + " hours of recordings): the " +
        std::to_string(pairs.heard.size()) +
        " likeliest by dates and the order of names were compared, and the sound of " +
        counted(others.size(), "clip", "clips") + " was found in none of them";
    addCardDoubt(doubts,
                 {SyncDoubt::Kind::noTimecode, message,
                  scanOfTheRest(shoot, others, foundSound) + "attach their recordings by hand"},
                 others);
}

void addSoundsByEar(const Shoot& shoot, SyncDoubts& doubts) {
    if (shoot.input.heardClaims == nullptr) return;
    std::vector<HeardPair> all = heardAnywhere(shoot);
    for (const ClosePair& close : closePairs(shoot, all))
        if (const auto heard = close.heard(shoot)) all.push_back(*heard);
    placeByClocks(shoot, all);
    std::set<const Shoot::Clip*> known;
    for (const HeardPair& one : all) known.insert(one.pair.clip);
    std::vector<HeardPair> near = heardIn(shoot, pairsWithinMinutes(shoot));
    std::ranges::copy(heardByClocks(shoot, near), std::back_inserter(near));
    placeByClocks(shoot, near);
    for (const HeardPair& one : near)
        if (one.isOfClock && !known.contains(one.pair.clip) &&
            !doubts.has(one.pair.clip->group->id,
                        {SyncDoubt::Kind::constantOffset, SyncDoubt::Kind::timecodeRate}))
            all.push_back(one);
    for (const auto& [pair, offset, isBeside, isOfClock] : all) {
        const MediaAsset& video = pair.clip->group->video;
        const std::string text = shoot.nameOf(*pair.recording) + " in " + shoot.nameOf(video) +
                                 " with an offset of " + framesText(offset, video) +
                                 (isBeside ? ", unlike other clips with sound of that recorder" : "");
        auto& told = doubts.byGroup[pair.clip->group->id];
        // What the clip's own camera heard is more exact.
        for (SyncDoubt& doubt : told) doubt.suggestion.reset();
        const bool isOwn = std::ranges::any_of(pair.clip->group->audioMatches, [&](const AudioMatch& match) {
            return match.audio->id == pair.recording->id;
        });
        told.push_back(
            {.kind = SyncDoubt::Kind::noTimecode,
             .message = "what no timecode brings together, the microphones of the cameras heard: " + text,
             .cure = cureWords::asHeard("attach them by hand", "'choice' and 'offset_frames'"),
             .own = text,
             .suggestion = SyncDoubt::Suggestion{pair.recording->id, offset, isOwn}});
    }
}

} // namespace orvane
