#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/MixedDays.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetWindows.h"
#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"
#include "Timecode/Timecode.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <iterator>
#include <limits>
#include <set>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using TCRange = SyncEngine::TCRange;

constexpr double halfADay = 43200;
constexpr std::size_t mostDays = 8; // of others that are tried for a card, the nearest ones
// Clips times recordings of a card whose offsets are looked at; of more clips, some are enough to find it.
constexpr std::size_t mostPairs = 10'000;

/// An offset that brings the recordings of a card under clips, and how far it may be wrong.
struct CardOffset {
    double seconds = 0;
    double widthSeconds = 0; ///< 0 for what people set clocks wrong by
    int heardClips = 0;      ///< by whose microphones it is known
};

class ClockDoubts {
  public:
    ClockDoubts(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts,
                std::vector<SoundClaim>* toHear)
        : shoot_(shoot), doubts_(doubts), toHear_(toHear), rate_(rateOfLabels(shoot)), cure_(shoot, rate_),
          clips_(clips.all), uncovered_(clips.uncovered),
          isDateGivenToSeveralShoots_(givesDateToSeveralShoots(shoot)) {}

    void add() {
        findDoubtedCards();
        for (const DoubtedCard& one : doubtedCards_)
            if (!one.isPart) offsetOf(one);
        for (const Card& card : camerasCards(shoot_)) {
            platform::throwIfStopped(shoot_.stop);
            offsetOfClips(card);
        }
        for (const DoubtedCard& one : doubtedCards_)
            if (one.isPart) offsetOf(one);
    }

  private:
    /// Recordings whose clock may be wrong.
    struct DoubtedCard {
        Card card;
        std::size_t all = 0;  ///< recordings of the card
        bool isPart = false;  ///< those of a card that lie under no clip, where others lie right
        bool isUnmet = false; ///< few lie under all of a clip, whatever else lies there
    };
    void findDoubtedCards() {
        const RecordersCards recorders(shoot_, clips_);
        const std::vector<std::size_t> beside = besideTheirOwnRecorders();
        isSuspected_.assign(shoot_.recordings.size(), false);
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (const auto day = shoot_.recordings[i].place.day; day && recorders.isRight[i])
                usedDays_.insert(*day);
        for (const Card& card : recorders.cards) {
            const auto& files = card.files;
            const int right = recorders.countOf(files, recorders.isRight);
            if (std::cmp_less_equal(2 * right, files.size())) {
                doubtedCards_.push_back({card, files.size(), false, recorders.isUnmet(card)});
                for (const std::size_t file : files) isSuspected_[file] = true;
            }
            // The clock may have been set anew among them. A second recorder comes first nowhere.
            DoubtedCard part{card, files.size(), true};
            std::erase_if(part.card.files, [&](std::size_t file) { return recorders.isMet[file]; });
            for (const std::size_t file : beside)
                if (isOn(card, shoot_, *shoot_.recordings[file].asset)) {
                    part.card.files.push_back(file);
                    if (std::ranges::find(files, file) == files.end()) ++part.all; // it counted as a channel
                }
            if (std::max(right, recorders.countOf(files, recorders.isFitting)) >= explanation::fewest &&
                std::cmp_greater_equal(part.card.files.size(), explanation::fewest))
                doubtedCards_.push_back(std::move(part));
        }
    }
    /// Recordings that clips have beside one of the same folder and recorder alone, which can't have made two
    /// at one time: of an hour that comes twice.
    std::vector<std::size_t> besideTheirOwnRecorders() const {
        std::vector<bool> isBeside(shoot_.recordings.size()), isHeard(isBeside);
        for (const Shoot::Clip& clip : shoot_.clips) {
            const auto others = ofOtherMoments(*clip.group);
            for (std::size_t i = 0; i < clip.group->audioMatches.size(); ++i)
                if (const auto found = shoot_.recordingByID.find(clip.group->audioMatches[i].audio->id);
                    found != shoot_.recordingByID.end())
                    (std::ranges::find(others, i) != others.end() ? isBeside : isHeard)[found->second] = true;
        }
        std::vector<std::size_t> files;
        for (std::size_t i = 0; i < isBeside.size(); ++i)
            if (isBeside[i] && !isHeard[i]) files.push_back(i);
        return files;
    }
    /// What is to be added to the recording's place to come to the clip's; absent where they are two days and
    /// more apart.
    static std::optional<double> apart(const Shoot::Clip& clip, const FilePlace& sound) {
        double seconds = clip.place->range.startSeconds - sound.range.startSeconds;
        const auto day = clip.likelyDay();
        if (day && sound.day) {
            seconds += static_cast<double>(*day - *sound.day) * secondsADay;
            return std::abs(seconds) < 2 * secondsADay ? std::optional(seconds) : std::nullopt;
        }
        if (seconds > halfADay) seconds -= secondsADay;
        if (seconds < -halfADay) seconds += secondsADay;
        return seconds;
    }

    /// Of a card without a day, and clips without one, all; else those of its day and of the days beside it:
    /// a clock that is hours off changes its date at another time than the cameras do.
    static bool mayMeet(const Card& card, const Shoot::Clip& clip) {
        const auto day = clip.likelyDay();
        return !card.day || !day || (*day >= *card.day - 1 && *day <= *card.day + card.moreDays + 1);
    }
    FilePlace placeOf(const Card& card, std::size_t file) const {
        FilePlace place = shoot_.wholes.places[file];
        if (place.day) *place.day += card.movedByDays;
        return place;
    }
    TCRange laid(const Card& card, std::size_t file) const {
        const FilePlace place = placeOf(card, file);
        return card.day ? onLine(place) : place.range;
    }
    /// Where the clip may lie among what `laid` gives; by the time of day, midnight may lie between the two.
    template <class Accept>
    static bool anyPlace(const Card& card, const Shoot::Clip& clip, const Accept& accept) {
        const TCRange& range = clip.place->range;
        const auto day = clip.likelyDay();
        if (card.day && day) return accept(moved(range, static_cast<double>(*day) * secondsADay));
        const double near = static_cast<double>(card.day.value_or(0)) * secondsADay;
        return accept(moved(range, near)) || accept(moved(range, near - secondsADay)) ||
               accept(moved(range, near + secondsADay));
    }
    /// Whether the clip lies within the hours of the card.
    static bool isWithin(const TCRange& hours, const Card& card, const Shoot::Clip& clip) {
        return anyPlace(card, clip, [&](const TCRange& range) {
            return SyncEngine::overlapDuration(hours, range).has_value();
        });
    }
    TCRange hoursOf(const Card& card, double offset) const {
        TCRange hours{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
        for (const std::size_t file : card.files) {
            const TCRange range = laid(card, file);
            hours.startSeconds = std::min(hours.startSeconds, range.startSeconds);
            hours.endSeconds = std::max(hours.endSeconds, range.endSeconds);
        }
        return moved(hours, offset);
    }

    /// From where one of the two lies under all of the other to where it does so last.
    static std::optional<OffsetWindow> windowOf(const Shoot::Clip& clip, const FilePlace& sound,
                                                std::size_t number) {
        const auto start = apart(clip, sound);
        if (!start) return std::nullopt;
        const double end = *start + clip.place->range.durationSeconds() - sound.range.durationSeconds();
        const auto [first, last] = std::minmax(*start, end);
        return OffsetWindow{first - coverSlackSeconds, last + coverSlackSeconds, *start, number};
    }

    /// What brings the recordings under the clips, where chance does that at most so often. `expectedAt`
    /// gives, for an offset, how many of the clips that are looked at ought to find sound.
    template <class ExpectedAt>
    std::optional<CardOffset> commonOffset(const std::vector<const Shoot::Clip*>& clips,
                                           const std::vector<FilePlace>& sounds, const ExpectedAt& expectedAt,
                                           double mostChance = chance::smallest) const {
        const std::size_t step = clips.size() * sounds.size() / mostPairs + 1;
        std::vector<OffsetWindow> windows;
        std::vector<const Shoot::Clip*> looked;
        for (std::size_t i = 0; i < clips.size(); i += step) {
            for (const FilePlace& sound : sounds)
                if (const auto window = windowOf(*clips[i], sound, looked.size())) windows.push_back(*window);
            looked.push_back(clips[i]);
        }
        if (windows.empty()) return std::nullopt;
        const DeepestOffset best = deepest(windows, looked.size());
        const auto expected = expectedAt(best.seconds, looked);
        if (best.depth < explanation::fewest ||
            best.depth < explanation::majority * static_cast<double>(expected))
            return std::nullopt;

        const auto [offset, isNice] = nicest(windows, looked.size(), best, rate_);
        // By a whole day it is the date that is wrong.
        if (std::abs(offset) > 1 && std::abs(std::remainder(offset, secondsADay)) <= 1) return std::nullopt;
        const auto byChance = chanceOf(windows, best);
        const double niceShare = isNice ? std::min(1.0, best.widthSeconds / niceOffsetStepSeconds) : 1;
        if (byChance * niceShare > mostChance) return std::nullopt;
        return CardOffset{offset, isNice ? 0 : best.likelyWidthSeconds};
    }

    /// By the clips that lack sound; recordings that lie under no clip at all may be those of a second
    /// recorder, and of any day.
    void offsetOf(const DoubtedCard& one) {
        platform::throwIfStopped(shoot_.stop);
        if (one.isUnmet && !one.isPart && isDateAloneWrong(one.card)) return;
        if (offsetAmong(one, one.card, false)) return;
        if (one.isPart) {
            offsetAmong(one, one.card, true);
            return;
        }
        if (!one.isUnmet) return;
        // What was given the date of another shoot lies anywhere.
        if (isDateGivenToSeveralShoots_ || offsetAmong(one, one.card, true) || !one.card.day) return;
        const auto isOutOfReach = [&](const Shoot::Clip& clip) { return !mayMeet(one.card, clip); };
        // Where the date alone is wrong, no hours are to be told.
        if (std::ranges::any_of(onOtherDays(one.card, clips_, isOutOfReach),
                                [&](const Card& card) { return fitsAsItIs(card); }))
            return;
        // A clock whose date and hours are both wrong is rarer, but for one that began anew.
        const double rarer = isDateOfAReset(*one.card.day) ? 1 : chance::smallest;
        for (const bool isForAll : {false, true}) {
            const std::vector<Card> tried =
                onOtherDays(one.card, isForAll ? clips_ : uncovered_, isOutOfReach);
            const double mostChance =
                chance::smallest * rarer / static_cast<double>(std::max<std::size_t>(tried.size(), 1));
            for (const Card& card : tried)
                if (offsetAmong(one, card, isForAll, mostChance)) return;
        }
    }
    /// The first of January, where clocks begin that know no date, weeks from any clip.
    bool isDateOfAReset(long day) const {
        constexpr long weeks = 30;
        const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
        return date.month() == std::chrono::January && date.day() == std::chrono::day(1) &&
               std::ranges::none_of(clips_, [&](const Shoot::Clip* clip) {
                   const auto filmed = clip->likelyDay();
                   return filmed && std::abs(*filmed - day) < weeks;
               });
    }
    /// At its own hours it lies under clips of another day that lack sound. Takes in a rhythm lie under those
    /// of other days at about their hours too, and moving them there would mix the days.
    bool isDateAloneWrong(const Card& card) const {
        if (!card.day) return false;
        const auto isOfOther = [&](const Shoot::Clip& clip) { return !card.isOf(*clip.likelyDay()); };
        return std::ranges::any_of(onOtherDays(card, uncovered_, isOfOther), [&](const Card& other) {
            Cover sound;
            const auto wholes = shoot_.wholes.oneOfEach(other.files);
            for (const std::size_t file : wholes) sound.add(laid(other, file), file);
            sound.finish();
            std::set<std::size_t> used;
            int clips = 0, fitting = 0;
            const TCRange hours = hoursOf(other, 0);
            for (const Shoot::Clip* clip : uncovered_) {
                if (clip->likelyDay() != other.day || !isWithin(hours, other, *clip)) continue;
                ++clips;
                if (const auto found = cover(sound, other, *clip)) {
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
    /// The card on the days of those of the clips, the nearest ones.
    template <class MayBeOf>
    std::vector<Card> onOtherDays(const Card& card, const std::vector<const Shoot::Clip*>& clips,
                                  const MayBeOf& mayBeOf) const {
        std::set<std::pair<long, long>> days; // by how far they are
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
        Cover sound;
        const auto wholes = shoot_.wholes.oneOfEach(card.files);
        for (const std::size_t file : wholes) sound.add(laid(card, file), file);
        sound.finish();
        std::set<std::size_t> used;
        for (const Shoot::Clip* clip : clips_)
            if (const auto found = mayMeet(card, *clip) ? cover(sound, card, *clip) : std::nullopt)
                used.insert(found->whole);
        return static_cast<double>(used.size()) >= explanation::majority * static_cast<double>(wholes.size());
    }
    /// What lies under no clip was not heard, however the rest of the card was.
    bool isHeardInPlace(const DoubtedCard& one, const Card& card) const {
        return !one.isPart && areHeardInPlace(shoot_, [&](const MediaAsset& recording) {
            return isOn(card, shoot_, recording);
        });
    }

    /// Of all clips, those without sound of the recorder itself, which can't have made two recordings at
    /// once.
    bool isSought(const DoubtedCard& one, const Shoot::Clip& clip, bool isForAll) const {
        if (!isForAll || !one.isPart) return isForAll || !clip.isCovered;
        return std::ranges::none_of(clip.group->audioMatches, [&](const AudioMatch& match) {
            return isOn(one.card, shoot_, *match.audio);
        });
    }
    /// `isForAll`: for all clips, not for those alone that lack sound. Whether there is a doubt.
    bool offsetAmong(const DoubtedCard& one, const Card& card, bool isForAll,
                     double mostChance = chance::smallest) {
        std::vector<const Shoot::Clip*> clips;
        for (const Shoot::Clip* clip : isForAll ? clips_ : uncovered_)
            if (mayMeet(card, *clip) && isSought(one, *clip, isForAll) &&
                !(one.isPart && doubts_.has(clip->group->id, {Kind::constantOffset})))
                clips.push_back(clip);
        if (std::cmp_less(clips.size(), explanation::fewest) || isHeardInPlace(one, card)) return false;
        std::vector<FilePlace> sounds;
        for (const std::size_t file : shoot_.wholes.oneOfEach(card.files))
            sounds.push_back(placeOf(card, file));
        const auto common = commonOffset(
            clips, sounds,
            [&](double offset, const std::vector<const Shoot::Clip*>& looked) {
                const TCRange hours = hoursOf(card, offset);
                return std::ranges::count_if(
                    looked, [&](const Shoot::Clip* clip) { return isWithin(hours, card, *clip); });
            },
            mostChance);
        if (!common || (card.movedByDays != 0 && std::abs(common->seconds) >= secondsADay)) return false;
        return addOffset(one, card, *common, isForAll);
    }

    /// A camera's clock against recordings that lie right under the clips of others.
    void offsetOfClips(const Card& card) {
        std::vector<const Shoot::Clip*> clips, covered;
        for (const std::size_t file : card.files) {
            const Shoot::Clip& clip = shoot_.clips[file];
            if (clip.isDecided || clip.group->matchStatus.kind == MatchStatus::Kind::mos) continue;
            if (doubts_.has(clip.group->id, {Kind::constantOffset})) return;
            (clip.isCovered ? covered : clips).push_back(&clip);
        }
        if (std::cmp_less(clips.size(), explanation::fewest)) return;
        if (offsetOfClips(card, clips, covered, std::nullopt, chance::smallest) || !card.day) return;
        // The date of the camera may be wrong as well, though not where its own clips are of that day.
        std::vector<long> days;
        std::ranges::copy_if(usedDays_, std::back_inserter(days),
                             [&](long day) { return !card.isOf(day) && !isFilmedIn(card.folder, day); });
        std::ranges::stable_sort(days, {}, [&](long day) { return std::abs(day - *card.day); });
        days.resize(std::min(days.size(), mostDays));
        for (const long day : days)
            if (offsetOfClips(card, clips, covered, day,
                              chance::smallest * chance::smallest / static_cast<double>(days.size())))
                return;
    }
    bool isFilmedIn(const std::string& folder, long day) const {
        return std::ranges::any_of(clips_, [&](const Shoot::Clip* clip) {
            return clip->likelyDay() == day && folderOf(clip->group->video) == folder;
        });
    }
    /// `soundDay`: of the recordings, which then are tried on the day of the card. Whether there is a doubt.
    bool offsetOfClips(const Card& card, const std::vector<const Shoot::Clip*>& clips,
                       const std::vector<const Shoot::Clip*>& covered, std::optional<long> soundDay,
                       double mostChance) {
        std::vector<FilePlace> sounds;
        std::vector<std::size_t> files;
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (!isSuspected_[i] && (!soundDay || shoot_.recordings[i].place.day == soundDay))
                files.push_back(i);
        files = shoot_.wholes.oneOfEach(files);
        for (const std::size_t file : files) {
            sounds.push_back(shoot_.wholes.places[file]);
            if (soundDay) sounds.back().day = card.day;
        }
        const auto common = commonOffset(
            clips, sounds,
            [](double, const std::vector<const Shoot::Clip*>& looked) { return looked.size(); }, mostChance);
        // By more than a day, it is the date that is wrong first; by nothing, the date alone.
        if (!common || std::abs(common->seconds) >= secondsADay ||
            std::abs(common->seconds) <= coverSlackSeconds)
            return false;
        std::set<std::size_t> used;
        std::vector<const Shoot::Clip*> found;
        for (const Shoot::Clip* clip : clips) {
            const auto sound = std::ranges::find_if(sounds, [&](const FilePlace& place) {
                const auto window = windowOf(*clip, place, 0);
                return window && window->first <= common->seconds && common->seconds <= window->last;
            });
            if (sound == sounds.end()) continue;
            found.push_back(clip);
            const double into = apart(*clip, *sound).value_or(0) - common->seconds;
            used.insert(shoot_.wholes.partAt(files[static_cast<std::size_t>(sound - sounds.begin())], into));
        }
        if (std::cmp_less(used.size(), explanation::fewest) ||
            static_cast<double>(found.size()) <= explanation::clearly * static_cast<double>(covered.size()))
            return false;
        const std::size_t matched = found.size();
        found.insert(found.end(), covered.begin(), covered.end());
        std::ranges::sort(found); // in the order of the clips
        const Card scan{
            card.folder, soundDay ? card.day : std::nullopt, {}, soundDay ? *card.day - *soundDay : 0};
        addCardDoubt(
            doubts_,
            {Kind::constantOffset,
             "the clips in '" + card.folder + "' are " +
                 (soundDay ? "dated " + dayText(*card.day) + " instead of " + dayText(*soundDay) + " and "
                           : std::string()) +
                 spanText(std::abs(common->seconds)) + (common->seconds > 0 ? " late" : " early") +
                 " against recordings that fit other clips: with these moved by that, " +
                 std::to_string(matched) + " of " + counted(clips.size(), "clip", "clips") +
                 " without all of their sound would match" + knownTo(*common),
             cure_.of(scan, common->seconds).in(cure_.scanOfClips(scan)) +
                 (soundDay ? " if a clap shows it, else look for the sound of " + dayText(*card.day) : "") +
                 clapAfter(*common)},
            found);
        return true;
    }

    /// Of offsets that people do not set clocks by, all within the width fit as well.
    bool isGuess(const CardOffset& common) const {
        return common.widthSeconds * timecodeRate::frameRateForRealTimeCalculation(rate_) > 1;
    }
    std::string knownTo(const CardOffset& common) const {
        return isGuess(common) ? "; the offset is known to " + spanText(common.widthSeconds) + " only" : "";
    }
    std::string clapAfter(const CardOffset& common) const {
        return isGuess(common) ? "; then check a clap and set the frames" : "";
    }

    static constexpr const char* notListened = "listen before anything is moved ('diagnose' does): room tone "
                                               "and wild tracks that were made after the "
                                               "takes are right where they are";
    /// What is recorded after each take by habit lies behind all of them by about as much. No call is
    /// offered: it would lay such sound under clips that are right.
    static DoubtCure notToBeMoved() {
        const std::string unless =
            "only where one clap in both shows it; room tone and wild tracks that were "
            "made after the takes are right where they are";
        return DoubtCure::Words{"give this as --sound-offset " + unless, "move them " + unless};
    }

    bool addOffset(const DoubtedCard& one, const Card& card, const CardOffset& common, bool isForAll) {
        const double offset = common.seconds;
        Cover as, shifted;
        const auto wholes = shoot_.wholes.oneOfEach(card.files);
        for (const std::size_t file : wholes) {
            as.add(laid(card, file), file);
            shifted.add(moved(laid(card, file), offset), file);
        }
        as.finish();
        shifted.finish();
        const TCRange hours = hoursOf(card, offset);
        int now = 0, all = 0, matched = 0;
        double withoutSound = 0;
        std::set<std::size_t> used, usedNow, parts;
        std::vector<const Shoot::Clip*> doubted; // with those that have sound of the card by chance
        ClaimedOffset claimed(shoot_, common.widthSeconds / 2);
        for (const Shoot::Clip* clip : clips_) {
            const bool mayMatch = mayMeet(card, *clip), isLooked = isSought(one, *clip, isForAll);
            if (const auto sound = mayMatch ? cover(as, card, *clip) : std::nullopt) {
                now += one.isPart ? 0 : 1; // where such recordings lie, others are heard
                usedNow.insert(sound->whole);
            }
            if (mayMatch && isLooked && isWithin(hours, card, *clip)) ++withoutSound;
            const auto sound = mayMatch ? cover(shifted, card, *clip) : std::nullopt;
            if (sound) ++all;
            if (sound && isLooked) {
                ++matched;
                used.insert(sound->whole);
                const double start =
                    laid(card, sound->whole).startSeconds + offset - sound->clip.startSeconds;
                const std::size_t part = shoot_.wholes.partAt(sound->whole, -start);
                parts.insert(part);
                claimed.add(*clip, part, start + shoot_.wholes.startsAt[part]);
                doubted.push_back(clip);
            } else if (!one.isPart && clip->primary &&
                       isOn(card, shoot_, *shoot_.recordings[*clip->primary].asset)) {
                doubted.push_back(clip);
            }
        }
        // A lock takes a clip out of doubt, not out of what speaks for the clock.
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (!clip.isDecided || !clip.place || clip.group->isExcludedFromExport || !mayMeet(card, clip))
                continue;
            if (!one.isPart && cover(as, card, clip)) ++now;
            if (cover(shifted, card, clip)) ++all;
        }
        if (std::cmp_less(parts.size(), explanation::fewest) || all <= explanation::clearly * now ||
            matched < explanation::majority * withoutSound)
            return false;
        const auto recordings = static_cast<long long>(wholes.size());
        if (isForAll &&
            static_cast<double>(used.size()) < explanation::majority * static_cast<double>(recordings))
            return false;
        const auto heard = common.heardClips == 0 ? claimed.heard(toHear_)
                                                  : ClaimedOffset::Heard{.clips = common.heardClips};
        // Room tone and wild tracks lie behind takes by about as much, and under the clips of those nowhere.
        if (heard.isRefuted && (claimed.isSoundOfClipsInPlace() || (!isForAll && isGuess(common))))
            return false;
        if (heard.correctionSeconds &&
            (isGuess(common) || std::abs(*heard.correctionSeconds) >= leastByHandSeconds) &&
            addOffset(one, card, {offset + *heard.correctionSeconds, 0, heard.clips}, isForAll))
            return true;
        const int lost = lostBy(one, card, offset);
        std::string text = nameOf(one) + " are ";
        if (card.movedByDays != 0)
            text += "dated " + dayText(*card.day - card.movedByDays) + " instead of " + dayText(*card.day) +
                    " and ";
        text += spanText(std::abs(offset)) + (offset < 0 ? " late" : " early") +
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
        DoubtCure cure =
            cure_.of(card, offset).in(lost > 0 ? cure_.scanOfRecordings(card, one.isPart) : std::nullopt) +
            clapAfter(common) + (lost > 0 && (isForAll || !one.isPart) ? cure_.forOtherSound(one.card) : "");
        const bool mayBeRoomTone = isForAll && isGuess(common);
        if (mayBeRoomTone && heard.isRefuted)
            text += "; the microphones of the cameras heard nothing of them there";
        if (heard.isUnasked && isGuess(common) && lost > 0)
            cure = notListened;
        else if (mayBeRoomTone && (heard.isRefuted || (lost > 0 && !heard.isConfirmed())))
            cure = notToBeMoved();
        SyncDoubt doubt{Kind::constantOffset, text + knownTo(common), std::move(cure)};
        if (!isToldLikewise(doubts_, doubt, doubted, nameOf(one)))
            addCardDoubt(doubts_, std::move(doubt), doubted);
        return true;
    }
    std::string nameOf(const DoubtedCard& one) const {
        if (!one.isPart) return nameOfCard(one.card, shoot_);
        const auto file = [&](std::size_t i) { return shoot_.nameOf(*shoot_.recordings[i].asset); };
        return std::to_string(one.card.files.size()) + " of " + std::to_string(one.all) + " recordings in '" +
               one.card.folder + "' (" + file(one.card.files.front()) + " to " + file(one.card.files.back()) +
               ")";
    }
    struct Covered {
        std::size_t whole; ///< a file of the recording
        TCRange clip;      ///< where the clip lies among the recordings
    };
    static std::optional<Covered> cover(const Cover& sound, const Card& card, const Shoot::Clip& clip) {
        std::optional<Covered> found;
        anyPlace(card, clip, [&](const TCRange& range) {
            if (const auto whole = sound.ofEither(range)) found = Covered{*whole, range};
            return found.has_value();
        });
        return found;
    }
    /// How many clips would lose their sound if all recordings moved. What lies on a card whose clock is
    /// wrong as well has its sound by chance, unless its clock is right for some of it.
    int lostBy(const DoubtedCard& one, const Card& card, double offset) const {
        return static_cast<int>(std::ranges::count_if(clips_, [&](const Shoot::Clip* clip) {
            if (!clip->isCovered || !clip->primary) return false;
            if (!one.isPart && isSuspected_[*clip->primary]) return false;
            const auto recorded = shoot_.recordings[*clip->primary].place.day;
            return (card.movedByDays != 0 && !(recorded && card.isOf(*recorded))) ||
                   !isCovered(*clip->group, clip->place->range.durationSeconds(), offset);
        }));
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    std::vector<SoundClaim>* toHear_;
    TimecodeFrameRate rate_;
    OffsetCure cure_;
    const std::vector<const Shoot::Clip*>& clips_;
    const std::vector<const Shoot::Clip*>& uncovered_;
    std::vector<DoubtedCard> doubtedCards_;
    std::vector<bool> isSuspected_; ///< by recording, of a card that lies under few clips
    std::set<long> usedDays_;       ///< of the recordings that lie right
    bool isDateGivenToSeveralShoots_;
};

} // namespace

void addClockDoubts(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>* toHear) {
    const TimedClips clips(shoot);
    ClockDoubts clocks(shoot, clips, doubts, toHear);
    addGivenRateDoubt(shoot, clips, doubts);
    if (std::cmp_greater_equal(clips.uncovered.size(), explanation::fewest) &&
        addRateDoubt(shoot, clips, doubts))
        return;
    clocks.add();
    if (clips.uncovered.empty()) return;
    addRepeatDoubts(shoot, clips, doubts);
    addLongRecordings(shoot, clips, doubts);
}

} // namespace orvane
