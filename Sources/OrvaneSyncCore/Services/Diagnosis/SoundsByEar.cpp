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
#include "OrvaneSyncCore/Services/Diagnosis/RecordRun.h"
#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orvane {

namespace {

// With more pairs, too many would be similar by chance, and all of them must be read.
constexpr std::size_t mostPairsByEar = 200;
constexpr double mostSecondsByEar = 36000;

/// A clip that no timecode leads to its sound, and a recording that may contain that sound.
struct PairByEar {
    const Shoot::Clip* clip;
    const MediaAsset* recording;
    double attachedSeconds; ///< clip time at which the recording begins once it is attached

    SoundClaim claim() const { return claimByEar(clip->group->id, recording->id); }
};

/// Folders with a file that counts from zero or has no time. The other files there may continue its count,
/// which runs only during recording. The count may begin at another number; then the dates of the clips
/// decide.
class CountingFolders {
  public:
    explicit CountingFolders(const Shoot& shoot) {
        std::map<std::string_view, std::vector<WrittenClip>> dated;
        for (const Shoot::Clip& clip : shoot.clips) {
            const std::string_view folder = folderOf(clip.group->video);
            if (countsFromZero(clip.group->video)) folders_.insert(folder);
            if (const auto written = writtenOf(clip)) dated[folder].push_back(*written);
        }
        for (auto& [folder, clips] : dated)
            if (std::ranges::sort(clips, {}, &WrittenClip::seconds); countsWhileRunning(clips)) {
                folders_.insert(folder);
                running_.insert(folder);
            }
        // A time reference of 0 gives no start.
        for (const MediaAsset& recording : shoot.input.recordings)
            if (!shoot.recordingByID.contains(recording.id)) folders_.insert(folderOf(recording));
    }
    bool hold(const MediaAsset& file) const { return folders_.contains(folderOf(file)); }
    /// Whether the dates of the folder's clips show it: recordings at that timecode are there by chance.
    bool isShownByDates(const MediaAsset& file) const { return running_.contains(folderOf(file)); }

  private:
    std::set<std::string_view> folders_, running_;
};

bool isWithoutTime(const Shoot::Clip& clip, const CountingFolders& counting) {
    return !clip.place || counting.hold(clip.group->video);
}
bool isOpen(const Shoot::Clip& clip) {
    return !clip.isDecided && clip.group->matchStatus.kind == MatchStatus::Kind::unmatched;
}
/// Whether the clip has sound by chance, which its camera did not hear.
bool hasSoundByChance(const Shoot& shoot, const Shoot::Clip& clip, const CountingFolders& counting) {
    return !clip.isDecided && clip.primary && clip.group->matchStatus.isSettled() &&
           counting.isShownByDates(clip.group->video) &&
           !isRecordingHeard(shoot, clip, clip.group->audioMatches.front());
}
/// Clip time at which a recording begins, by timecode, once it is attached.
double attachedAt(const Shoot& shoot, const Shoot::Clip& clip, const MediaAsset& recording) {
    return SyncEngine::matchByTimecode(clip.group->video, recording, shoot.input.rules).syncOffsetSeconds;
}

/// The pairs that may belong together, and which of them are analysed.
struct PairsByEar {
    std::vector<PairByEar> heard;               ///< clip by clip
    std::size_t count = 0;                      ///< of all pairs that may belong together
    std::vector<const Shoot::Clip*> clips = {}; ///< clips that have a pair
    bool areLikeliest = false;                  ///< `heard` was limited by the order of names alone
};

bool areTooMany(const std::vector<PairByEar>& pairs) {
    double seconds = 0;
    for (const PairByEar& pair : pairs) seconds += pair.recording->durationSeconds.value_or(0);
    return pairs.size() > mostPairsByEar || seconds > mostSecondsByEar;
}

/// Whether the recording ran at about the time of the clip's date, in any time zone. The date may be that of
/// the first picture or of the last.
bool mayBeOfDate(const Shoot& shoot, const PairByEar& pair) {
    constexpr double hour = 3600, besideSeconds = 60; // an error of clocks that is not noticed
    const MediaAsset& video = pair.clip->group->video;
    const auto written = writtenSeconds(video);
    const auto placed = shoot.recordingByID.find(pair.recording->id);
    if (!written || placed == shoot.recordingByID.end()) return false;
    const double length = video.durationSeconds.value_or(0);
    const SyncEngine::TCRange& sound = shoot.recordings[placed->second].place.range;
    const double reach = length + besideSeconds + sound.durationSeconds() / 2;
    const double middle = (sound.startSeconds + sound.endSeconds) / 2;
    return std::abs(std::remainder(*written - middle, hour)) <= reach;
}

/// The places of files in the order of the names in their folder, from 0 to 1. Cameras and recorders number
/// their files in the order in which they make them.
class NameOrder {
  public:
    void add(const MediaAsset& file) { folders_[folderOf(file)].push_back(&file); }
    void finish() {
        for (const auto& [folder, files] : folders_) {
            std::vector<std::pair<std::string, const MediaAsset*>> named;
            for (const MediaAsset* file : files)
                named.emplace_back(platform::text::localizedStandardSortKey(file->filename), file);
            std::ranges::stable_sort(
                named, {}, [](const auto& one) -> const auto& { return one.first; });
            constexpr double middle = 0.5;
            for (std::size_t i = 0; i < named.size(); ++i)
                places_[named[i].second] =
                    (static_cast<double>(i) + middle) / static_cast<double>(named.size());
        }
    }
    double distance(const MediaAsset& clip, const MediaAsset& recording) const {
        return std::abs(places_.at(&clip) - places_.at(&recording));
    }

  private:
    std::map<std::string_view, std::vector<const MediaAsset*>> folders_;
    std::unordered_map<const MediaAsset*, double> places_;
};

/// Of pairs in the order of the clips, as many as may be analysed: first the likeliest one of each clip by
/// the order of names, then the second one, and so on.
std::vector<PairByEar> likeliestOf(const std::vector<PairByEar>& pairs, const NameOrder& order) {
    struct Ranked {
        std::size_t rank;
        const PairByEar* pair;
    };
    std::vector<Ranked> ranked;
    for (const PairByEar& pair : pairs) ranked.push_back({0, &pair});
    for (auto first = ranked.begin(); first != ranked.end();) {
        const auto last = std::find_if(
            first, ranked.end(), [&](const Ranked& one) { return one.pair->clip != first->pair->clip; });
        std::ranges::stable_sort(first, last, {}, [&](const Ranked& one) {
            return order.distance(one.pair->clip->group->video, *one.pair->recording);
        });
        for (std::size_t rank = 0; first != last; ++first) first->rank = rank++;
    }
    std::ranges::stable_sort(ranked, {}, &Ranked::rank);
    std::vector<PairByEar> result;
    double seconds = 0;
    for (const Ranked& one : ranked) {
        seconds += one.pair->recording->durationSeconds.value_or(0);
        if (result.size() == mostPairsByEar || seconds > mostSecondsByEar) break;
        result.push_back(*one.pair);
    }
    std::ranges::stable_sort(result, {}, &PairByEar::clip);
    return result;
}

/// For clips whose timecode is no time of day, all recordings; for the other clips, the recordings for which
/// that is true. If these pairs are too many, only those that ran at about the time of the clip's date; the
/// likeliest ones if there are none, or still too many. For clips with sound by chance, the recordings that
/// ran at about the time of their dates, unless all together are too many.
PairsByEar pairsByEar(const Shoot& shoot) {
    PairsByEar pairs;
    const CountingFolders counting(shoot);
    const std::vector<bool> isUsed = shoot.usedWholes();
    const auto isUsedRecording = [&](const MediaAsset& recording) {
        const auto placed = shoot.recordingByID.find(recording.id);
        return placed != shoot.recordingByID.end() && isUsed[shoot.wholes.firstOf[placed->second]];
    };
    const auto hasTime = [&](const MediaAsset& recording) {
        return shoot.recordingByID.contains(recording.id) &&
               (!counting.hold(recording) || isUsedRecording(recording));
    };
    NameOrder order;
    for (const MediaAsset& recording : shoot.input.recordings) order.add(recording);
    for (const Shoot::Clip& clip : shoot.clips) order.add(clip.group->video);
    order.finish();
    std::vector<PairByEar> all, ofDate, byChance;
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip& clip : shoot.clips) {
        check();
        const bool isReplaced = hasSoundByChance(shoot, clip, counting);
        if (!(isOpen(clip) || isReplaced) || !isAudible(clip)) continue;
        const bool isWithout = isWithoutTime(clip, counting);
        std::vector<PairByEar> own;
        for (const MediaAsset& recording : shoot.input.recordings) {
            const double length = recording.durationSeconds.value_or(0);
            if (recording.isAtmo() || !(length > leastClaimedSeconds) || length > furthestAttachedSeconds ||
                (!isWithout && hasTime(recording)))
                continue;
            const PairByEar pair{&clip, &recording, 0};
            const bool isOfDate = mayBeOfDate(shoot, pair);
            if (isOfDate) (isReplaced ? byChance : ofDate).push_back(pair);
            if (!isReplaced) own.push_back(pair);
        }
        if (own.empty()) continue;
        pairs.count += own.size();
        pairs.clips.push_back(&clip);
        if (own.size() > mostPairsByEar) own = likeliestOf(own, order);
        all.insert(all.end(), own.begin(), own.end());
    }
    if (pairs.count <= mostPairsByEar && !areTooMany(all)) {
        pairs.heard = std::move(all);
    } else if (!ofDate.empty() && !areTooMany(ofDate)) {
        pairs.heard = std::move(ofDate);
    } else {
        pairs.areLikeliest = true;
        pairs.heard = likeliestOf(ofDate.empty() ? all : ofDate, order);
    }
    std::vector<PairByEar> together = pairs.heard;
    together.insert(together.end(), byChance.begin(), byChance.end());
    if (!areTooMany(together)) pairs.heard = std::move(together);
    for (PairByEar& pair : pairs.heard) pair.attachedSeconds = attachedAt(shoot, *pair.clip, *pair.recording);
    return pairs;
}

/// For cameras whose timecode gives several clips no sound, although recordings that other clips may have are
/// within minutes: the clock of such a camera may have been wrong, or set in the middle of its card.
std::vector<PairByEar> pairsWithinMinutes(const Shoot& shoot) {
    constexpr double nearSeconds = 300;
    const CountingFolders counting(shoot);
    std::map<std::string_view, std::vector<const Shoot::Clip*>> cameras;
    for (const Shoot::Clip& clip : shoot.clips)
        if (isOpen(clip) && isAudible(clip) && !isWithoutTime(clip, counting))
            cameras[folderOf(clip.group->video)].push_back(&clip);
    const auto timeOfDay = [](double seconds) {
        return seconds - secondsADay * std::floor(seconds / secondsADay);
    };
    // By their time of day: there may be thousands of clips and recordings.
    std::vector<std::pair<double, const Recording*>> recordings;
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i) {
        const Recording& recording = shoot.recordings[i];
        const double length = recording.place.range.durationSeconds();
        if (shoot.wholes.isFirst(i) && length > leastClaimedSeconds && length <= furthestAttachedSeconds &&
            !counting.hold(*recording.asset))
            recordings.emplace_back(timeOfDay(recording.place.range.startSeconds), &recording);
    }
    std::ranges::sort(recordings);
    std::vector<PairByEar> pairs;
    platform::StopCheck check(shoot.stop);
    for (const auto& [folder, clips] : cameras) {
        if (std::cmp_less(clips.size(), explanation::fewest)) continue;
        for (const Shoot::Clip* clip : clips)
            for (const double days : {-secondsADay, 0.0, secondsADay}) { // across midnight
                const double start = timeOfDay(clip->place->range.startSeconds) + days;
                for (auto near = std::ranges::lower_bound(recordings, start - nearSeconds, {},
                                                          &std::pair<double, const Recording*>::first);
                     near != recordings.end() && near->first <= start + nearSeconds; ++near) {
                    check();
                    const Recording& recording = *near->second;
                    if (areOfOtherDays(*clip->place, recording.place)) continue;
                    pairs.push_back({clip, &*recording.asset, attachedAt(shoot, *clip, *recording.asset)});
                    if (areTooMany(pairs)) {
                        pairs.pop_back();
                        return pairs;
                    }
                }
            }
    }
    return pairs;
}

/// A clip and the one recording in which it was heard.
struct HeardPair {
    PairByEar pair;
    double offsetSeconds;   ///< manual offset; `placeByClocks` removes the delay of the microphone
    bool isBeside = false;  ///< other clips gave another offset for its recorder
    bool isOfClock = false; ///< several clips gave this offset for its recorder

    std::pair<std::string_view, std::optional<long>> recorder(const Shoot& shoot) const {
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

/// A clip that is too short for a search everywhere, and its place by its date, once other clips of its
/// folder showed the error of the dates.
struct ClosePair {
    PairByEar pair;
    double startSeconds; ///< clip time at which the recording begins, by the date

    SoundClaim claim() const {
        constexpr double reachSeconds = 2; // dates are in whole seconds
        return {pair.clip->group->id, pair.recording->id, startSeconds, reachSeconds, true};
    }
};

std::vector<ClosePair> closePairs(const Shoot& shoot, const std::vector<HeardPair>& heard) {
    constexpr double leastSeconds = 4; // shortest camera sound for a search near its place
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
            !(isOpen(clip) || hasSoundByChance(shoot, clip, counting)) || !mayHaveHeard(clip, leastSeconds) ||
            !isWithoutTime(clip, counting))
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

/// Each clip is measured to about ten milliseconds, and cuts between cameras would show the difference. If
/// three clips of one recorder agree, all of them get the offset of its clock. From the other offsets the
/// delay of the microphone is subtracted.
void placeByClocks(const Shoot& shoot, std::vector<HeardPair>& all) {
    std::map<std::pair<std::string_view, std::optional<long>>, std::vector<HeardPair*>> recorders;
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
    constexpr std::size_t mostByNumber = 40; // every second file of a card; the call is copied, not typed
    const auto options = LeavingOut(shoot).of(
        [&](const MediaAsset& file) {
            return file.kind == AssetKind::audio ? foundSound.contains(file.id) : !kept.contains(file.id);
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
        if (const HeardClaim* heard = heardClaim(shoot, close.claim());
            heard != nullptr && heard->offsetSeconds)
            all.push_back({close.pair, *heard->offsetSeconds - close.pair.attachedSeconds});
    placeByClocks(shoot, all);
    std::set<const Shoot::Clip*> known;
    for (const HeardPair& one : all) known.insert(one.pair.clip);
    std::vector<HeardPair> near = heardIn(shoot, pairsWithinMinutes(shoot));
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
