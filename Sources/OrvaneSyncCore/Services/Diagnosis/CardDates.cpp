#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DatedSound.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

class CardDates {
  public:
    CardDates(const Shoot& shoot, const DatedSound& sound, DayCures& cures, SyncDoubts& doubts)
        : shoot_(shoot), sound_(sound), cures_(cures), doubts_(doubts) {}

    CardDatesFound add() {
        const std::vector<Card> cards = cardsOfManyClips();
        findShift(cards);
        for (const Card& card : cards) {
            wrongDateOf(card);
            if (std::cmp_less(card.files.size(), fewestOfADate))
                found_.fewOfItsDate.insert(card.files.begin(), card.files.end());
        }
        suggest();
        return std::move(found_);
    }

  private:
    /// The cards by day. Cards with too few clips for evidence against a date are joined, as cameras may have
    /// a folder for each clip.
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
    /// The deepest folder that contains both, without a slash at the end.
    static std::string commonFolder(const std::string& one, const std::string& other) {
        const std::string a = one + "/", b = other + "/";
        const auto same = std::max<std::ptrdiff_t>(std::ranges::mismatch(a, b).in1 - a.begin(), 1);
        return a.substr(0, a.rfind('/', static_cast<std::size_t>(same - 1)));
    }
    const Recording& primaryOf(const Shoot::Clip& clip) const { return shoot_.recordings[*clip.primary]; }

    /// The clips of a card whose sound may be of another date.
    std::vector<const Shoot::Clip*> clipsOf(const Card& card) const {
        std::vector<const Shoot::Clip*> clips;
        for (const std::size_t file : card.files) {
            const Shoot::Clip& clip = shoot_.clips[file];
            if (clip.isDecided || clip.group->matchStatus.kind == MatchStatus::Kind::mos ||
                doubts_.has(clip.group->id, {Kind::otherDateFits}))
                continue;
            // A program that writes files again dates their headers by its own clock.
            if (!clip.place->knownDay()) continue;
            // A given date has helped the clips that have sound of it.
            if (shoot_.input.rules.soundDay && clip.isCovered) continue;
            const auto recorded = clip.primary ? primaryOf(clip).place.day : std::nullopt;
            if (recorded && recorded != card.day && isWrittenOn(clip.group->video, *clip.place, *recorded))
                continue; // whatever its name states
            clips.push_back(&clip);
        }
        return clips;
    }
    /// A clock that lost its date counts on from there: the days of its recordings are one number of days
    /// from those of the clips. Known if it explains clips of several days, and more of them than any other.
    void findShift(const std::vector<Card>& cards) {
        struct Shift {
            int clips = 0;
            std::set<long> days; ///< of the clips
        };
        std::map<long, Shift> shifts;
        for (const auto& [day, cover] : sound_.byDay) {
            if (!cures_.isFarFromClips(day)) continue;
            for (const Card& card : cards) {
                if (!card.day) continue;
                const auto clips = clipsOf(card);
                const auto fitting = std::ranges::count_if(
                    clips, [&](const Shoot::Clip* clip) { return cover.of(clip->place->range).has_value(); });
                if (std::cmp_less(fitting, fewestOfADate)) continue;
                Shift& shift = shifts[day - *card.day];
                shift.clips += static_cast<int>(fitting);
                shift.days.insert(*card.day);
            }
        }
        int most = 0;
        for (const auto& [days, shift] : shifts) {
            if (shift.clips >= most) shift_.reset();
            if (shift.clips > most && shift.days.size() > 1) shift_ = days;
            most = std::max(most, shift.clips);
        }
    }
    /// If the clips of a card fit the recordings of another day clearly better than those of their own day,
    /// one of the dates is wrong, whatever single clips have found.
    void wrongDateOf(const Card& card) {
        if (!card.day || sound_.byDay.empty()) return;
        struct Fit {
            int clips = 0;
            long day = 0;
        };
        std::vector<const Shoot::Clip*> clips = clipsOf(card);
        double first = std::numeric_limits<double>::infinity(), last = -first;
        for (const Shoot::Clip* clip : clips) {
            first = std::min(first, clip->place->range.startSeconds);
            last = std::max(last, clip->place->range.endSeconds);
        }
        const auto fitOf = [&](long day, const Cover& cover) {
            Fit fit{0, day};
            for (const Shoot::Clip* clip : clips)
                if (cover.of(clip->place->range)) ++fit.clips;
            return fit;
        };
        // If a day has no sound and no other camera filmed on it, recordings under other clips count, too.
        const bool isAlone = !sound_.byDay.contains(*card.day) &&
                             std::ranges::all_of(clips, [](const auto* clip) { return !clip->primary; });
        const auto candidates = [&](long day) -> const Cover& {
            return isAlone ? sound_.byDay.at(day) : sound_.soundOf(day);
        };
        Fit own{0, *card.day}, other;
        // Recordings within this distance in days are all tried, however many days there are.
        constexpr long farthest = 2;
        for (const auto& [day, cover] : sound_.byDay) {
            if (day == *card.day) {
                own = fitOf(day, cover);
                continue;
            }
            const bool isShifted = shift_ == day - *card.day;
            if (shift_ && !isShifted && cures_.isFarFromClips(day)) continue;
            if (!isShifted && std::abs(day - *card.day) > farthest && sound_.byDay.size() > mostDays)
                continue;
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
        if (sound_.isInPlaceOn(card.folder, own.day, other.day)) return;
        const bool isUnheard = sound_.isUnheardOn(card.folder, own.day, other.day);
        std::set<std::string_view> folders = soundFolders(other.day, clips);
        DayCures::Sound sound{.day = other.day, .isSure = sound_.isHeardOn(card.folder, own.day, other.day)};
        for (const auto& [key, why] : sound_.suspected)
            if (std::get<1>(key) == other.day && why.day == own.day) {
                folders = {std::get<0>(key)};
                sound.isSure = true;
                sound.pattern = sound_.patternOf(key);
            }
        if (folders.size() == 1) sound.folder = *folders.begin();
        const double share = candidates(other.day).shareOf(first, last);
        if (chance::atLeast(other.clips, count, share) > chance::smallest) return;
        int ofOwnDay = 0, silent = 0;
        for (const Shoot::Clip* clip : clips) {
            silent += clip->primary ? 0 : 1;
            const auto found = candidates(other.day).of(clip->place->range);
            if (found && sound_.isOfOwnDay[*found] && !sound_.isHeard(*clip, shoot_.recordings[*found]))
                ++ofOwnDay;
        }
        const bool isOthers = 2 * ofOwnDay > other.clips;
        // Leaves out the clips that have all of their own day's sound and would find none of the other day.
        std::erase_if(clips, [&](const auto* clip) {
            return clip->isCovered && clip->primary && primaryOf(*clip).place.day == own.day &&
                   !candidates(other.day).of(clip->place->range);
        });
        const bool isDated = !isUnheard && !isOthers; // a date is the cure
        DoubtCure cure =
            isUnheard
                ? DoubtCure(DayCures::lookForSoundOf(own.day) + ", or lock the clips whose sound is right")
            : isOthers
                ? DoubtCure(DayCures::lookForSoundOf(own.day) +
                            ", and where the cameras' date is wrong, attach the recordings by hand, or "
                            "lock the clips that have them")
                : cures_.dateOf(own.day, card.folder, sound) +
                      (std::abs(other.day - own.day) == 1 && !cures_.hasClipsOf(other.day) && silent > 0 &&
                               shoot_.input.rules.days != MatchingDays::neighbours
                           ? ", or " + DayCures::neighbouringDays()
                           : DoubtCure()) +
                      "; one of the two dates is wrong";
        const bool isSoundThere = std::ranges::any_of(clips, [&](const Shoot::Clip* clip) {
            return clip->primary && primaryOf(*clip).place.day == other.day;
        });
        for (const Recording& recording : shoot_.recordings)
            if (recording.place.day == other.day && folders.contains(folderOf(*recording.asset)))
                doubts_.recordings.insert(recording.asset->id);
        if (!isUnheard && isSoundThere) cure += "; " + DayCures::sameDayOnly() + " leaves such sound out";
        if (isDated && isSoundThere) cure += cureWords::lock("; lock the clips whose sound is right");
        std::vector<std::pair<const Shoot::Clip*, UUID>> suggested;
        if (isDated && own.clips == 0 && cures_.isFarFromClips(other.day) && cureWords::isForSome(cure))
            suggested = recordingsOf(other.day, clips);
        if (!suggested.empty())
            cure += "; in one document, " + cureWords::asHeard("attach the recordings", "'choice'");
        addCardDoubt(doubts_,
                     {Kind::otherDateFits,
                      "the clips in '" + card.folder + "' are dated " + dayText(own.day) + ", and " +
                          std::to_string(other.clips) + " of " + counted(count, "clip", "clips") +
                          " fit recordings of " + dayText(other.day) + ", " + std::to_string(own.clips) +
                          " those of their own day" +
                          (isOthers    ? "; those recordings overlap clips of their day already"
                           : isUnheard ? "; the cameras' microphones heard nothing of those"
                                       : ""),
                      std::move(cure)},
                     clips);
        for (const Shoot::Clip* clip : clips)
            found_.fittingDays[static_cast<std::size_t>(clip - shoot_.clips.data())] = other.day;
        for (const auto& [clip, recording] : suggested) suggested_[recording].emplace_back(clip, own.day);
    }
    /// A recording that fits clips of several days is suggested for none of them.
    void suggest() {
        for (const auto& [recording, clips] : suggested_) {
            if (std::ranges::any_of(clips,
                                    [&](const auto& clip) { return clip.second != clips.front().second; }))
                continue;
            for (const auto& clip : clips)
                std::ranges::find(doubts_.byGroup[clip.first->group->id], Kind::otherDateFits,
                                  &SyncDoubt::kind)
                    ->suggestion =
                    SyncDoubt::Suggestion{.recordingID = recording, .isAlone = !clip.first->group->isMOS()};
        }
    }

    /// Whether the clip has sound of several days, of which the order of the paths decided the first.
    bool hasSoundOfSeveralDays(const Shoot::Clip& clip, long day) const {
        const auto isOfDay = [&](const AudioMatch& match) {
            const auto found = shoot_.recordingByID.find(match.audio->id);
            return found != shoot_.recordingByID.end() && shoot_.recordings[found->second].place.day == day;
        };
        const auto& matches = clip.group->audioMatches;
        return std::ranges::any_of(matches, isOfDay) && !std::ranges::all_of(matches, isOfDay);
    }
    /// For clips without any sound, and if the recorder counted on, for those with sound of several days: the
    /// only recording of that day that covers the clip by the time of day.
    std::vector<std::pair<const Shoot::Clip*, UUID>>
    recordingsOf(long day, const std::vector<const Shoot::Clip*>& clips) const {
        std::vector<std::pair<const Shoot::Clip*, UUID>> result;
        for (const Shoot::Clip* clip : clips) {
            if (!clip->group->isMOS() &&
                !(shift_ == day - *clip->place->knownDay() && hasSoundOfSeveralDays(*clip, day)))
                continue;
            const auto& range = clip->place->range;
            std::vector<std::size_t> found;
            for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
                if (shoot_.wholes.isFirst(i) && shoot_.wholes.places[i].day == day &&
                    covers(shoot_.wholes.places[i].range, range))
                    found.push_back(i);
            // The channels of a take in mono files count once.
            if (found.empty() ||
                !std::ranges::all_of(found, [&](std::size_t i) { return areChannels(found.front(), i); }))
                continue;
            const double into = range.startSeconds - shoot_.wholes.places[found.front()].range.startSeconds;
            const std::size_t part = shoot_.wholes.partAt(found.front(), into);
            result.emplace_back(clip, shoot_.recordings[part].asset->id);
        }
        return result;
    }

    bool areChannels(std::size_t one, std::size_t other) const {
        constexpr double rounding = 0.01;
        const auto &a = shoot_.wholes.places[one].range, &b = shoot_.wholes.places[other].range;
        return std::abs(a.startSeconds - b.startSeconds) < rounding &&
               std::abs(a.endSeconds - b.endSeconds) < rounding &&
               folderOf(*shoot_.recordings[one].asset) == folderOf(*shoot_.recordings[other].asset);
    }

    /// Folders of the recordings of that day that lie under some of the clips by time of day.
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
    bool hasClockDoubt(const Shoot::Clip& clip) const {
        return doubts_.has(clip.group->id, {Kind::constantOffset, Kind::timecodeRate});
    }

    static constexpr std::size_t mostDays = 8;

    const Shoot& shoot_;
    const DatedSound& sound_;
    DayCures& cures_;
    SyncDoubts& doubts_;
    CardDatesFound found_ = {};
    std::optional<long> shift_; ///< days of recordings with a lost date, less those of the clips
    /// By recording: the clips that it fits, and their days.
    std::map<UUID, std::vector<std::pair<const Shoot::Clip*, long>>> suggested_;
};

} // namespace

CardDatesFound addCardDates(const Shoot& shoot, const DatedSound& sound, DayCures& cures,
                            SyncDoubts& doubts) {
    return CardDates(shoot, sound, cures, doubts).add();
}

} // namespace orvane
