#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetWindows.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"
#include "Timecode/Timecode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using TCRange = SyncEngine::TCRange;

constexpr double halfADay = 43200;
constexpr int fewest = 3;        // of clips, and of recordings that they find
constexpr double majority = 0.6; // of the clips without sound
// An explanation must find sound for so many times the clips that have theirs without it.
constexpr double clearly = 1.5;
// Clips times recordings of a card whose offsets are looked at; of more clips, some are enough to find it.
constexpr std::size_t mostPairs = 10'000;
// Nice offsets may serve a little fewer clips than the best one: a clip may begin before its sound.
constexpr double nearlyAll = 0.9;

TCRange moved(const TCRange& range, double seconds) {
    return {range.startSeconds + seconds, range.endSeconds + seconds};
}

/// How many clips an explanation finds sound for, and how many recordings it takes for that.
struct Found {
    int clips = 0;
    int recordings = 0;
};

/// An offset that is claimed, and how far it may be wrong.
struct Claim {
    double seconds = 0;
    double widthSeconds = 0; ///< 0 for what people set clocks wrong by
};

TCRange onLine(const FilePlace& place) {
    return moved(place.range, static_cast<double>(place.day.value_or(0)) * secondsADay);
}

/// Dated files cover dated ones where their days and times meet; where one of the two has no date, the time
/// of day counts.
class Covers {
  public:
    void add(const FilePlace& sound, std::size_t item) {
        (sound.day ? dated_ : undated_).add(onLine(sound), item);
        all_.add(sound.range, item);
    }
    void finish() {
        for (Cover* cover : {&dated_, &undated_, &all_}) cover->finish();
    }
    std::optional<std::size_t> of(const FilePlace& clip) const {
        if (!clip.day) return all_.of(clip.range);
        const auto found = dated_.of(onLine(clip));
        return found ? found : undated_.of(clip.range);
    }

  private:
    Cover dated_, undated_, all_;
};

class ClockDoubts {
  public:
    ClockDoubts(const Shoot& shoot, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts),
          rate_(shoot.input.rules.timecodeRate.value_or(rateOfMostClips(shoot.input.groups))) {
        for (const Shoot::Clip& clip : shoot.clips) {
            if (!clip.place || clip.isDecided) continue;
            if (clip.group->matchStatus.kind == MatchStatus::Kind::mos) continue;
            clips_.push_back(&clip);
            if (!clip.isCovered) uncovered_.push_back(&clip);
        }
    }

    void add() {
        if (std::cmp_less(uncovered_.size(), fewest)) return;
        if (const auto rate = otherRate()) return tellRate(*rate);
        std::vector<bool> isRight(shoot_.recordings.size()); // it lies under all of a clip where it is
        for (const Shoot::Clip* clip : clips_)
            if (clip->isCovered && clip->primary) isRight[*clip->primary] = true;
        std::vector<Card> wrong = cards();
        std::erase_if(wrong, [&](const Card& card) {
            const auto right =
                std::ranges::count_if(card.files, [&](std::size_t file) { return isRight[file]; });
            return std::cmp_greater(2 * right, card.files.size());
        });
        isSuspected_.assign(shoot_.recordings.size(), false);
        for (const Card& card : wrong)
            for (const std::size_t file : card.files) isSuspected_[file] = true;
        for (const Card& card : wrong) {
            platform::throwIfStopped(shoot_.stop);
            offsetOf(card);
        }
        for (const Card& card : cardsOf(shoot_.clips)) {
            platform::throwIfStopped(shoot_.stop);
            offsetOfClips(card);
        }
    }

  private:
    // --- a wrong rate

    struct Rate {
        TimecodeFrameRate rate;
        int found;
    };

    /// The rate of a shoot at which most clips without sound find it, where labels that count alike were read
    /// at another: 23.976 as 24, drop frame as non-drop.
    std::optional<Rate> otherRate() const {
        const double now = static_cast<double>(clips_.size() - uncovered_.size());
        if (static_cast<double>(clips_.size()) <= clearly * now) return std::nullopt;
        const double share = soundShare();
        std::optional<Rate> best;
        int most = fewest - 1;
        using enum TimecodeFrameRate;
        for (const auto candidate :
             {fps23_976, fps24, fps29_97, fps29_97d, fps30, fps47_952, fps48, fps59_94, fps59_94d, fps60}) {
            if (candidate == shoot_.input.rules.timecodeRate ||
                timecodeRate::maxFrames(candidate) != timecodeRate::maxFrames(rate_))
                continue;
            platform::throwIfStopped(shoot_.stop);
            const auto [all, without] = foundAt(candidate);
            if (without.clips <= most || without.recordings < fewest) continue;
            if (without.clips < majority * static_cast<double>(uncovered_.size()) ||
                all.clips <= clearly * now ||
                chance::atLeast(without.clips, static_cast<int>(uncovered_.size()), share) > chance::smallest)
                continue;
            most = without.clips;
            best = Rate{candidate, without.clips};
        }
        return best;
    }
    /// Of all clips, and of those without sound.
    std::pair<Found, Found> foundAt(TimecodeFrameRate rate) const {
        MatchRules rules = shoot_.input.rules;
        rules.timecodeRate = rate;
        Places places(rules);
        Covers covers;
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (auto place = places.of(*shoot_.recordings[i].asset)) {
                place->day = shoot_.recordings[i].place.day;
                covers.add(*place, i);
            }
        covers.finish();
        std::set<std::size_t> used;
        Found all, without;
        for (const Shoot::Clip* clip : clips_) {
            auto place = places.of(clip->group->video);
            if (place) place->day = clip->place->day;
            const auto sound = place ? covers.of(*place) : std::nullopt;
            if (!sound) continue;
            ++all.clips;
            if (clip->isCovered) continue;
            ++without.clips;
            used.insert(*sound);
        }
        without.recordings = static_cast<int>(used.size());
        return {all, without};
    }
    /// The share of the hours of the clips during which there is sound.
    double soundShare() const {
        Cover cover;
        double first = std::numeric_limits<double>::infinity(), last = -first;
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            cover.add(shoot_.recordings[i].place.range, i);
        cover.finish();
        for (const Shoot::Clip* clip : clips_) {
            first = std::min(first, clip->place->range.startSeconds);
            last = std::max(last, clip->place->range.endSeconds);
        }
        return cover.shareOf(first, last);
    }
    void tellRate(const Rate& rate) {
        const std::string text = rateText(rate.rate);
        addCardDoubt(doubts_,
                     {Kind::timecodeRate,
                      "clips and recordings drift apart with the time of day; with timecode that counts " +
                          text + " frames a second, " + std::to_string(rate.found) + " of " +
                          counted(static_cast<long long>(uncovered_.size()), "clip", "clips") +
                          " without all of their sound would match",
                      "--tc-rate " + text},
                     uncovered_);
    }

    // --- a wrong clock

    /// What is in one folder and of one day, without the files that are copies or channels of others. Of
    /// recorders that make a folder for each take, what lies in one folder above. Clips of which none has a
    /// day meet the recordings of all days, which then make one card.
    std::vector<Card> cards() const {
        const bool areClipsDated = std::ranges::any_of(
            clips_, [](const Shoot::Clip* clip) { return clip->likelyDay().has_value(); });
        std::map<std::pair<std::string, std::optional<long>>, std::vector<std::size_t>> joined;
        std::vector<Card> result;
        std::vector<Card> all = cardsOf(shoot_.recordings);
        if (!areClipsDated) all = withoutDays(std::move(all));
        for (Card& card : all) {
            keepOneOfATake(card.files);
            if (std::cmp_less(card.files.size(), fewest)) {
                auto& files = joined[{card.folder.substr(0, card.folder.rfind('/')), card.day}];
                files.insert(files.end(), card.files.begin(), card.files.end());
            } else {
                result.push_back(std::move(card));
            }
        }
        for (auto& [key, files] : joined)
            if (std::cmp_greater_equal(files.size(), fewest))
                result.push_back({key.first, key.second, std::move(files)});
        return result;
    }
    static std::vector<Card> withoutDays(std::vector<Card> cards) {
        std::vector<Card> result;
        for (Card& card : cards) {
            if (result.empty() || result.back().folder != card.folder)
                result.push_back({std::move(card.folder), std::nullopt, {}});
            auto& files = result.back().files;
            files.insert(files.end(), card.files.begin(), card.files.end());
        }
        return result;
    }
    void keepOneOfATake(std::vector<std::size_t>& files) const {
        const auto rangeOf = [&](std::size_t i) {
            const TCRange& range = shoot_.recordings[i].place.range;
            return std::pair(std::round(range.startSeconds), std::round(range.endSeconds));
        };
        std::ranges::stable_sort(files, {}, rangeOf);
        const auto copies = std::ranges::unique(files, {}, rangeOf);
        files.erase(copies.begin(), copies.end());
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
        return !card.day || !day || std::abs(*card.day - *day) <= 1;
    }
    TCRange laid(const Card& card, std::size_t file) const {
        const FilePlace& place = shoot_.recordings[file].place;
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
        return OffsetWindow{first - coverSlackSeconds, last + coverSlackSeconds, number};
    }

    /// What brings the recordings under the clips, where it is no chance. `expectedAt` gives, for an offset,
    /// how many of the clips that are looked at ought to find sound.
    template <class ExpectedAt>
    std::optional<Claim> commonOffset(const std::vector<const Shoot::Clip*>& clips,
                                      const std::vector<std::size_t>& files,
                                      const ExpectedAt& expectedAt) const {
        const std::size_t step = clips.size() * files.size() / mostPairs + 1;
        std::vector<OffsetWindow> windows;
        std::vector<const Shoot::Clip*> looked;
        for (std::size_t i = 0; i < clips.size(); i += step) {
            for (const std::size_t file : files)
                if (const auto window = windowOf(*clips[i], shoot_.recordings[file].place, looked.size()))
                    windows.push_back(*window);
            looked.push_back(clips[i]);
        }
        if (windows.empty()) return std::nullopt;
        const DeepestOffset best = deepest(windows, looked.size());
        const auto expected = expectedAt(best.seconds, looked);
        if (best.depth < fewest || best.depth < majority * static_cast<double>(expected)) return std::nullopt;

        const auto [offset, isNice] = nicest(windows, looked.size(), best);
        // By a whole day it is the date that is wrong.
        if (std::abs(offset) > 1 && std::abs(std::remainder(offset, secondsADay)) <= 1) return std::nullopt;
        const auto byChance = chanceOf(windows, best);
        const double niceShare = isNice ? std::min(1.0, best.widthSeconds / niceStepSeconds) : 1;
        if (byChance * niceShare > chance::smallest) return std::nullopt;
        return Claim{offset, isNice ? 0 : best.widthSeconds};
    }

    void offsetOf(const Card& card) {
        std::vector<const Shoot::Clip*> clips;
        for (const Shoot::Clip* clip : uncovered_)
            if (mayMeet(card, *clip)) clips.push_back(clip);
        const auto claim = commonOffset(
            clips, card.files, [&](double offset, const std::vector<const Shoot::Clip*>& looked) {
                const TCRange hours = hoursOf(card, offset);
                return std::ranges::count_if(
                    looked, [&](const Shoot::Clip* clip) { return isWithin(hours, card, *clip); });
            });
        if (claim) tellOffset(card, *claim);
    }

    /// A camera's clock against recordings that lie right under the clips of others.
    void offsetOfClips(const Card& card) {
        std::vector<const Shoot::Clip*> clips;
        int covered = 0;
        for (const std::size_t file : card.files) {
            const Shoot::Clip& clip = shoot_.clips[file];
            if (clip.isDecided || clip.group->matchStatus.kind == MatchStatus::Kind::mos) continue;
            const auto told = doubts_.byGroup.find(clip.group->id);
            if (told != doubts_.byGroup.end() &&
                std::ranges::count(told->second, Kind::constantOffset, &SyncDoubt::kind) > 0)
                return;
            if (clip.isCovered)
                ++covered;
            else
                clips.push_back(&clip);
        }
        if (std::cmp_less(clips.size(), fewest)) return;
        std::vector<std::size_t> files;
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (!isSuspected_[i]) files.push_back(i);
        const auto claim =
            commonOffset(clips, files,
                         [](double, const std::vector<const Shoot::Clip*>& looked) { return looked.size(); });
        if (!claim) return;
        std::set<std::size_t> used;
        std::vector<const Shoot::Clip*> found;
        for (const Shoot::Clip* clip : clips) {
            const auto sound = std::ranges::find_if(files, [&](std::size_t file) {
                const auto window = windowOf(*clip, shoot_.recordings[file].place, 0);
                return window && window->first <= claim->seconds && claim->seconds <= window->last;
            });
            if (sound == files.end()) continue;
            found.push_back(clip);
            used.insert(*sound);
        }
        if (std::cmp_less(used.size(), fewest) || static_cast<double>(found.size()) <= clearly * covered)
            return;
        std::vector<std::string> others;
        for (const Shoot::Clip& clip : shoot_.clips) others.push_back(clip.group->video.url.path);
        addCardDoubt(doubts_,
                     {Kind::constantOffset,
                      "the clips in '" + card.folder + "' are " + spanText(std::abs(claim->seconds)) +
                          (claim->seconds > 0 ? " late" : " early") +
                          " against recordings that fit other clips: with these moved by that, " +
                          std::to_string(found.size()) + " of " +
                          counted(static_cast<long long>(clips.size()), "clip", "clips") +
                          " without all of their sound would match" + knownTo(*claim),
                      cureOf({card.folder, std::nullopt, {}}, claim->seconds) + inAScanOf(card, others) +
                          clapAfter(*claim)},
                     found);
    }

    /// Of offsets that people do not set clocks by, all within the width fit as well.
    bool isGuess(const Claim& claim) const {
        return claim.widthSeconds * timecodeRate::frameRateForRealTimeCalculation(rate_) > 1;
    }
    std::string knownTo(const Claim& claim) const {
        return isGuess(claim) ? "; the offset is known to " + spanText(claim.widthSeconds) + " only" : "";
    }
    std::string clapAfter(const Claim& claim) const {
        return isGuess(claim) ? "; then check a clap and set the frames" : "";
    }

    static constexpr double niceStepSeconds = 1800;

    /// Whole hours go before half ones, these before whole seconds: of all offsets that find sound for the
    /// same clips, what people set their clocks wrong by.
    std::pair<double, bool> nicest(const std::vector<OffsetWindow>& windows, std::size_t clipCount,
                                   const DeepestOffset& best) const {
        constexpr double anHour = 3600;
        const double hourOfLabels = labelSeconds(anHour);
        std::optional<std::pair<double, bool>> nice;
        int most = static_cast<int>(std::ceil(nearlyAll * best.depth));
        const auto propose = [&](double offset) {
            if (std::abs(offset) < 1) return;
            const int depth = depthAt(windows, clipCount, offset);
            if (depth < most) return;
            most = depth + 1; // a later one must find more
            nice = {offset, true};
        };
        constexpr int hours = 24;
        for (const double step : {anHour, hourOfLabels, anHour / 2, hourOfLabels / 2})
            for (const int near : {-1, 0, 1}) {
                const double count = std::round(best.seconds / step) + near;
                if (std::abs(count) <= 2 * hours) propose(count * step);
            }
        if (nice) return *nice;
        const double whole = std::round(best.seconds);
        const bool fits = std::abs(whole - best.seconds) <= best.widthSeconds / 2;
        return {fits ? whole : best.seconds, false};
    }
    /// How long the clips' labels take to count that many seconds.
    double labelSeconds(double seconds) const {
        const auto count = static_cast<std::int64_t>(seconds);
        return Timecode({0, 0, 0, count, 0, 0}, rate_).realTimeValue();
    }

    void tellOffset(const Card& card, const Claim& claim) {
        const double offset = claim.seconds;
        Cover as, shifted;
        for (const std::size_t file : card.files) {
            as.add(laid(card, file), file);
            shifted.add(moved(laid(card, file), offset), file);
        }
        as.finish();
        shifted.finish();
        const TCRange hours = hoursOf(card, offset);
        int now = 0, all = 0;
        double withoutSound = 0;
        std::set<std::size_t> used;
        std::vector<const Shoot::Clip*> found;
        for (const Shoot::Clip* clip : clips_) {
            if (!mayMeet(card, *clip)) continue;
            if (cover(as, card, *clip)) ++now;
            if (!clip->isCovered && isWithin(hours, card, *clip)) ++withoutSound;
            const auto sound = cover(shifted, card, *clip);
            if (!sound) continue;
            ++all;
            if (clip->isCovered) continue;
            found.push_back(clip);
            used.insert(*sound);
        }
        if (std::cmp_less(used.size(), fewest) || all <= clearly * now ||
            static_cast<double>(found.size()) < majority * withoutSound)
            return;
        const int lost = lostBy(offset);
        addCardDoubt(
            doubts_,
            {Kind::constantOffset,
             "the recordings in '" + card.folder + "' are " + spanText(std::abs(offset)) +
                 (offset < 0 ? " late" : " early") + " against the clips: moved by that, " +
                 std::to_string(found.size()) + " of " +
                 counted(static_cast<long long>(withoutSound), "clip", "clips") +
                 " without all of their sound would match" +
                 (lost > 0 ? ", and " + counted(lost, "clip", "clips") + " would lose other sound" : "") +
                 knownTo(claim),
             cureOf(card, offset) + (lost > 0 ? inAScanOf(card, recordingPaths()) : "") + clapAfter(claim)},
            found);
    }
    static std::optional<std::size_t> cover(const Cover& sound, const Card& card, const Shoot::Clip& clip) {
        std::optional<std::size_t> found;
        anyPlace(card, clip,
                 [&](const TCRange& range) { return (found = sound.ofEither(range)).has_value(); });
        return found;
    }
    /// How many clips would lose their sound if all recordings moved. What lies on a card whose clock is
    /// wrong as well has its sound by chance.
    int lostBy(double offset) const {
        return static_cast<int>(std::ranges::count_if(clips_, [&](const Shoot::Clip* clip) {
            return clip->isCovered && clip->primary && !isSuspected_[*clip->primary] &&
                   !isCovered(*clip->group, clip->place->range.durationSeconds(), offset);
        }));
    }
    /// Offsets are given up to a day; what is more goes into the date.
    std::string cureOf(const Card& card, double offset) const {
        double total = offset + shoot_.input.rules.soundOffsetSeconds;
        const double halfAFrame = 0.5 / timecodeRate::frameRateForRealTimeCalculation(rate_);
        std::string date;
        if (std::abs(total) >= secondsADay - halfAFrame) {
            const double days = std::round(total / secondsADay);
            total -= days * secondsADay;
            // Without a date the time of day is all that counts.
            if (card.day) date = "--sound-date " + dayText(*card.day + static_cast<long>(days));
            if (card.day && std::abs(total) < halfAFrame) return date;
        }
        return date + (date.empty() ? "" : " ") + "--sound-offset " + offsetText(total, rate_);
    }
    std::vector<std::string> recordingPaths() const {
        std::vector<std::string> paths;
        for (const Recording& recording : shoot_.recordings) paths.push_back(recording.asset->url.path);
        return paths;
    }
    /// With the folders of the other files, by the names in which their paths begin to differ.
    static std::string inAScanOf(const Card& card, const std::vector<std::string>& paths) {
        std::set<std::string> others;
        for (const std::string& path : paths) {
            const auto own = std::ranges::mismatch(card.folder + "/", path).in2;
            const auto first = std::find(std::make_reverse_iterator(own), path.rend(), '/').base();
            const auto last = std::find(first, path.end(), '/');
            if (own != path.end() && last != path.end() && !path.starts_with(card.folder + "/"))
                others.insert(std::string(first, last));
        }
        constexpr std::size_t most = 3;
        std::string options;
        for (const std::string& other : others)
            if (options.empty() || others.size() <= most) options += " --exclude '" + other + "'";
        if (options.empty() || others.size() > most) options = " --exclude with the folders of the others";
        return " in a scan of this card alone (" + options.substr(1) + ")";
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    TimecodeFrameRate rate_;
    std::vector<const Shoot::Clip*> clips_;
    std::vector<const Shoot::Clip*> uncovered_;
    std::vector<bool> isSuspected_; ///< by recording, of a card that lies under few clips
};

} // namespace

void addClockDoubts(const Shoot& shoot, SyncDoubts& doubts) { ClockDoubts(shoot, doubts).add(); }

} // namespace orvane
