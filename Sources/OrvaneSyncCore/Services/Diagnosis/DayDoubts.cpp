#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DatedSound.h"
#include "OrvaneSyncCore/Services/Diagnosis/DayCures.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/MixedDays.h"
#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"
#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

/// Whether the day of a clip's sound is reliable, and the evidence against it.
class DayDoubts {
  public:
    DayDoubts(const Shoot& shoot, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts), cures_(shoot), sound_(shoot) {
        const std::vector<bool> isUsed = shoot.usedWholes();
        for (std::size_t i = 0; i < isUsed.size(); ++i)
            if (!isUsed[shoot.wholes.firstOf[i]])
                unusedByFolder_.try_emplace(folderOf(*shoot.recordings[i].asset),
                                            &*shoot.recordings[i].asset);
        findHeardDays();
    }

    void add() {
        std::set<const Shoot::Clip*> reported;
        for (const Shoot::Clip& clip : shoot_.clips)
            if (doubts_.has(clip.group->id, {Kind::otherDateFits})) reported.insert(&clip);
        cardDates_ = addCardDates(shoot_, sound_, cures_, doubts_);
        const auto atOnce = filmedAtOnce(shoot_);
        platform::StopCheck check(shoot_.stop);
        for (const Shoot::Clip& clip : shoot_.clips) {
            check();
            if (clip.isDecided || !clip.place || reported.contains(&clip)) continue;
            if (clip.primary && !otherDay(clip)) {
                const AudioMatch* beside = collisionInFolder(clip);
                if (const auto other = atOnce.find(&clip); other != atOnce.end())
                    sharesItsSound(clip, *other->second, beside);
                else if (beside != nullptr)
                    collides(clip, *beside);
            } else if (clip.group->isMOS())
                missesOtherDate(clip);
        }
    }

  private:
    std::optional<long> dayOf(const MediaAsset& recording) const {
        const auto found = shoot_.recordingByID.find(recording.id);
        return found == shoot_.recordingByID.end() ? std::nullopt
                                                   : shoot_.recordings[found->second].place.day;
    }
    const Recording& primaryOf(const Shoot::Clip& clip) const { return shoot_.recordings[*clip.primary]; }

    /// `reason`: as in `SyncDoubt`.
    bool doubt(const Shoot::Clip& clip, Kind kind, std::string message, DoubtCure cure,
               std::string reason = {}) {
        doubts_.byGroup[clip.group->id].push_back(
            {kind, std::move(message), std::move(cure), {}, std::move(reason)});
        return true;
    }
    /// A recording that is not the clip's own sound must not be switched on, however loud it is.
    void keepOffWhatLiesBeside(const Shoot::Clip& clip) {
        const int own = takeOf(*clip.group, assumedChannels).channelCount;
        std::erase_if(doubts_.byGroup[clip.group->id], [&](const SyncDoubt& doubt) {
            return doubt.kind == Kind::mutedSpeech && doubt.channel.value_or(0) > own;
        });
    }

    /// A clip and one of its recordings.
    struct Pair {
        const Shoot::Clip& clip;
        const AudioMatch& match;
        const Recording& sound;
        bool isFirst() const { return &match == &clip.group->audioMatches.front(); }
    };

    /// Checks the first recording, else the first one beside it whose day is not reliable, as those are in
    /// the document as well. Returns whether there is a doubt.
    bool otherDay(const Shoot::Clip& clip) {
        if (isFirstHeardWithoutDate(clip)) return ofOtherMoment(clip);
        return std::ranges::any_of(clip.group->audioMatches, [&](const AudioMatch& match) {
            const auto found = shoot_.recordingByID.find(match.audio->id);
            if (found == shoot_.recordingByID.end()) return false;
            const Pair pair{clip, match, shoot_.recordings[found->second]};
            const std::size_t before = countOf(clip);
            const bool isOther = !isCopy(pair) && otherDay(pair);
            if (isOther && !pair.isFirst()) keepOffWhatLiesBeside(clip);
            if (isOther && countOf(clip) > before) nameHeard(pair);
            return isOther;
        });
    }
    std::size_t countOf(const Shoot::Clip& clip) const {
        const auto own = doubts_.byGroup.find(clip.group->id);
        return own == doubts_.byGroup.end() ? 0 : own->second.size();
    }
    /// Whether the camera heard the first recording in place, and no dates say anything about its day.
    bool isFirstHeardWithoutDate(const Shoot::Clip& clip) const {
        if (clip.likelyDay() && primaryOf(clip).place.day) return false;
        return isRecordingHeard(shoot_, clip, clip.group->audioMatches.front());
    }
    /// A clip of the same camera, filmed at another moment although at the same time of day, whose microphone
    /// heard the recording in place; null if there is none.
    const Shoot::Clip* otherWith(const Shoot::Clip& clip, const MediaAsset& recording) const {
        const MediaAsset& video = clip.group->video;
        const auto other = std::ranges::find_if(shoot_.clips, [&](const Shoot::Clip& one) {
            return &one != &clip && one.place && folderOf(one.group->video) == folderOf(video) &&
                   SyncEngine::overlapDuration(one.place->range, clip.place->range) &&
                   std::ranges::any_of(one.group->audioMatches,
                                       [&](const AudioMatch& match) {
                                           return match.audio->id == recording.id &&
                                                  isRecordingHeard(shoot_, one, match);
                                       }) &&
                   namePattern(one.group->video) == namePattern(video);
        });
        return other != shoot_.clips.end() ? &*other : nullptr;
    }
    /// For a clip whose camera heard its first recording: what its recorder cannot have made at the same time
    /// is of another day. Returns whether there is a doubt.
    bool ofOtherMoment(const Shoot::Clip& clip) {
        const auto others = ofOtherMoments(*clip.group);
        if (others.empty()) return false;
        if (doubts_.has(clip.group->id, {Kind::ambiguous})) return true; // which suggests the same
        const AudioMatch& first = clip.group->audioMatches.front();
        const std::string beside = shoot_.nameOf(*clip.group->audioMatches[others.front()].audio) +
                                   " beside " + shoot_.nameOf(*first.audio) +
                                   ", which the microphone of the camera heard, and one recorder can't have "
                                   "made both at one time";
        doubt(clip, Kind::otherDay, shoot_.nameOf(clip.group->video) + " has " + beside,
              cureWords::asHeard("take off what is of another day", "'choice'") + ", or lock the clip",
              "has " + beside);
        doubts_.byGroup[clip.group->id].back().suggestion = SyncDoubt::Suggestion{first.audio->id};
        return true;
    }
    /// Whether the recording is a copy of another one of the clip: it is not in the document.
    static bool isCopy(const Pair& pair) {
        if (pair.isFirst()) return false;
        const auto& group = *pair.clip.group;
        return std::ranges::any_of(takeOf(group, assumedChannels).files, [&](const TakeFile& file) {
            return file.role == TakeRole::mirror && &group.audioMatches[file.matchIndex] == &pair.match;
        });
    }
    /// If several recordings fit by time of day, names the one that was heard in the doubt about one of them.
    void nameHeard(const Pair& pair) {
        const Shoot::Clip& clip = pair.clip;
        const auto heard = heardAmong(shoot_, clip);
        if (!heard) {
            nameLeft(clip);
            if (isOwnDayHeard(pair)) keepOwnDay(pair);
            return;
        }
        if (heard == 0 && !pair.isFirst()) return;
        SyncDoubt& last = doubts_.byGroup[clip.group->id].back();
        const std::string name = shoot_.nameOf(*clip.group->audioMatches[*heard].audio);
        last.message += "; the microphone of the camera heard " + name;
        last.own = shoot_.nameOf(clip.group->video) + " with " + name;
        if (heard == 0) keepOwnDay(pair);
        if (last.suggestion || (heard == 0 && collision(clip, true) == nullptr)) return;
        last.cure = cureWords::asHeard("choose what was heard", "'choice'") + ", " + last.cure;
        last.suggestion = suggestionToChoose(shoot_, clip, *heard);
    }
    /// Suggests the first recording alone, if it is of the clip's day and another day's is beside it.
    void keepOwnDay(const Pair& pair) {
        const AudioMatch* other = pair.isFirst() ? collision(pair.clip, true) : nullptr;
        SyncDoubt& last = doubts_.byGroup[pair.clip.group->id].back();
        if (other == nullptr || last.suggestion || pair.sound.place.day != pair.clip.likelyDay() ||
            dayOf(*other->audio) == pair.sound.place.day)
            return;
        last.cure = cureWords::asHeard("take off what is of another day", "'choice'") + daysApart();
        last.suggestion = SyncDoubt::Suggestion{.recordingID = pair.sound.asset->id, .isAlone = true};
    }
    static DoubtCure daysApart() { return ", scan each day by itself, or " + DayCures::sameDayOnly(); }

    /// What microphones heard in place, in clips of a folder in one half of the day, of recordings of a
    /// folder. A clock whose date is wrong after midnight may be right before it.
    struct HeardDays {
        std::map<long, int> own; ///< recordings of the clip's own day, by day
        int others = 0;          ///< those of another day
    };
    using HeardKey = std::tuple<std::string_view, bool, std::string_view>;
    static HeardKey heardKeyOf(const Shoot::Clip& clip, const Recording& sound) {
        return {folderOf(clip.group->video), clip.place->range.startSeconds < secondsADay / 2,
                folderOf(*sound.asset)};
    }
    void findHeardDays() {
        if (shoot_.input.heardLags == nullptr && shoot_.input.heardClaims == nullptr) return;
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (!clip.place || !clip.likelyDay()) continue;
            for (const AudioMatch& match : clip.group->audioMatches) {
                const auto found = shoot_.recordingByID.find(match.audio->id);
                if (found == shoot_.recordingByID.end() || !isRecordingHeard(shoot_, clip, match)) continue;
                const Recording& sound = shoot_.recordings[found->second];
                HeardDays& days = heardDays_[heardKeyOf(clip, sound)];
                if (areOfOtherDays(clip.likelyPlace(), sound.place))
                    ++days.others;
                else
                    ++days.own[*clip.likelyDay()];
            }
        }
    }
    /// Whether the microphones of three clips heard sound of their own day, one of them on the clip's day,
    /// and none heard other sound.
    bool isOwnDayHeard(const Pair& pair) const {
        const auto found = heardDays_.find(heardKeyOf(pair.clip, pair.sound));
        if (found == heardDays_.end() || found->second.others > 0) return false;
        int own = 0;
        for (const auto& [day, clips] : found->second.own) own += clips;
        return own >= fewestOfADate && found->second.own.contains(*pair.clip.likelyDay());
    }
    /// Of two recordings, if one was heard in another clip, names the other one.
    void nameLeft(const Shoot::Clip& clip) {
        const auto& matches = clip.group->audioMatches;
        constexpr std::size_t two = 2;
        if (matches.size() != two || shoot_.input.heardClaims == nullptr) return;
        const auto* ofFirst = otherWith(clip, *matches.front().audio);
        const auto* ofSecond = otherWith(clip, *matches.back().audio);
        if ((ofFirst == nullptr) == (ofSecond == nullptr)) return;
        const MediaAsset& heard = *(ofFirst != nullptr ? matches.front() : matches.back()).audio;
        const MediaAsset& left = *(ofFirst != nullptr ? matches.back() : matches.front()).audio;
        SyncDoubt& last = doubts_.byGroup[clip.group->id].back();
        last.message += "; the microphone of the camera heard " + shoot_.nameOf(heard) + " in " +
                        shoot_.nameOf((ofFirst != nullptr ? ofFirst : ofSecond)->group->video) +
                        ", which one camera can't have filmed at the same time";
        last.own = shoot_.nameOf(clip.group->video) + " with " + shoot_.nameOf(left);
        last.cure = cureWords::asHeard("choose the other recording", "'choice'") + ", " + last.cure;
        last.suggestion = SyncDoubt::Suggestion{.recordingID = left.id, .isAlone = true};
    }
    void sharesItsSound(const Shoot::Clip& clip, const Shoot::Clip& other, const AudioMatch* beside) {
        const MediaAsset& sound = *clip.group->primaryAudio();
        doubt(clip, Kind::ambiguous,
              shoot_.nameOf(clip.group->video) + " and " + shoot_.nameOf(other.group->video) +
                  " lie at one time, which one camera can't do, and both have " + shoot_.nameOf(sound) +
                  (beside != nullptr ? " before " + shoot_.nameOf(*beside->audio) : std::string()) +
                  ": a clock was set back between them, as at the end of summer time",
              cureWords::choose() + ", or lock the one whose sound is right and leave the other out",
              "a clock was set back between this and " + shoot_.nameOf(other.group->video) +
                  ", as at the end of summer time");
    }
    std::string namesOf(const Pair& pair) const {
        return shoot_.nameOf(*pair.sound.asset) + " under " + shoot_.nameOf(pair.clip.group->video) +
               (pair.isFirst()
                    ? ""
                    : ", beside " + shoot_.nameOf(*pair.clip.group->audioMatches.front().audio) + ",");
    }
    /// Returns whether there is a doubt.
    bool otherDay(const Pair& pair) {
        const auto& [clip, match, sound] = pair;
        const auto recorded = sound.place.day, filmed = clip.likelyDay();
        const std::string_view clips = folderOf(clip.group->video);
        if (sound_.isDateGivenToSeveralShoots && !(filmed && sound.place.statedDay == filmed)) {
            const std::string byItself =
                sound.place.statedDay ? "the recording itself says " + dayText(*sound.place.statedDay) : "";
            const std::string behind =
                ", and the files here are of more than one shoot" + (byItself.empty() ? "" : ": " + byItself);
            doubt(clip, Kind::otherDay, namesOf(pair) + " has its date only by --sound-date" + behind,
                  cures_.dateOf(filmed, clips, {}), byItself);
            doubts_.byGroup[clip.group->id].back().windowMessage =
                namesOf(pair) + " has its date only by your correction" + behind;
            return true;
        }
        if (recorded && filmed) {
            // The distance of the two moments, which may have midnight between them.
            const double apart = static_cast<double>(*recorded - *filmed) * secondsADay +
                                 sound.place.range.startSeconds - clip.place->range.startSeconds;
            const bool isOfDay = std::abs(apart - match.syncOffsetSeconds) < 1;
            if (isOfDay || (!clip.place->day && *recorded == *filmed)) return sameDay(pair);
            if (isWrittenOn(clip.group->video, *clip.place, *recorded)) return false;
            if (!clip.place->day && !sound_.mayDaysBeMixed && !isAllOfOtherDay(clip)) return false;
        } else {
            if (!sound_.mayDaysBeMixed) return false;
            const std::string undated = shoot_.nameOf(recorded ? clip.group->video : *sound.asset);
            const std::string why =
                undated + " has no date, and the files here are of more than one day" +
                (sound_.areDaysMixed ? "" : ", or of an hour that came twice at the end of summer time");
            return doubt(clip, Kind::otherDay, namesOf(pair) + " fits only by the time of day: " + why,
                         (sound_.areDaysMixed ? DoubtCure() : cureWords::choose() + ", ") +
                             DoubtCure::Words{"scan each day by itself, give the recordings' day with ",
                                              "scan each day by itself, "} +
                             cures_.dateOf(std::nullopt, clips, {}) + ", or lock the clip where it is right",
                         why);
        }
        const std::string message = namesOf(pair) + " is of " + dayText(*recorded) + ", and the clip is of " +
                                    dayText(*filmed) + "; they fit only by the time of day";
        if (pair.isFirst() && sound_.isInPlaceOn(clips, *filmed, *recorded)) return false;
        if (pair.isFirst() && isDoubtedWithItsCard(clip, *recorded)) return true;
        // The doubt about the clock of its own unit's recorder says that this is not its sound.
        if (hasClockDoubt(clip) && isOfAnotherUnit(clip, *sound.asset)) return true;
        const bool isUnheard = sound_.isUnheardOn(clips, *filmed, *recorded);
        const bool isOthers =
            isUnheard ||
            (!pair.isFirst() && (heardAmong(shoot_, clip) == 0 || sound_.isOnCardOfOwnDay(sound))) ||
            (sound_.isOfOwnDay[shoot_.wholes.firstOf[shoot_.recordingByID.at(match.audio->id)]] &&
             !sound_.isHeard(clip, sound));
        if (!pair.isFirst())
            return doubt(clip, Kind::otherDay, message,
                         (clip.place->day || isOthers
                              ? DoubtCure()
                              : cures_.dateOfCard(*filmed, sound) + " if the recorder's date is wrong, or ") +
                             "take off what is of another day" +
                             (clip.place->knownDay() ? daysApart() : DoubtCure()));
        return doubt(
            clip, Kind::otherDay, message,
            (isOthers
                 ? DoubtCure(DayCures::lookForSoundOf(*filmed) + ", lock the clip where its sound is right, ")
                 : cures_.dateOf(filmed, clips, soundFor(clip, sound)) +
                       " if the recorder's date is wrong, ") +
                (clip.place->knownDay() && !isUnheard ? DayCures::sameDayOnly() + " to leave such sound out"
                                                      : cureWords::skipToLeaveOut()));
    }

    bool isDoubtedWithItsCard(const Shoot::Clip& clip, long recorded) const {
        const auto day = cardDates_.fittingDays.find(static_cast<std::size_t>(&clip - shoot_.clips.data()));
        return day != cardDates_.fittingDays.end() && day->second == recorded;
    }

    /// A clip whose header agrees with its timecode and that has no recording of the header's day. That day
    /// has so few clips that no card shows which of the dates is wrong. A header that agrees in another time
    /// zone may only have changed its day at another time than the recorder.
    bool isAllOfOtherDay(const Shoot::Clip& clip) const {
        const FilePlace& place = *clip.place;
        const auto day = place.isHeaderOfAZone ? place.headerDay : place.knownDay();
        const long farthest = place.isHeaderOfAZone ? 1 : std::numeric_limits<long>::max();
        const auto number = static_cast<std::size_t>(&clip - shoot_.clips.data());
        return day && !shoot_.input.rules.soundDay && cardDates_.fewOfItsDate.contains(number) &&
               std::ranges::none_of(clip.group->audioMatches, [&](const AudioMatch& match) {
                   const auto found = shoot_.recordingByID.find(match.audio->id);
                   if (found == shoot_.recordingByID.end()) return true;
                   const auto recorded = shoot_.recordings[found->second].place.day;
                   return recorded == day || (recorded && std::abs(*recorded - *day) > farthest);
               });
    }

    /// Returns whether there is a doubt.
    bool collides(const Shoot::Clip& clip, const AudioMatch& other) {
        const MediaAsset& own = *clip.group->primaryAudio();
        const auto ownDay = dayOf(own), otherDay = dayOf(*other.audio);
        if (ownDay && otherDay && ownDay != otherDay)
            return doubt(clip, Kind::otherDay,
                         shoot_.nameOf(own) + " under " + shoot_.nameOf(clip.group->video) + " is of " +
                             dayText(*ownDay) + ", and " + shoot_.nameOf(*other.audio) +
                             ", which fits as well by the time of day, of " + dayText(*otherDay),
                         "take off what is of another day" + daysApart());
        return doubt(
            clip, Kind::otherDay,
            shoot_.nameOf(*clip.group->primaryAudio()) + " under " + shoot_.nameOf(clip.group->video) +
                " was recorded while " + shoot_.nameOf(*other.audio) +
                " was, which one recorder can't do: the date of one of them is wrong, or the clock "
                "was set back between them",
            cureWords::choose() + ", or scan the two in folders of their own" +
                DoubtCure(DoubtCure::Words{" with ", " and "}) + DoubtCure(CureOption::Kind::soundDate, ""));
    }

    /// For sound with the date of its clip: the date may still be wrong. Returns whether there is a doubt.
    bool sameDay(const Pair& pair) {
        const auto& [clip, match, sound] = pair;
        if (const AudioMatch* other = pair.isFirst() ? collision(clip, true) : nullptr)
            return collides(clip, *other);
        const auto suspected = sound_.suspected.find(kindOf(sound));
        if (suspected == sound_.suspected.end()) return false;
        const DateSuspicion& why = suspected->second;
        return doubt(clip, Kind::otherDay,
                     namesOf(pair) + " is of the same date, but the recordings in '" +
                         std::string(folderOf(*sound.asset)) + "' fit " +
                         counted(why.clips, "clip", "clips") + " of " + dayText(why.day) +
                         " that have no other sound, and come first under " + std::to_string(why.own) +
                         " of their own date: it may be wrong",
                     cures_.dateOf(why.day, why.folder,
                                   {folderOf(*sound.asset), sound.place.statedDay, true,
                                    sound_.patternOf(suspected->first)}) +
                         (pair.isFirst() ? "" : "; take it off this clip"));
    }

    void missesOtherDate(const Shoot::Clip& clip) {
        if (!clip.place->day || clip.group->matchStatus.kind != MatchStatus::Kind::unmatched ||
            hasClockDoubt(clip) || doubts_.has(clip.group->id, {Kind::otherDateFits}))
            return;
        std::optional<std::size_t> best;
        long distance = std::numeric_limits<long>::max();
        for (const auto& [day, cover] : sound_.unused) {
            if (std::abs(day - *clip.place->day) >= distance || day == *clip.place->day) continue;
            if (const auto found = cover.of(clip.place->range)) {
                best = found;
                distance = std::abs(day - *clip.place->day);
            }
        }
        if (!best) return;
        const Recording& sound = shoot_.recordings[*best];
        const std::string fits = shoot_.nameOf(*sound.asset) + " of " + dayText(*sound.place.day) +
                                 " covers all of it by the time of day";
        doubt(clip, Kind::otherDateFits,
              shoot_.nameOf(clip.group->video) + " of " + dayText(*clip.place->day) + " has no sound, and " +
                  fits,
              cures_.dateOf(clip.place->day, folderOf(clip.group->video), soundFor(clip, sound)) +
                  " if the recorder's date is wrong, or " +
                  (distance == 1 && !cures_.hasClipsOf(*sound.place.day)
                       ? DayCures::neighbouringDays()
                       : DoubtCure("attach the recording by hand")),
              fits);
    }
    DayCures::Sound soundFor(const Shoot::Clip& clip, const Recording& sound) const {
        return {folderOf(*sound.asset), sound.place.statedDay, sound_.isHeard(clip, sound)};
    }

    /// Whether a recording that no clip has is nearer to the clip by its folders.
    bool isOfAnotherUnit(const Shoot::Clip& clip, const MediaAsset& sound) const {
        const auto nearness = UnitNearness::of(clip.group->video, sound);
        return std::ranges::any_of(unusedByFolder_, [&](const auto& one) {
            return UnitNearness::of(clip.group->video, *one.second) > nearness;
        });
    }
    bool hasClockDoubt(const Shoot::Clip& clip) const {
        return doubts_.has(clip.group->id, {Kind::constantOffset, Kind::timecodeRate});
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    DayCures cures_;
    const DatedSound sound_;
    CardDatesFound cardDates_ = {};
    std::map<HeardKey, HeardDays> heardDays_;
    std::map<std::string_view, const MediaAsset*> unusedByFolder_; ///< one of the recordings that no clip has
};

} // namespace

void addDayDoubts(const Shoot& shoot, SyncDoubts& doubts) { DayDoubts(shoot, doubts).add(); }

} // namespace orvane
