#include "OrvaneSyncCore/Services/Diagnosis/CardTimes.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/LateStartsAndEarlyStops.h"
#include "OrvaneSyncCore/Services/Diagnosis/MixedDays.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Services/Diagnosis/SuspectedCards.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using TCRange = SyncEngine::TCRange;

constexpr std::size_t mostDays = 8; // other days that are tried for a card, the nearest

/// The clocks of recorders.
class ClockDoubts {
  public:
    ClockDoubts(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts,
                std::vector<SoundClaim>* toHear)
        : shoot_(shoot), doubts_(doubts), toHear_(toHear), rate_(rateOfLabels(shoot)), cure_(shoot, rate_),
          clips_(clips.all), uncovered_(clips.uncovered), evidence_(clips.evidence), suspected_(shoot, clips),
          isDateGivenToSeveralShoots_(givesDateToSeveralShoots(shoot)) {}

    const SuspectedCards& suspected() const { return suspected_; }
    /// `areParts`: only parts of cards, else only whole cards.
    void add(bool areParts) {
        for (const SuspectedCard& one : suspected_.cards)
            if (one.isPart == areParts) offsetOf(one);
    }

  private:
    /// Uses the clips that lack sound. Recordings that lie under no clip may be those of a second recorder,
    /// and of any day.
    void offsetOf(const SuspectedCard& one) {
        platform::throwIfStopped(shoot_.stop);
        if (one.fitsFewClips && !one.isPart && isDateAloneWrong(one.card)) return;
        if (offsetAmong(one, one.card, false)) return;
        if (!one.isPart && (!one.fitsFewClips || isDateGivenToSeveralShoots_)) return;
        if (!offsetAmong(one, one.card, true)) dateAndOffsetOf(one);
    }
    void dateAndOffsetOf(const SuspectedCard& one) {
        // Recordings with the given date of another shoot are at meaningless places.
        if (isDateGivenToSeveralShoots_ || !one.card.day) return;
        const auto isOutOfReach = [&](const Shoot::Clip& clip) {
            return !CardTimes(shoot_, one.card).mayOverlap(clip);
        };
        // If only the date is wrong, there is no error in hours to report.
        if (std::ranges::any_of(onOtherDays(one.card, clips_, isOutOfReach),
                                [&](const Card& card) { return fitsAsItIs(card); }))
            return;
        for (const bool isForAll : {false, true}) {
            // Other recordings of a part's card are right, so only the clock of a camera that began again
            // may separate the part from clips without sound.
            if (isForAll && one.isPart) return;
            const std::vector<Card> tried =
                onOtherDays(one.card, isForAll ? clips_ : uncovered_, isOutOfReach);
            for (const Card& card : tried) {
                if (one.isPart && !isCameraReset(*card.day)) continue;
                // A clock with a wrong date and wrong hours is rare, except one that started again from its
                // first date.
                const double rarer =
                    isRecorderReset(*one.card.day) || isCameraReset(*card.day) ? 1 : chance::smallest;
                if (offsetAmong(one, card, isForAll,
                                chance::smallest * rarer / static_cast<double>(tried.size())))
                    return;
            }
        }
    }
    /// The first of January, with which clocks begin that lost their date; weeks from every other file.
    template <class Files, class DayOf>
    static bool isDateOfAReset(long day, const Files& others, const DayOf& dayOf) {
        const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
        return date.month() == std::chrono::January && date.day() == std::chrono::day(1) &&
               std::ranges::none_of(others, [&](const auto& other) {
                   const std::optional<long> made = dayOf(other);
                   return made && std::abs(*made - day) < daysOfALostDate;
               });
    }
    bool isRecorderReset(long day) const {
        return isDateOfAReset(day, evidence_, [](const Shoot::Clip* clip) { return clip->likelyDay(); });
    }
    bool isCameraReset(long day) const {
        return isDateOfAReset(day, shoot_.recordings,
                              [](const Recording& recording) { return recording.place.day; });
    }
    /// Whether the card, at its own hours, lies under clips of another day that lack sound. Takes in a
    /// regular rhythm also lie under those of other days at about their hours; moving them there would mix
    /// the days.
    bool isDateAloneWrong(const Card& card) const {
        if (!card.day) return false;
        const auto isOfOther = [&](const Shoot::Clip& clip) { return !card.isOf(*clip.likelyDay()); };
        return std::ranges::any_of(onOtherDays(card, uncovered_, isOfOther), [&](const Card& other) {
            const CardTimes times(shoot_, other);
            const Cover sound = times.coverAt(0);
            const auto wholes = shoot_.wholes.oneOfEach(other.files);
            std::set<std::size_t> used;
            int clips = 0, fitting = 0;
            const TCRange hours = times.hoursAt(0);
            for (const Shoot::Clip* clip : uncovered_) {
                if (clip->likelyDay() != other.day || !times.isWithin(hours, *clip)) continue;
                ++clips;
                if (const auto found = times.covered(sound, *clip)) {
                    ++fitting;
                    used.insert(found->whole);
                }
            }
            return std::cmp_greater_equal(used.size(), explanation::fewest) &&
                   static_cast<double>(used.size()) >=
                       explanation::majority * static_cast<double>(wholes.size()) &&
                   chance::atLeast(fitting, clips, sound.shareOf(hours.startSeconds, hours.endSeconds)) <=
                       chance::smallest;
        });
    }
    /// The card on the days of the clips, the nearest days first.
    template <class MayBeOf>
    std::vector<Card> onOtherDays(const Card& card, const std::vector<const Shoot::Clip*>& clips,
                                  const MayBeOf& mayBeOf) const {
        std::set<std::pair<long, long>> days; // distance and day, the nearest first
        for (const Shoot::Clip* clip : clips)
            if (const auto day = clip->likelyDay(); day && mayBeOf(*clip))
                days.emplace(std::abs(*day - *card.day), *day);
        std::vector<Card> tried;
        for (const auto& [distance, day] : days) {
            if (tried.size() == mostDays) break;
            tried.push_back(card);
            tried.back().movedByDays = day - *card.day;
            tried.back().day = day;
        }
        return tried;
    }
    bool fitsAsItIs(const Card& card) const {
        const CardTimes times(shoot_, card);
        const Cover sound = times.coverAt(0);
        const auto wholes = shoot_.wholes.oneOfEach(card.files);
        std::set<std::size_t> used;
        for (const Shoot::Clip* clip : evidence_)
            if (const auto found = times.mayOverlap(*clip) ? times.covered(sound, *clip) : std::nullopt)
                used.insert(found->whole);
        return static_cast<double>(used.size()) >= explanation::majority * static_cast<double>(wholes.size());
    }
    /// Recordings that lie under no clip were not heard, whatever was heard of the rest of the card.
    bool isHeardInPlace(const SuspectedCard& one, const Card& card) const {
        return !one.isPart && areHeardInPlace(shoot_, [&](const MediaAsset& recording) {
            return isOn(card, shoot_, recording);
        });
    }

    /// For all clips: whether the clip has no sound of the recorder itself, which cannot have made two
    /// recordings at once.
    bool isSought(const SuspectedCard& one, const Shoot::Clip& clip, bool isForAll) const {
        if (!isForAll || !one.isPart) return isForAll || !clip.isCovered;
        return std::ranges::none_of(clip.group->audioMatches, [&](const AudioMatch& match) {
            return isOn(one.card, shoot_, *match.audio);
        });
    }
    /// Whether clips that need the card's sound were moved by that offset one by one. The other clips have
    /// sound of their own, which the offset would take from them.
    bool isMovedByHand(const SuspectedCard& one, const CommonOffset& common) const {
        const double reach =
            std::max({leastByHandSeconds, common.widthSeconds / 2, common.unheardHourSeconds / 2});
        return std::ranges::count_if(shoot_.clips, [&](const Shoot::Clip& clip) {
                   return clip.primary && clip.group->manualAudioOffsetSeconds != 0 &&
                          std::abs(clip.group->manualAudioOffsetSeconds - common.seconds) <= reach &&
                          isOn(one.card, shoot_, *clip.group->primaryAudio());
               }) >= explanation::fewest;
    }
    /// `isForAll`: for all clips, not only for those that lack sound. Returns whether there is a doubt.
    bool offsetAmong(const SuspectedCard& one, const Card& card, bool isForAll,
                     double mostChance = chance::smallest) {
        const CardTimes times(shoot_, card);
        std::vector<const Shoot::Clip*> clips;
        for (const Shoot::Clip* clip : isForAll ? clips_ : uncovered_)
            if (times.mayOverlap(*clip) && isSought(one, *clip, isForAll) &&
                !(one.isPart && doubts_.has(clip->group->id, {Kind::constantOffset})))
                clips.push_back(clip);
        if (std::cmp_less(clips.size(), explanation::fewest) || isHeardInPlace(one, card)) return false;
        std::vector<FilePlace> sounds;
        for (const std::size_t file : shoot_.wholes.oneOfEach(card.files))
            sounds.push_back(times.placeOf(file));
        const auto common = commonOffset(
            clips, sounds,
            [&](double offset, const std::vector<const Shoot::Clip*>& looked) {
                const TCRange hours = times.hoursAt(offset);
                return std::ranges::count_if(
                    looked, [&](const Shoot::Clip* clip) { return times.isWithin(hours, *clip); });
            },
            mostChance, rate_);
        if (!common || (card.movedByDays != 0 && std::abs(common->seconds) >= secondsADay) ||
            (isForAll && isMovedByHand(one, *common)))
            return false;
        return addOffset(one, card, *common, isForAll);
    }

    /// Sound that is recorded after each take by habit follows all takes by about the same time. The cure has
    /// no options: they would put such sound under clips that are right.
    static DoubtCure notToBeMoved() {
        const std::string unless =
            "only where one clap in both shows it; room tone and wild tracks that were "
            "made after the takes are right where they are";
        return DoubtCure::Words{"give this as --sound-offset " + unless, "move them " + unless};
    }

    bool addOffset(const SuspectedCard& one, const Card& card, const CommonOffset& common, bool isForAll) {
        const double offset = common.seconds;
        const CardTimes times(shoot_, card);
        const Cover inPlace = times.coverAt(0), shifted = times.coverAt(offset);
        const TCRange hours = times.hoursAt(offset);
        int now = 0, all = 0, matched = 0;
        double withoutSound = 0;
        std::set<std::size_t> used, usedNow, parts;
        std::vector<const Shoot::Clip*> doubted; // includes those that have sound of the card by chance
        ClaimedOffset claimed(shoot_, common.widthSeconds / 2);
        LateStartsAndEarlyStops rolling;
        std::vector<std::pair<const Shoot::Clip*, SyncDoubt::Suggestion>>
            suggested; // only clips without other sound
        for (const Shoot::Clip* clip : clips_) {
            const bool mayMatch = times.mayOverlap(*clip), isLooked = isSought(one, *clip, isForAll);
            if (const auto sound = mayMatch ? times.covered(inPlace, *clip) : std::nullopt) {
                now += one.isPart ? 0 : 1; // if such recordings lie here, others are heard
                usedNow.insert(sound->whole);
            }
            if (mayMatch && isLooked && times.isWithin(hours, *clip)) ++withoutSound;
            const auto sound = mayMatch ? times.covered(shifted, *clip) : std::nullopt;
            if (sound) ++all;
            if (sound && isLooked) {
                ++matched;
                used.insert(sound->whole);
                const double start =
                    times.range(sound->whole).startSeconds + offset - sound->clip.startSeconds;
                const std::size_t part = shoot_.wholes.partAt(sound->whole, -start);
                parts.insert(part);
                const double positioned = start + shoot_.wholes.startsAt[part];
                claimed.add(*clip, part, positioned);
                if (std::ranges::all_of(clip->group->audioMatches, [&](const AudioMatch& match) {
                        return isOn(one.card, shoot_, *match.audio);
                    }))
                    suggested.emplace_back(clip, suggestionOf(*clip, part, positioned));
                if (card.movedByDays == 0) rolling.add(sound->clip, times.range(sound->whole));
                doubted.push_back(clip);
            } else if (!one.isPart && clip->primary &&
                       (isOn(card, shoot_, *shoot_.recordings[*clip->primary].asset) ||
                        (sound && hidesSoundOf(*clip, sound->whole)))) {
                doubted.push_back(clip);
            }
        }
        for (const auto& [clip, sound] : ofOtherHeaders(one, card, offset)) {
            const double start = times.range(sound.whole).startSeconds + offset - sound.clip.startSeconds;
            const std::size_t part = shoot_.wholes.partAt(sound.whole, -start);
            suggested.emplace_back(clip, suggestionOf(*clip, part, start + shoot_.wholes.startsAt[part]));
            doubted.push_back(clip);
        }
        std::ranges::sort(doubted); // in the order of the clips
        // A locked clip is not in doubt, but it is evidence for the clock.
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (!clip.isDecided || !clip.place || clip.group->isExcludedFromExport || !times.mayOverlap(clip))
                continue;
            if (!one.isPart && times.covered(inPlace, clip)) ++now;
            if (times.covered(shifted, clip)) ++all;
        }
        if (std::cmp_less(parts.size(), explanation::fewest) || all <= explanation::clearly * now ||
            matched < explanation::majority * withoutSound)
            return false;
        const auto recordings = static_cast<long long>(shoot_.wholes.oneOfEach(card.files).size());
        if (isForAll &&
            static_cast<double>(used.size()) < explanation::majority * static_cast<double>(recordings))
            return false;
        auto heard = common.heardClips == 0 ? claimed.heard(toHear_)
                                            : ClaimedOffset::Heard{.clips = common.heardClips};
        // Room tone and wild tracks follow takes by about the same time, and microphones find them under none
        // of the clips.
        if (heard.isRefuted && (claimed.isSoundOfClipsInPlace() || (!isForAll && common.isGuess(rate_))))
            return false;
        if (heard.correctionSeconds && addOffset(one, card, heard.corrected(offset, rate_), isForAll))
            return true;
        heard.refuseCorrection();
        const auto isOfCard = [&](const MediaAsset& recording) { return isOn(card, shoot_, recording); };
        if (!heard.areSeveral() && rolling.explain(common) && !areHeardOutOfPlace(shoot_, isOfCard))
            return false;
        const int lost = lostBy(one, card, offset);
        std::string text = one.name(shoot_) + " are ";
        if (card.movedByDays != 0) {
            const std::string dated = "dated " + dayText(*card.day - card.movedByDays);
            text += isCameraReset(*card.day) ? dated + " and the clips " + dayText(*card.day) +
                                                   ", as if the camera's clock began again, and are "
                                             : dated + " instead of " + dayText(*card.day) + " and ";
        }
        text += offsetSpanText(std::abs(offset), rate_) + (offset < 0 ? " late" : " early") +
                " against the clips: moved by that, ";
        if (isForAll)
            text += std::to_string(used.size()) + " of " + counted(recordings, "recording", "recordings") +
                    " would lie under clips, and " + std::to_string(usedNow.size()) + " as they are";
        else
            text += std::to_string(matched) + " of " +
                    counted(static_cast<long long>(withoutSound), "clip", "clips") +
                    " without all of their sound would match";
        if (lost > 0) text += ", and " + counted(lost, "clip", "clips") + " would lose other sound";
        if (heard.isConfirmed())
            text += "; the microphones of the cameras heard their sound there in " +
                    counted(heard.clips, "clip", "clips");
        const CommonOffset known = heard.known(common, shoot_);
        DoubtCure cure =
            cure_.of(card, offset)
                .in(lost > 0 ? cure_.scanOfRecordings(card, one.isPart, camerasFor(card, doubted))
                             : std::nullopt) +
            known.clapAfter(rate_) +
            (lost == 0                 ? ""
             : isForAll || !one.isPart ? cure_.forOtherSound(one.card)
                                       : OffsetCure::forOtherRecordings());
        const bool mayBeRoomTone = isForAll && common.isGuess(rate_);
        if (mayBeRoomTone && heard.isRefuted)
            text += "; the microphones of the cameras heard nothing of them there";
        const bool isDrift = heard.drift && !suggested.empty();
        if (isDrift) {
            text += runApartText(*heard.drift);
            cure = cureWords::attachEachAsHeard();
            for (auto& [clip, suggestion] : suggested)
                suggestion.offsetSeconds +=
                    heard.drift->offsetAt(likelyRange(*clip).startSeconds) - microphoneDelaySeconds;
        } else if (heard.isUnasked && common.isOdd())
            cure = cureWords::listenFirst();
        else if (heard.spreadSeconds > 0)
            cure = cureWords::byNoOneOffset(spanText(heard.spreadSeconds));
        else if (mayBeRoomTone && (heard.isRefuted || (lost > 0 && !heard.isConfirmed())))
            cure = notToBeMoved();
        // If there is other sound as well, a table keeps all clips in one document.
        const bool isTable = heard.isConfirmed() && lost > 0 && !isForAll && !suggested.empty();
        if (isTable)
            cure = std::move(cure) + "; in one document, " +
                   cureWords::asHeard("attach the recordings and move them by that",
                                      "'choice' and 'offset_frames'");
        for (const std::size_t file : card.files)
            doubts_.recordings.insert(shoot_.recordings[file].asset->id);
        SyncDoubt doubt{Kind::constantOffset, text + (isDrift ? "" : known.knownTo(rate_)), std::move(cure)};
        if (joinEqualDoubt(doubts_, doubt, doubted, one.name(shoot_))) return true;
        addCardDoubt(doubts_, std::move(doubt), doubted);
        if (isTable || isDrift)
            for (const auto& [clip, suggestion] : suggested)
                doubts_.byGroup[clip->group->id].back().suggestion = suggestion;
        return true;
    }
    /// Whether the clip's sound is another unit's and of another day, and the recording is of its own unit.
    bool hidesSoundOf(const Shoot::Clip& clip, std::size_t recording) const {
        const auto recorded = shoot_.recordings[*clip.primary].place.day, filmed = clip.likelyDay();
        return recorded && filmed && *recorded != *filmed &&
               UnitNearness::of(clip.group->video, *shoot_.recordings[recording].asset) >
                   UnitNearness::of(clip.group->video, *shoot_.recordings[*clip.primary].asset);
    }
    /// Clips without sound whose header has another day than the card, and which fit it by the time of day.
    /// Only if most of those of their folder do.
    std::vector<std::pair<const Shoot::Clip*, CardTimes::Covered>>
    ofOtherHeaders(const SuspectedCard& one, const Card& card, double offset) const {
        std::vector<std::pair<const Shoot::Clip*, CardTimes::Covered>> found;
        if (one.isPart || !card.day || card.movedByDays != 0) return found;
        const CardTimes times(shoot_, card);
        const Cover sound = times.coverAt(offset);
        std::map<std::string_view, std::vector<const Shoot::Clip*>> folders;
        for (const Shoot::Clip* clip : uncovered_)
            if (clip->group->isMOS() && !clip->place->day && clip->likelyDay() &&
                !card.isOf(*clip->likelyDay()) && !times.covered(sound, *clip))
                folders[folderOf(clip->group->video)].push_back(clip);
        for (const auto& [folder, clips] : folders) {
            const std::size_t before = found.size();
            for (const Shoot::Clip* clip : clips)
                if (const auto covered = times.coveredByHours(sound, *clip))
                    found.emplace_back(clip, *covered);
            const std::size_t fitting = found.size() - before;
            if (std::cmp_less(fitting, explanation::fewest) ||
                static_cast<double>(fitting) < explanation::majority * static_cast<double>(clips.size()))
                found.erase(found.begin() + static_cast<std::ptrdiff_t>(before), found.end());
        }
        return found;
    }
    /// `attachedSeconds`: clip time at which the recording begins with the corrected clock.
    SyncDoubt::Suggestion suggestionOf(const Shoot::Clip& clip, std::size_t recording,
                                       double attachedSeconds) const {
        const MediaAsset& sound = *shoot_.recordings[recording].asset;
        const auto positioned = SyncEngine::matchByTimecode(clip.group->video, sound, shoot_.input.rules);
        return {sound.id, attachedSeconds - positioned.syncOffsetSeconds};
    }
    /// The cameras of the card's unit, if the clips in doubt are theirs; empty for all.
    std::set<std::string_view> camerasFor(const Card& card,
                                          const std::vector<const Shoot::Clip*>& doubted) const {
        auto cameras = cure_.camerasOfUnit(card);
        const auto count = std::ranges::count_if(
            doubted, [&](const Shoot::Clip* clip) { return cameras.contains(folderOf(clip->group->video)); });
        if (static_cast<double>(count) < explanation::majority * static_cast<double>(doubted.size()))
            cameras.clear();
        return cameras;
    }
    /// The number of clips that would lose their sound if all recordings moved. A clip with sound from a card
    /// whose clock is also wrong has it by chance, unless that clock is right for some of the card.
    int lostBy(const SuspectedCard& one, const Card& card, double offset) const {
        return static_cast<int>(std::ranges::count_if(clips_, [&](const Shoot::Clip* clip) {
            if (!clip->isCovered || !clip->primary) return false;
            if (!one.isPart && suspected_.isSuspected[*clip->primary]) return false;
            const auto recorded = shoot_.recordings[*clip->primary].place.day;
            return (card.movedByDays != 0 && !(recorded && card.isOf(*recorded))) ||
                   !isCovered(shoot_, *clip->group, clip->place->range.durationSeconds(), offset);
        }));
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    std::vector<SoundClaim>* toHear_;
    TimecodeFrameRate rate_;
    OffsetCure cure_;
    const std::vector<const Shoot::Clip*>& clips_;
    const std::vector<const Shoot::Clip*>& uncovered_;
    const std::vector<const Shoot::Clip*>& evidence_;
    const SuspectedCards suspected_;
    bool isDateGivenToSeveralShoots_;
};

/// `toHear`, unless null: gets the claims that were not analysed.
void findClockDoubts(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>* toHear) {
    const TimedClips clips(shoot);
    ClockDoubts clocks(shoot, clips, doubts, toHear);
    addGivenRateDoubt(shoot, clips, doubts);
    if (std::cmp_greater_equal(clips.uncovered.size(), explanation::fewest) &&
        addRateDoubt(shoot, clips, doubts, toHear))
        return;
    clocks.add(false);
    addCameraClockDoubts(shoot, clips, clocks.suspected(), doubts, toHear);
    clocks.add(true);
    if (clips.uncovered.empty()) return;
    addRepeatDoubts(shoot, clips, doubts);
    addLongRecordings(shoot, clips, doubts);
}

} // namespace

void addClockDoubts(const Shoot& shoot, SyncDoubts& doubts) { findClockDoubts(shoot, doubts, nullptr); }

void addClockClaims(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>& toHear) {
    findClockDoubts(shoot, doubts, &toHear);
}

} // namespace orvane
