#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DayCures.h"
#include "OrvaneSyncCore/Services/Diagnosis/MixedDays.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using TCRange = SyncEngine::TCRange;

/// Whether the day of a clip's sound can be relied on, and what speaks against it.
class DayDoubts {
  public:
    DayDoubts(const Shoot& shoot, SyncDoubts& doubts) : shoot_(shoot), doubts_(doubts), cures_(shoot) {}

    void add() {
        const std::vector<bool> isUsed = shoot_.usedWholes();
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i) {
            addWhole(byDay_, i);
            if (!isUsed[i]) addWhole(unused_, i);
        }
        for (auto& [day, cover] : byDay_) cover.finish();
        for (auto& [day, cover] : unused_) cover.finish();
        areDaysMixed_ = daysShareHours(shoot_) || clipsShareHours(shoot_);
        daysMayBeMixed_ = areDaysMixed_ || undatedFilesCollide(shoot_);
        isDateGivenToSeveralShoots_ = givesDateToSeveralShoots(shoot_);
        if (daysMayBeMixed_) findSuspected();
        findFree();
        findOfOwnDay();
        findHeard();
        for (const Card& card : cardsOfManyClips()) {
            wrongDateOf(card);
            if (std::cmp_less(card.files.size(), fewestOfADate))
                for (const std::size_t file : card.files) fewOfItsDate_.insert(file);
        }
        const auto atOnce = filmedAtOnce(shoot_);
        platform::StopCheck check(shoot_.stop);
        for (const Shoot::Clip& clip : shoot_.clips) {
            check();
            if (clip.isDecided || !clip.place) continue;
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
    /// What a clip would lie under: a recording in parts at the first of them, by its day.
    void addWhole(std::map<long, Cover>& covers, std::size_t recording) const {
        const FilePlace& whole = shoot_.wholes.places[recording];
        if (whole.day && shoot_.wholes.isFirst(recording)) covers[*whole.day].add(whole.range, recording);
    }
    /// The cards by day; those with less clips than can speak against a date are taken together, as cameras
    /// may have a folder for each clip.
    std::vector<Card> cardsOfManyClips() const {
        std::vector<Card> cards, small;
        for (Card& card : cardsOf(shoot_.clips))
            (std::cmp_less(card.files.size(), fewestOfADate) && card.day ? small : cards)
                .push_back(std::move(card));
        std::ranges::stable_sort(small, {}, [](const Card& card) { return card.day; });
        for (Card& card : small) {
            if (cards.empty() || &card == &small.front() || cards.back().day != card.day) {
                cards.push_back(std::move(card));
                continue;
            }
            Card& together = cards.back();
            together.folder = commonFolder(together.folder, card.folder);
            together.files.insert(together.files.end(), card.files.begin(), card.files.end());
        }
        return cards;
    }
    /// The one in which both lie, without the slash behind it.
    static std::string commonFolder(const std::string& one, const std::string& other) {
        const std::string a = one + "/", b = other + "/";
        const auto same = std::max<std::ptrdiff_t>(std::ranges::mismatch(a, b).in1 - a.begin(), 1);
        return a.substr(0, a.rfind('/', static_cast<std::size_t>(same - 1)));
    }

    const Recording& primaryOf(const Shoot::Clip& clip) const { return shoot_.recordings[*clip.primary]; }

    /// `reason`: as that of a doubt.
    bool doubt(const Shoot::Clip& clip, Kind kind, std::string message, DoubtCure cure,
               std::string reason = {}) {
        doubts_.byGroup[clip.group->id].push_back(
            {kind, std::move(message), std::move(cure), {}, std::move(reason)});
        return true;
    }
    /// What is not the clip's own sound is not to be switched on, however loud it is.
    void keepOffWhatLiesBeside(const Shoot::Clip& clip) {
        const int own = takeOf(*clip.group, assumedChannels).channelCount;
        std::erase_if(doubts_.byGroup[clip.group->id], [&](const SyncDoubt& doubt) {
            return doubt.kind == Kind::mutedSpeech && doubt.channel.value_or(0) > own;
        });
    }

    /// A recording of a clip.
    struct Pair {
        const Shoot::Clip& clip;
        const AudioMatch& match;
        const Recording& sound;
        bool isFirst() const { return &match == &clip.group->audioMatches.front(); }
    };

    /// Of the first recording, else of the first one beside it whose day cannot be relied on: those stand in
    /// the document as well.
    /// Whether there is a doubt.
    bool otherDay(const Shoot::Clip& clip) {
        return std::ranges::any_of(clip.group->audioMatches, [&](const AudioMatch& match) {
            const auto found = shoot_.recordingByID.find(match.audio->id);
            if (found == shoot_.recordingByID.end()) return false;
            const Pair pair{clip, match, shoot_.recordings[found->second]};
            const bool isOther = otherDay(pair);
            if (isOther && !pair.isFirst()) keepOffWhatLiesBeside(clip);
            return isOther;
        });
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
    /// Whether there is a doubt.
    bool otherDay(const Pair& pair) {
        const auto& [clip, match, sound] = pair;
        const auto recorded = sound.place.day, filmed = clip.likelyDay();
        const std::string_view clips = folderOf(clip.group->video);
        if (isDateGivenToSeveralShoots_ && !(filmed && sound.place.statedDay == filmed)) {
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
            // The moment itself, which may lie across midnight.
            const double apart = static_cast<double>(*recorded - *filmed) * secondsADay +
                                 sound.place.range.startSeconds - clip.place->range.startSeconds;
            const bool isOfDay = std::abs(apart - match.syncOffsetSeconds) < 1;
            if (isOfDay || (!clip.place->day && *recorded == *filmed)) return sameDay(pair);
            if (isWrittenOn(clip.group->video, *clip.place, *recorded)) return false;
            if (!clip.place->day && !daysMayBeMixed_ && !isAllOfOtherDay(clip)) return false;
        } else {
            if (!daysMayBeMixed_) return false;
            const std::string undated = shoot_.nameOf(recorded ? clip.group->video : *sound.asset);
            const std::string why =
                undated + " has no date, and the files here are of more than one day" +
                (areDaysMixed_ ? "" : ", or of an hour that came twice at the end of summer time");
            return doubt(clip, Kind::otherDay, namesOf(pair) + " fits only by the time of day: " + why,
                         (areDaysMixed_ ? DoubtCure() : cureWords::choose() + ", ") +
                             "scan each day by itself, give the recordings' day with " +
                             cures_.dateOf(std::nullopt, clips, {}) + ", or lock the clip where it is right",
                         why);
        }
        const std::string message = namesOf(pair) + " is of " + dayText(*recorded) + ", and the clip is of " +
                                    dayText(*filmed) + "; they fit only by the time of day";
        const bool isOthers = isOfOwnDay_[shoot_.wholes.firstOf[shoot_.recordingByID.at(match.audio->id)]] &&
                              !isHeard(clip, sound);
        if (!pair.isFirst())
            return doubt(clip, Kind::otherDay, message,
                         (clip.place->day || isOthers
                              ? DoubtCure()
                              : cures_.dateOfCard(*filmed, sound) + " if the recorder's date is wrong, or ") +
                             "take off what is of another day" +
                             (clip.place->knownDay() ? ", scan each day by itself, or " + sameDayOnly()
                                                     : DoubtCure()));
        return doubt(clip, Kind::otherDay, message,
                     (isOthers
                          ? DoubtCure(lookForSoundOf(*filmed) + ", lock the clip where its sound is right, ")
                          : cures_.dateOf(filmed, clips, soundFor(clip, sound)) +
                                " if the recorder's date is wrong, ") +
                         (clip.place->knownDay() ? sameDayOnly() + " to leave such sound out"
                                                 : cureWords::skipToLeaveOut()));
    }

    /// A clip whose header agrees with its timecode, and which has no recording of the header's day, of a day
    /// with so few clips that no card can tell which of the dates is wrong. A header that agrees in another
    /// zone may have changed its day at another time than the recorder, and no more.
    bool isAllOfOtherDay(const Shoot::Clip& clip) const {
        const FilePlace& place = *clip.place;
        const auto day = place.isHeaderOfAZone ? place.headerDay : place.knownDay();
        const long farthest = place.isHeaderOfAZone ? 1 : std::numeric_limits<long>::max();
        const auto number = static_cast<std::size_t>(&clip - shoot_.clips.data());
        return day && !shoot_.input.rules.soundDay && fewOfItsDate_.contains(number) &&
               std::ranges::none_of(clip.group->audioMatches, [&](const AudioMatch& match) {
                   const auto found = shoot_.recordingByID.find(match.audio->id);
                   if (found == shoot_.recordingByID.end()) return true;
                   const auto recorded = shoot_.recordings[found->second].place.day;
                   return recorded == day || (recorded && std::abs(*recorded - *day) > farthest);
               });
    }

    /// Whether there is a doubt.
    bool collides(const Shoot::Clip& clip, const AudioMatch& other) {
        return doubt(clip, Kind::otherDay,
                     shoot_.nameOf(*clip.group->primaryAudio()) + " under " +
                         shoot_.nameOf(clip.group->video) + " was recorded while " +
                         shoot_.nameOf(*other.audio) +
                         " was, which one recorder can't do: the date of one of them is wrong, or the clock "
                         "was set back between them",
                     cureWords::choose() + ", or scan the two in folders of their own with " +
                         DoubtCure(CureOption::Kind::soundDate, ""));
    }

    /// Sound whose date is that of the clip, which may be a wrong one all the same. Whether there is a doubt.
    bool sameDay(const Pair& pair) {
        const auto& [clip, match, sound] = pair;
        if (const AudioMatch* other = pair.isFirst() ? collision(clip, true) : nullptr)
            return collides(clip, *other);
        const auto suspected = suspected_.find(kindOf(sound));
        if (suspected == suspected_.end()) return false;
        const Suspicion& why = suspected->second;
        return doubt(clip, Kind::otherDay,
                     namesOf(pair) + " is of the same date, but the recordings in '" +
                         std::string(folderOf(*sound.asset)) + "' fit " +
                         counted(why.clips, "clip", "clips") + " of " + dayText(why.day) +
                         " that have no other sound, and come first under " + std::to_string(why.own) +
                         " of their own date: it may be wrong",
                     cures_.dateOf(
                         why.day, why.folder,
                         {folderOf(*sound.asset), sound.place.statedDay, true, patternOf(suspected->first)}) +
                         (pair.isFirst() ? "" : "; take it off this clip"));
    }

    void missesOtherDate(const Shoot::Clip& clip) {
        if (!clip.place->day || clip.group->matchStatus.kind != MatchStatus::Kind::unmatched ||
            hasClockDoubt(clip) || doubts_.has(clip.group->id, {Kind::otherDateFits}))
            return;
        std::optional<std::size_t> best;
        long distance = std::numeric_limits<long>::max();
        for (const auto& [day, cover] : unused_) {
            if (std::abs(day - *clip.place->day) >= distance || day == *clip.place->day) continue;
            if (const auto found = cover.of(clip.place->range)) {
                best = found;
                distance = std::abs(day - *clip.place->day);
            }
        }
        if (!best) return;
        const Recording& sound = shoot_.recordings[*best];
        const std::string fits = shoot_.nameOf(*sound.asset) + " of " + dayText(*sound.place.day) +
                                 " lies under all of it by the time of day";
        doubt(clip, Kind::otherDateFits,
              shoot_.nameOf(clip.group->video) + " of " + dayText(*clip.place->day) + " has no sound, and " +
                  fits,
              cures_.dateOf(clip.place->day, folderOf(clip.group->video), soundFor(clip, sound)) +
                  " if the recorder's date is wrong, or " +
                  (distance == 1 && !cures_.hasClipsOf(*sound.place.day)
                       ? neighbouringDays()
                       : DoubtCure("attach the recording by hand")),
              fits);
    }

    /// Where the clips of a card fit the recordings of another day clearly better than those of their own,
    /// one of the dates is wrong, whatever single clips have found.
    void wrongDateOf(const Card& card) {
        if (!card.day || byDay_.empty()) return;
        struct Fit {
            int clips = 0;
            long day = 0;
        };
        std::vector<const Shoot::Clip*> clips;
        double first = std::numeric_limits<double>::infinity(), last = -first;
        for (const std::size_t file : card.files) {
            const Shoot::Clip& clip = shoot_.clips[file];
            if (clip.isDecided || clip.group->matchStatus.kind == MatchStatus::Kind::mos) continue;
            // What writes files anew dates their headers by its own clock.
            if (!clip.place->knownDay()) continue;
            // Where a date was given, it has served what has its sound.
            if (shoot_.input.rules.soundDay && clip.isCovered) continue;
            const auto recorded = clip.primary ? primaryOf(clip).place.day : std::nullopt;
            if (recorded && recorded != card.day && isWrittenOn(clip.group->video, *clip.place, *recorded))
                continue; // whatever its name says
            clips.push_back(&clip);
            first = std::min(first, clip.place->range.startSeconds);
            last = std::max(last, clip.place->range.endSeconds);
        }
        const auto fitOf = [&](long day, const Cover& cover) {
            Fit fit{0, day};
            for (const Shoot::Clip* clip : clips)
                if (cover.of(clip->place->range)) ++fit.clips;
            return fit;
        };
        // Of a day without any sound nobody filmed but this camera: what lies under other clips counts, too.
        const bool isAlone = !byDay_.contains(*card.day) &&
                             std::ranges::all_of(clips, [](const auto* clip) { return !clip->primary; });
        const auto candidates = [&](long day) -> const Cover& {
            return isAlone ? byDay_.at(day) : soundOf(day);
        };
        Fit own{0, *card.day}, other;
        constexpr long farthest = 2; // days whose recordings are all tried, however many days there are
        for (const auto& [day, cover] : byDay_) {
            if (day == *card.day) {
                own = fitOf(day, cover);
                continue;
            }
            if (std::abs(day - *card.day) > farthest && byDay_.size() > mostDays) continue;
            const Fit fit = fitOf(day, candidates(day));
            if (fit.clips > other.clips) other = fit;
        }
        constexpr double clearly = 1.5, majority = 0.6;
        const int count = static_cast<int>(clips.size());
        const auto explained =
            std::ranges::count_if(clips, [&](const auto* clip) { return hasClockDoubt(*clip); });
        if (explained >= other.clips) return;
        if (other.clips < fewestOfADate || other.clips < majority * count ||
            other.clips <= clearly * own.clips)
            return;
        std::set<std::string_view> folders = soundFolders(other.day, clips);
        DayCures::Sound sound{.day = other.day, .isSure = isHeardOn(card.folder, own.day, other.day)};
        for (const auto& [key, why] : suspected_)
            if (std::get<1>(key) == other.day && why.day == own.day) {
                folders = {std::get<0>(key)};
                sound.isSure = true;
                sound.pattern = patternOf(key);
            }
        if (folders.size() == 1) sound.folder = *folders.begin();
        const double share = candidates(other.day).shareOf(first, last);
        if (chance::atLeast(other.clips, count, share) > chance::smallest) return;
        int ofOwnDay = 0, silent = 0;
        for (const Shoot::Clip* clip : clips) {
            silent += clip->primary ? 0 : 1;
            const auto found = candidates(other.day).of(clip->place->range);
            if (found && isOfOwnDay_[*found] && !isHeard(*clip, shoot_.recordings[*found])) ++ofOwnDay;
        }
        const bool isOthers = 2 * ofOwnDay > other.clips;
        // What has all of its own day's sound, and would find none of the other day.
        std::erase_if(clips, [&](const auto* clip) {
            return clip->isCovered && clip->primary && primaryOf(*clip).place.day == own.day &&
                   !candidates(other.day).of(clip->place->range);
        });
        addCardDoubt(
            doubts_,
            {Kind::otherDateFits,
             "the clips in '" + card.folder + "' are dated " + dayText(own.day) + ", and " +
                 std::to_string(other.clips) + " of " + counted(count, "clip", "clips") +
                 " fit recordings of " + dayText(other.day) + ", " + std::to_string(own.clips) +
                 " those of their own day" +
                 (isOthers ? "; those recordings overlap clips of their day already" : ""),
             isOthers ? DoubtCure(lookForSoundOf(own.day) +
                                  ", and where the cameras' date is wrong, attach the recordings by hand, or "
                                  "lock the clips that have them")
                      : cures_.dateOf(own.day, card.folder, sound) +
                            (std::abs(other.day - own.day) == 1 && !cures_.hasClipsOf(other.day) &&
                                     silent > 0 && shoot_.input.rules.days != MatchingDays::neighbours
                                 ? ", or " + neighbouringDays()
                                 : DoubtCure()) +
                            "; one of the two dates is wrong"},
            clips);
    }

    /// Of the recordings of that day that lie under some of the clips by the time of day.
    std::set<std::string_view> soundFolders(long day, const std::vector<const Shoot::Clip*>& clips) const {
        std::map<std::string_view, Cover> covers;
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (shoot_.recordings[i].place.day == day && shoot_.wholes.isFirst(i))
                covers[folderOf(*shoot_.recordings[i].asset)].add(shoot_.wholes.places[i].range, i);
        std::set<std::string_view> folders;
        for (auto& [folder, cover] : covers) {
            cover.finish();
            if (std::ranges::any_of(
                    clips, [&](const auto* clip) { return cover.of(clip->place->range).has_value(); }))
                folders.insert(folder);
        }
        return folders;
    }
    /// Of days whose recordings mostly lie under clips of that day, the date is right, and those recordings
    /// are no sound for clips of another one.
    void findFree() {
        std::vector<bool> isMet(shoot_.recordings.size());
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (!clip.place || !clip.place->day || !clip.isCovered) continue;
            for (const AudioMatch& match : clip.group->audioMatches)
                if (const auto found = shoot_.recordingByID.find(match.audio->id);
                    found != shoot_.recordingByID.end() &&
                    shoot_.recordings[found->second].place.day == clip.place->day)
                    isMet[shoot_.wholes.firstOf[found->second]] = true;
        }
        struct Count {
            int all = 0, met = 0;
        };
        std::map<long, Count> counts;
        for (std::size_t i = 0; i < isMet.size(); ++i)
            if (const auto day = shoot_.recordings[i].place.day) {
                ++counts[*day].all;
                counts[*day].met += isMet[shoot_.wholes.firstOf[i]] ? 1 : 0;
            }
        constexpr double mostly = 2.0 / 3;
        for (const auto& [day, count] : counts)
            if (count.met >= mostly * count.all && !isSuspected(day)) free_[day];
        for (std::size_t i = 0; i < isMet.size(); ++i)
            if (const auto day = shoot_.wholes.places[i].day; day && !isMet[i] && free_.contains(*day))
                addWhole(free_, i);
        for (auto& [day, cover] : free_) cover.finish();
    }
    /// Recordings that come first under a clip of their own day and lie under all of it are not the sound of
    /// another one, unless their date is suspected.
    void findOfOwnDay() {
        isOfOwnDay_.assign(shoot_.recordings.size(), false);
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (!clip.place || !clip.primary || !clip.isCovered) continue;
            const Recording& sound = primaryOf(clip);
            if (sound.place.day && sound.place.day == clip.likelyDay() && !suspected_.contains(kindOf(sound)))
                isOfOwnDay_[shoot_.wholes.firstOf[*clip.primary]] = true;
        }
    }
    /// What the microphones of cameras heard in recordings of other dates.
    void findHeard() {
        if (shoot_.input.heardLags == nullptr) return;
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (!clip.place || !clip.primary || !clip.likelyDay()) continue;
            const auto day = primaryOf(clip).place.day;
            if (day && day != clip.likelyDay() &&
                shoot_.input.heardLags->contains(clip.group->audioMatches.front().id))
                ++heard_[{folderOf(clip.group->video), *clip.likelyDay(), *day}];
        }
    }
    bool isHeardOn(std::string_view clips, long filmed, long recorded) const {
        const auto found = heard_.find({clips, filmed, recorded});
        return found != heard_.end() && found->second >= explanation::fewest;
    }
    bool isHeard(const Shoot::Clip& clip, const Recording& sound) const {
        return sound.place.day && isHeardOn(folderOf(clip.group->video), *clip.likelyDay(), *sound.place.day);
    }
    DayCures::Sound soundFor(const Shoot::Clip& clip, const Recording& sound) const {
        return {folderOf(*sound.asset), sound.place.statedDay, isHeard(clip, sound)};
    }
    static DoubtCure sameDayOnly() {
        return {CureOption::Kind::days, std::string(rawValue(MatchingDays::same))};
    }
    static DoubtCure neighbouringDays() {
        return {CureOption::Kind::days, std::string(rawValue(MatchingDays::neighbours))};
    }
    static std::string lookForSoundOf(long day) {
        return "look for the sound of " + dayText(day) + ", which is missing on the cards";
    }

    bool isSuspected(long day) const {
        return std::ranges::any_of(suspected_,
                                   [&](const auto& entry) { return std::get<1>(entry.first) == day; });
    }
    /// What clips of another day may have for their sound.
    const Cover& soundOf(long day) const {
        const auto found = free_.find(day);
        return found != free_.end() ? found->second : byDay_.at(day);
    }

    /// What speaks against the date of the recordings of one folder and day.
    struct Suspicion {
        long day;                ///< that of the clips without sound of their day, which they fit
        int clips, own;          ///< how many they fit there, and how many of their own day have them
        std::string_view folder; ///< of those clips, where it is one
    };
    /// What may have one wrong date: the recordings of one folder and day whose names are alike, as those of
    /// another day may have been copied to them.
    using SoundKind = std::tuple<std::string_view, long, std::string>;
    static SoundKind kindOf(const Recording& sound) {
        return {folderOf(*sound.asset), *sound.place.day, namePattern(*sound.asset)};
    }
    /// Empty where the folder has no other names of that day.
    std::string patternOf(const SoundKind& kind) const {
        const auto isBeside = [&](const Recording& sound) {
            if (!sound.place.day) return false;
            const SoundKind other = kindOf(sound);
            return std::get<0>(other) == std::get<0>(kind) && std::get<1>(other) == std::get<1>(kind) &&
                   other != kind;
        };
        return std::ranges::any_of(shoot_.recordings, isBeside) ? std::get<2>(kind) : std::string();
    }
    /// The recordings that fit clips of another day, which have no sound of that day, rather than their own.
    void findSuspected() {
        std::map<long, std::vector<const Shoot::Clip*>> lacking; // by day
        std::map<SoundKind, int> users;
        for (const Shoot::Clip& clip : shoot_.clips) {
            const auto day = clip.place ? clip.likelyDay() : std::nullopt;
            if (!day || clip.isDecided) continue;
            if (clip.primary && primaryOf(clip).place.day == day)
                ++users[kindOf(primaryOf(clip))];
            else
                lacking[*day].push_back(&clip);
            for (const AudioMatch& match : clip.group->audioMatches) // what lies beside it is believed, too
                users.try_emplace({folderOf(*match.audio), *day, namePattern(*match.audio)}, 0);
        }
        constexpr double clearly = 1.5, majority = 0.6;
        std::map<SoundKind, std::vector<std::size_t>> kinds;
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (shoot_.recordings[i].place.day) kinds[kindOf(shoot_.recordings[i])].push_back(i);
        for (const auto& [key, files] : kinds) {
            platform::throwIfStopped(shoot_.stop);
            const auto found = users.find(key);
            if (std::cmp_less(files.size(), fewestOfADate) || found == users.end()) continue; // not believed
            Cover sound;
            for (const std::size_t file : shoot_.wholes.oneOfEach(files))
                sound.add(shoot_.wholes.places[file].range, file);
            sound.finish();
            const int own = found->second;
            int best = 0; // of the clips of one day
            for (const auto& [day, clips] : lacking) {
                // Of a recorder that no clip has in the first place, nothing but this speaks against the
                // date.
                const auto least =
                    own > 0 ? 0 : static_cast<int>(majority * static_cast<double>(clips.size()));
                const int most = std::max({fewestOfADate - 1, static_cast<int>(clearly * own), least, best});
                const auto fitting = static_cast<int>(std::ranges::count_if(
                    clips, [&](const auto* clip) { return sound.of(clip->place->range).has_value(); }));
                if (day == std::get<1>(key) || fitting <= most || isChance(fitting, clips, sound)) continue;
                std::string_view folder = folderOf(clips.front()->group->video);
                for (const auto* clip : clips)
                    if (folderOf(clip->group->video) != folder) folder = {};
                best = fitting;
                suspected_.insert_or_assign(key, Suspicion{day, fitting, own, folder});
            }
        }
    }
    /// Whether so many clips would lie under such sound by chance.
    static bool isChance(int fitting, const std::vector<const Shoot::Clip*>& clips, const Cover& sound) {
        double first = std::numeric_limits<double>::infinity(), last = -first;
        for (const auto* clip : clips) {
            first = std::min(first, clip->place->range.startSeconds);
            last = std::max(last, clip->place->range.endSeconds);
        }
        return chance::atLeast(fitting, static_cast<int>(clips.size()), sound.shareOf(first, last)) >
               chance::smallest;
    }

    bool hasClockDoubt(const Shoot::Clip& clip) const {
        return doubts_.has(clip.group->id, {Kind::constantOffset, Kind::timecodeRate});
    }

    static constexpr std::size_t mostDays = 8;
    static constexpr int fewestOfADate = 3; ///< clips or recordings that may speak against a date

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    DayCures cures_;
    std::vector<bool> isOfOwnDay_; ///< by recording
    /// How many clips of a folder and a day were heard in recordings of another one.
    std::map<std::tuple<std::string_view, long, long>, int> heard_;
    std::map<long, Cover> byDay_;  ///< of the recordings, seconds since midnight
    std::map<long, Cover> unused_; ///< of those that no clip has
    std::map<long, Cover> free_;   ///< of days with clips of their own, of those that lie under none
    std::map<SoundKind, Suspicion> suspected_;
    std::set<std::size_t> fewOfItsDate_; ///< numbers of clips
    bool areDaysMixed_ = false;          ///< by the dates
    bool daysMayBeMixed_ = false;
    bool isDateGivenToSeveralShoots_ = false;
};

} // namespace

void addDayDoubts(const Shoot& shoot, SyncDoubts& doubts) { DayDoubts(shoot, doubts).add(); }

} // namespace orvane
