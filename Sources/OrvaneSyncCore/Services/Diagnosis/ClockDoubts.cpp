#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
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

constexpr double secondsADay = 86400;
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

/// An offset of one card's recordings.
struct Offset {
    double seconds = 0;
    int depth = 0;           ///< clips that it finds sound for, of those that were looked at
    double widthSeconds = 0; ///< how far it may move and still find the same
};

/// Offsets by which one recording comes to lie under one clip.
struct Window {
    double first, last;
    std::size_t clip;
};

Offset deepest(const std::vector<Window>& windows, std::size_t clipCount) {
    struct Edge {
        double at;
        bool isEnd;
        std::size_t clip;
    };
    std::vector<Edge> edges;
    edges.reserve(2 * windows.size());
    for (const Window& window : windows) {
        edges.push_back({window.first, false, window.clip});
        edges.push_back({window.last, true, window.clip});
    }
    std::ranges::sort(
        edges, [](const Edge& a, const Edge& b) { return a.at != b.at ? a.at < b.at : a.isEnd < b.isEnd; });
    std::vector<int> open(clipCount);
    Offset best;
    int depth = 0;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        int& count = open[edges[i].clip];
        if (edges[i].isEnd) {
            if (--count == 0) --depth;
            continue;
        }
        if (count++ == 0) ++depth;
        if (depth <= best.depth || i + 1 >= edges.size()) continue;
        const double width = edges[i + 1].at - edges[i].at;
        best = {edges[i].at + width / 2, depth, width};
    }
    return best;
}

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
        : shoot_(shoot), doubts_(doubts), rate_(rateOfMostClips(shoot.input.groups)) {
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
        for (const auto& card : cards()) {
            platform::throwIfStopped(shoot_.stop);
            const auto right =
                std::ranges::count_if(card.files, [&](std::size_t file) { return isRight[file]; });
            if (std::cmp_less_equal(2 * right, card.files.size())) offsetOf(card);
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
            if (const auto place = places.of(*shoot_.recordings[i].asset)) covers.add(*place, i);
        covers.finish();
        std::set<std::size_t> used;
        Found all, without;
        for (const Shoot::Clip* clip : clips_) {
            const auto place = places.of(clip->group->video);
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
    static std::string rateText(TimecodeFrameRate rate) {
        std::string text =
            formatted("%.6g", std::round(timecodeRate::rate(rate).doubleValue() * 1000) / 1000);
        if (text == "29.97" || text == "59.94" || text == "119.88")
            text += timecodeRate::isDrop(rate) ? "DF" : "NDF";
        return text;
    }

    // --- a wrong clock

    /// What is in one folder and of one day, without the files that are copies or channels of others. Of
    /// recorders that make a folder for each take, what lies in one folder above.
    std::vector<Card> cards() const {
        std::map<std::pair<std::string, std::optional<long>>, std::vector<std::size_t>> joined;
        std::vector<Card> result;
        for (Card& card : cardsOf(shoot_.recordings)) {
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
    void keepOneOfATake(std::vector<std::size_t>& files) const {
        const auto rangeOf = [&](std::size_t i) {
            const TCRange& range = shoot_.recordings[i].place.range;
            return std::pair(std::round(range.startSeconds), std::round(range.endSeconds));
        };
        std::ranges::stable_sort(files, {}, rangeOf);
        const auto copies = std::ranges::unique(files, {}, rangeOf);
        files.erase(copies.begin(), copies.end());
    }

    /// What is to be added to the recording's place to come to the clip's; absent where their dates are a day
    /// and more apart.
    static std::optional<double> apart(const FilePlace& clip, const FilePlace& sound) {
        double seconds = clip.range.startSeconds - sound.range.startSeconds;
        if (clip.day && sound.day) {
            seconds += static_cast<double>(*clip.day - *sound.day) * secondsADay;
            return std::abs(seconds) <= secondsADay ? std::optional(seconds) : std::nullopt;
        }
        if (seconds > halfADay) seconds -= secondsADay;
        if (seconds < -halfADay) seconds += secondsADay;
        return seconds;
    }

    /// Of a card without a day, and clips without one, all.
    static bool mayMeet(const Card& card, const Shoot::Clip& clip) {
        return !card.day || !clip.place->day || *card.day == *clip.place->day;
    }

    void offsetOf(const Card& card) {
        std::vector<const Shoot::Clip*> clips;
        for (const Shoot::Clip* clip : uncovered_)
            if (mayMeet(card, *clip)) clips.push_back(clip);
        const std::size_t step = clips.size() * card.files.size() / mostPairs + 1;
        std::vector<Window> windows;
        std::size_t looked = 0;
        for (std::size_t i = 0; i < clips.size(); i += step, ++looked)
            for (const std::size_t file : card.files) {
                const FilePlace &clip = *clips[i]->place, &sound = shoot_.recordings[file].place;
                const auto start = apart(clip, sound);
                if (!start) continue;
                const double spare = sound.range.durationSeconds() - clip.range.durationSeconds();
                const Window window{*start - spare - coverSlackSeconds, *start + coverSlackSeconds, looked};
                if (window.first <= window.last) windows.push_back(window);
            }
        if (windows.empty()) return;
        const Offset best = deepest(windows, looked);
        if (best.depth < fewest || best.depth < majority * static_cast<double>(looked)) return;

        const auto [offset, isNice] = nicest(windows, looked, best);
        const auto byChance = chanceOf(windows, best);
        const double niceShare = isNice ? std::min(1.0, best.widthSeconds / niceStepSeconds) : 1;
        if (byChance * niceShare > chance::smallest) return;
        tellOffset(card, offset, static_cast<double>(clips.size()));
    }

    static constexpr double niceStepSeconds = 1800;

    static int depthAt(const std::vector<Window>& windows, std::size_t clipCount, double offset) {
        std::vector<bool> isFound(clipCount);
        for (const Window& window : windows)
            if (window.first <= offset && offset <= window.last) isFound[window.clip] = true;
        return static_cast<int>(std::ranges::count(isFound, true));
    }

    /// Whole hours go before half ones, these before whole seconds: of all offsets that find sound for the
    /// same clips, what people set their clocks wrong by.
    std::pair<double, bool> nicest(const std::vector<Window>& windows, std::size_t clipCount,
                                   const Offset& best) const {
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

    /// That the best of all offsets finds sound for so many clips although the two have nothing to do with
    /// each other: the windows would then lie anywhere.
    static double chanceOf(const std::vector<Window>& windows, const Offset& best) {
        double sum = 0, first = std::numeric_limits<double>::infinity(), last = -first;
        for (const Window& window : windows) {
            sum += window.last - window.first;
            first = std::min(first, window.first);
            last = std::max(last, window.last);
        }
        const double mean = last > first ? sum / (last - first) : static_cast<double>(windows.size());
        return static_cast<double>(windows.size()) * chance::atLeast(best.depth - 1, mean);
    }

    void tellOffset(const Card& card, double offset, double withoutSound) {
        Cover as, shifted;
        for (const std::size_t file : card.files) {
            const TCRange range = onLine(shoot_.recordings[file].place);
            as.add(range, file);
            shifted.add(moved(range, offset), file);
            // By the time of day, midnight may lie between the two.
            if (shoot_.recordings[file].place.day) continue;
            for (const double day : {-secondsADay, secondsADay})
                shifted.add(moved(range, offset + day), file);
        }
        as.finish();
        shifted.finish();
        int now = 0, all = 0;
        std::set<std::size_t> used;
        std::vector<const Shoot::Clip*> found;
        for (const Shoot::Clip* clip : clips_) {
            if (!mayMeet(card, *clip)) continue;
            const FilePlace place = card.day ? *clip->place : FilePlace{clip->place->range, {}, {}};
            if (cover(as, place, card.day)) ++now;
            const auto sound = cover(shifted, place, card.day);
            if (!sound) continue;
            ++all;
            if (clip->isCovered) continue;
            found.push_back(clip);
            used.insert(*sound);
        }
        if (std::cmp_less(used.size(), fewest) || all <= clearly * now ||
            static_cast<double>(found.size()) < majority * withoutSound)
            return;
        const std::string text = offsetText(offset + shoot_.input.rules.soundOffsetSeconds, rate_);
        addCardDoubt(doubts_,
                     {Kind::constantOffset,
                      "the recordings in '" + card.folder + "' are " + spanText(std::abs(offset)) +
                          (offset < 0 ? " late" : " early") + " against the clips: moved by that, " +
                          std::to_string(found.size()) + " of " +
                          counted(static_cast<long long>(withoutSound), "clip", "clips") +
                          " without all of their sound would match",
                      "--sound-offset " + text},
                     found);
    }
    static std::optional<std::size_t> cover(const Cover& sound, const FilePlace& clip,
                                            const std::optional<long>& dayOfCard) {
        FilePlace laid = clip;
        if (!laid.day) laid.day = dayOfCard; // by the time of day
        return sound.of(onLine(laid));
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    TimecodeFrameRate rate_;
    std::vector<const Shoot::Clip*> clips_;
    std::vector<const Shoot::Clip*> uncovered_;
};

} // namespace

void addClockDoubts(const Shoot& shoot, SyncDoubts& doubts) { ClockDoubts(shoot, doubts).add(); }

} // namespace orvane
