#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/LateStartsAndEarlyStops.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Services/Diagnosis/SuspectedCards.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

constexpr std::size_t mostOtherDays = 8; // of the recordings that are tried for a card, the nearest

/// Clips of a card, and the recordings that may belong to them.
struct CameraTrial {
    const Card& card;
    std::vector<const Shoot::Clip*> clips = {};   ///< not covered by their sound
    std::vector<const Shoot::Clip*> covered = {}; ///< the card's other clips, with the same clock
    bool isPart = false;                          ///< for other clips of the card the clock is right
    std::optional<long> soundDay = {};            ///< of the recordings that are tried on the card's day
    std::vector<std::size_t> files = {};          ///< one of each recording
    std::vector<FilePlace> sounds = {};           ///< the places of `files`
};

class CameraClocks {
  public:
    CameraClocks(const Shoot& shoot, const TimedClips& clips, const SuspectedCards& suspected,
                 SyncDoubts& doubts, std::vector<SoundClaim>* toHear)
        : shoot_(shoot), evidence_(clips.evidence), suspected_(suspected), doubts_(doubts), toHear_(toHear),
          rate_(rateOfLabels(shoot)), cure_(shoot, rate_) {}

    void add() {
        for (const Card& card : camerasCards(shoot_)) {
            platform::throwIfStopped(shoot_.stop);
            offsetOf(card);
        }
    }

  private:
    void offsetOf(const Card& card) {
        CameraTrial whole{card};
        for (const std::size_t file : card.files) {
            const Shoot::Clip& clip = shoot_.clips[file];
            if (!std::ranges::binary_search(evidence_, &clip)) continue; // both in the order of the clips
            if (doubts_.has(clip.group->id, {Kind::constantOffset})) return;
            (clip.isCovered ? whole.covered : whole.clips).push_back(&clip);
        }
        if (std::cmp_less(whole.clips.size(), explanation::fewest)) return;
        CameraTrial part = partOf(whole);
        if (offsetOn(whole, chance::smallest) || offsetOn(part, chance::smallest) || !card.day) return;
        // The date of the camera may be wrong as well: tries other days, but none with clips of its folder.
        std::vector<long> days;
        std::ranges::copy_if(suspected_.usedDays, std::back_inserter(days),
                             [&](long day) { return !card.isOf(day) && !isFilmedIn(card.folder, day); });
        std::ranges::stable_sort(days, {}, [&](long day) { return std::abs(day - *card.day); });
        days.resize(std::min(days.size(), mostOtherDays));
        for (const long day : days) {
            whole.soundDay = day;
            if (offsetOn(whole, chance::smallest * chance::smallest / static_cast<double>(days.size())))
                return;
        }
    }
    /// The clips without any sound, if those that have sound are all before or all after them by their names:
    /// a clock may also be set back.
    static CameraTrial partOf(const CameraTrial& whole) {
        CameraTrial part{.card = whole.card, .isPart = true};
        if (std::cmp_less(whole.covered.size(), explanation::fewest)) return part;
        std::ranges::copy_if(whole.clips, std::back_inserter(part.clips),
                             [](const Shoot::Clip* clip) { return clip->group->audioMatches.empty(); });
        if (std::ranges::any_of(whole.covered, [&](const Shoot::Clip* clip) {
                return !part.clips.empty() && clip > part.clips.front() && clip < part.clips.back();
            }))
            part.clips.clear();
        return part;
    }
    bool isFilmedIn(const std::string& folder, long day) const {
        return std::ranges::any_of(evidence_, [&](const Shoot::Clip* clip) {
            return clip->likelyDay() == day && folderOf(clip->group->video) == folder;
        });
    }
    void findSounds(CameraTrial& trial) const {
        // For a part, only recordings that cover clips of other cameras and are under none of this card's: no
        // camera filmed a take twice.
        std::vector<bool> isTried(shoot_.recordings.size(), !trial.isPart);
        if (trial.isPart) {
            for (const Shoot::Clip* clip : evidence_)
                if (clip->isCovered && clip->primary) isTried[shoot_.wholes.firstOf[*clip->primary]] = true;
            for (const std::size_t file : trial.card.files)
                if (const auto& own = shoot_.clips[file].primary)
                    isTried[shoot_.wholes.firstOf[*own]] = false;
        }
        trial.files.clear();
        trial.sounds.clear();
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (!suspected_.isSuspected[i] && isTried[shoot_.wholes.firstOf[i]] &&
                (!trial.soundDay || shoot_.recordings[i].place.day == trial.soundDay))
                trial.files.push_back(i);
        trial.files = shoot_.wholes.oneOfEach(trial.files);
        for (const std::size_t file : trial.files) {
            trial.sounds.push_back(shoot_.wholes.places[file]);
            if (trial.soundDay) trial.sounds.back().day = trial.card.day;
        }
    }
    /// Returns whether there is a doubt.
    bool offsetOn(CameraTrial& trial, double mostChance) {
        if (std::cmp_less(trial.clips.size(), explanation::fewest)) return false;
        findSounds(trial);
        const auto common = commonOffset(
            trial.clips, trial.sounds,
            [](double, const std::vector<const Shoot::Clip*>& looked) { return looked.size(); }, mostChance,
            rate_);
        // An offset of more than a day is first of all a wrong date; an offset of zero, only a wrong date.
        return common && std::abs(common->seconds) < secondsADay &&
               std::abs(common->seconds) > coverSlackSeconds && addOffset(trial, *common);
    }
    /// Whether the recording is the sound of other clips that are nearer to it, those of its own unit.
    bool isOfOtherUnit(const Shoot::Clip& clip, std::size_t whole) const {
        const MediaAsset& sound = *shoot_.recordings[whole].asset;
        const auto own = UnitNearness::of(clip.group->video, sound);
        return std::ranges::any_of(evidence_, [&](const Shoot::Clip* other) {
            return other->isCovered && other->primary && shoot_.wholes.firstOf[*other->primary] == whole &&
                   UnitNearness::of(other->group->video, sound) > own;
        });
    }
    bool addOffset(const CameraTrial& trial, const CommonOffset& common) {
        std::set<std::size_t> used;
        std::vector<const Shoot::Clip*> found;
        std::vector<SyncDoubt::Suggestion> suggested; // of these
        LateStartsAndEarlyStops rolling;
        ClaimedOffset claimed(shoot_, common.widthSeconds / 2);
        std::size_t ofOtherUnits = 0;
        for (const Shoot::Clip* clip : trial.clips) {
            const auto sound = std::ranges::find_if(trial.sounds, [&](const FilePlace& place) {
                const auto window = windowOf(*clip, place, 0);
                return window && window->first <= common.seconds && common.seconds <= window->last;
            });
            if (sound == trial.sounds.end()) continue;
            found.push_back(clip);
            const std::size_t file = trial.files[static_cast<std::size_t>(sound - trial.sounds.begin())];
            const double apart = secondsApart(*clip, *sound).value_or(0), into = apart - common.seconds;
            if (!trial.soundDay)
                rolling.add({apart, apart + clip->place->range.durationSeconds()},
                            {0, sound->range.durationSeconds()});
            const std::size_t part = shoot_.wholes.partAt(file, into);
            used.insert(part);
            const double positioned = shoot_.wholes.startsAt[part] - into;
            claimed.add(*clip, part, positioned);
            const MediaAsset& recording = *shoot_.recordings[part].asset;
            suggested.push_back(
                {recording.id,
                 positioned - SyncEngine::matchByTimecode(clip->group->video, recording, shoot_.input.rules)
                                  .syncOffsetSeconds});
            if (isOfOtherUnit(*clip, shoot_.wholes.firstOf[file])) ++ofOtherUnits;
        }
        const auto matched = static_cast<double>(found.size());
        const bool isGuess = common.isGuess(rate_);
        if (std::cmp_less(used.size(), explanation::fewest) ||
            matched <= explanation::clearly * static_cast<double>(trial.covered.size()) ||
            (isGuess && static_cast<double>(ofOtherUnits) >= explanation::majority * matched))
            return false;
        auto heard = common.heardClips == 0 ? claimed.heard(toHear_)
                                            : ClaimedOffset::Heard{.clips = common.heardClips};
        if (heard.isRefuted && (isGuess || trial.isPart)) return false;
        if (heard.correctionSeconds && addOffset(trial, heard.corrected(common.seconds, rate_))) return true;
        heard.refuseCorrection();
        if (!heard.areSeveral() && rolling.explain(common)) return false;
        if (heard.drift)
            for (std::size_t i = 0; i < found.size(); ++i)
                suggested[i].offsetSeconds +=
                    heard.drift->offsetAt(likelyRange(*found[i]).startSeconds) - microphoneDelaySeconds;
        tell(trial, common, heard, found, suggested);
        return true;
    }
    void tell(const CameraTrial& trial, const CommonOffset& common, const ClaimedOffset::Heard& heard,
              std::vector<const Shoot::Clip*> found, const std::vector<SyncDoubt::Suggestion>& suggested) {
        const Card& card = trial.card;
        const auto nameOf = [&](const Shoot::Clip* clip) { return shoot_.nameOf(clip->group->video); };
        std::string text =
            "the clips in '" + card.folder + "' " +
            (trial.isPart ? "from " + nameOf(trial.clips.front()) + " to " + nameOf(trial.clips.back()) + " "
                          : "") +
            "are ";
        if (trial.soundDay)
            text += "dated " + dayText(*card.day) + " instead of " + dayText(*trial.soundDay) + " and ";
        text += offsetSpanText(std::abs(common.seconds), rate_) + (common.seconds > 0 ? " late" : " early") +
                " against recordings that fit other clips: with these moved by that, " +
                std::to_string(found.size()) + " of " + counted(trial.clips.size(), "clip", "clips") +
                " without all of their sound would match";
        if (heard.isConfirmed())
            text += "; the microphones of the cameras heard their sound there in " +
                    counted(heard.clips, "clip", "clips");
        const Card scan{card.folder,
                        trial.soundDay ? card.day : std::nullopt,
                        {},
                        trial.soundDay ? *card.day - *trial.soundDay : 0};
        auto alone = trial.isPart ? cure_.scanOfClipsBetween(*trial.clips.front(), *trial.clips.back())
                                  : cure_.scanOfClips(scan);
        // If the card has other clips too, a table corrects these and keeps all clips in one document.
        const bool isDrift = heard.drift && trial.covered.empty();
        const bool isTable =
            isDrift || (alone && heard.isConfirmed() && !trial.soundDay && trial.covered.empty());
        const CommonOffset known = heard.known(common, shoot_);
        DoubtCure cure =
            cure_.of(scan, common.seconds).in(std::move(alone)) +
            (trial.soundDay ? " if a clap shows it, else look for the sound of " + dayText(*card.day) : "") +
            known.clapAfter(rate_);
        if (heard.isUnasked && common.isOdd())
            cure = cureWords::listenFirst();
        else if (heard.spreadSeconds > 0)
            cure = cureWords::byNoOneOffset(spanText(heard.spreadSeconds));
        if (isDrift) {
            text += runApartText(*heard.drift);
            cure = cureWords::attachEachAsHeard();
        } else if (isTable)
            cure = cureWords::asHeard("attach their recordings and move them by that",
                                      "'choice' and 'offset_frames'") +
                   known.clapAfter(rate_);
        const std::vector<const Shoot::Clip*> own = found;
        std::ranges::copy_if(trial.covered, std::back_inserter(found),
                             [](const Shoot::Clip* clip) { return !clip->isDecided; });
        std::ranges::sort(found); // in the order of the clips
        addCardDoubt(doubts_,
                     {Kind::constantOffset, text + (isDrift ? "" : known.knownTo(rate_)), std::move(cure)},
                     found);
        for (std::size_t i = 0; isTable && i < own.size(); ++i)
            doubts_.byGroup[own[i]->group->id].back().suggestion = suggested[i];
    }

    const Shoot& shoot_;
    const std::vector<const Shoot::Clip*>& evidence_;
    const SuspectedCards& suspected_;
    SyncDoubts& doubts_;
    std::vector<SoundClaim>* toHear_;
    const TimecodeFrameRate rate_;
    const OffsetCure cure_;
};

} // namespace

void addCameraClockDoubts(const Shoot& shoot, const TimedClips& clips, const SuspectedCards& suspected,
                          SyncDoubts& doubts, std::vector<SoundClaim>* toHear) {
    CameraClocks(shoot, clips, suspected, doubts, toHear).add();
}

} // namespace orvane
