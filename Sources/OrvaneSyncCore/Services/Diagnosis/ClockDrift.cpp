#include "OrvaneSyncCore/Services/Diagnosis/ClockDrift.h"

#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <ranges>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

namespace {

constexpr std::size_t fewestOnALine = 4; // three may be on one line by chance
constexpr double leastChange = 0.2;      // seconds, over the analysed clips
constexpr double besideTheLine = 0.08;   // seconds: the place of a clip is measured to 10 ms, and rooms echo
// A recording of 48 kHz that counts as 48.048 kHz is off by 1000 parts in a million. No clock is worse.
constexpr double mostPerSecond = 1.1e-3;

ClockDrift lineThrough(const std::vector<MeasuredOffset>& heard) {
    const auto count = static_cast<double>(heard.size());
    ClockDrift line{.count = heard.size()};
    for (const MeasuredOffset& one : heard) {
        line.originSeconds += one.at / count;
        line.atOrigin += one.seconds / count;
    }
    double squares = 0, products = 0;
    for (const MeasuredOffset& one : heard) {
        squares += (one.at - line.originSeconds) * (one.at - line.originSeconds);
        products += (one.at - line.originSeconds) * (one.seconds - line.atOrigin);
    }
    line.perSecond = squares > 0 ? products / squares : 0;
    const auto [first, last] = std::ranges::minmax(heard, {}, &MeasuredOffset::at);
    line.firstSeconds = first.at;
    line.lastSeconds = last.at;
    return line;
}

double distanceFrom(const ClockDrift& line, const MeasuredOffset& one) {
    return std::abs(one.seconds - line.offsetAt(one.at));
}

/// Whether the distance is constant up to a moment and has another constant value after it, within the
/// accuracy of the measurement. Two such values always lie on a line, but they are two clocks, or the takes
/// of two days.
bool isStep(std::vector<MeasuredOffset> heard) {
    std::ranges::sort(heard, {}, &MeasuredOffset::at);
    const auto isOneDistance = [](auto first, auto last) {
        const auto [least, most] =
            std::ranges::minmax(std::ranges::subrange(first, last), {}, &MeasuredOffset::seconds);
        return most.seconds - least.seconds <= besideTheLine;
    };
    for (auto from = heard.begin() + 1; from != heard.end(); ++from)
        if (isOneDistance(heard.begin(), from) && isOneDistance(from, heard.end())) return true;
    return false;
}

std::string distanceText(double seconds) {
    constexpr double least = 0.05; // smaller changes are not printed
    const std::string text = platform::text::formatted("%.1f s", std::abs(seconds));
    return std::abs(seconds) < least ? text : text + (seconds < 0 ? " late" : " early");
}

/// `isDated`: includes the day, if the clips are of more than one.
std::string momentText(double seconds, bool isDated) {
    const std::string time = timeOfDayText(seconds);
    return isDated ? dayText(static_cast<long>(std::floor(seconds / secondsADay))) + " " + time : time;
}

} // namespace

std::optional<ClockDrift> clockDriftOf(std::vector<MeasuredOffset> heard) {
    // One clip may have been measured wrongly, if enough others remain.
    for (bool isFirst = true;; isFirst = false) {
        if (heard.size() < fewestOnALine) return std::nullopt;
        const ClockDrift line = lineThrough(heard);
        const auto worst = std::ranges::max_element(
            heard, {}, [&](const MeasuredOffset& one) { return distanceFrom(line, one); });
        if (distanceFrom(line, *worst) <= besideTheLine) {
            const double change = line.perSecond * (line.lastSeconds - line.firstSeconds);
            const bool isDrift = std::abs(change) >= leastChange && std::abs(line.perSecond) <= mostPerSecond;
            return isDrift && !isStep(heard) ? std::optional(line) : std::nullopt;
        }
        if (!isFirst) return std::nullopt;
        heard.erase(worst);
    }
}

std::optional<ClockDrift> clockDriftOf(const HandledClips& card) {
    std::vector<MeasuredOffset> heard;
    for (const auto& [clip, seconds, isElsewhere] : card.soundings())
        if (clip->place) heard.push_back({likelyRange(*clip).startSeconds, seconds});
    return clockDriftOf(std::move(heard));
}

namespace {

std::string partsText(const ClockDrift& drift) {
    constexpr double million = 1e6;
    return platform::text::formatted("%.0f parts in a million", std::abs(drift.perSecond) * million);
}

std::string changeText(const ClockDrift& drift) {
    const bool isDated =
        std::floor(drift.firstSeconds / secondsADay) != std::floor(drift.lastSeconds / secondsADay);
    return "the sound of " + counted(drift.count, "clip", "clips") + " goes from " +
           distanceText(drift.offsetAt(drift.firstSeconds)) + " at " +
           momentText(drift.firstSeconds, isDated) + " to " +
           distanceText(drift.offsetAt(drift.lastSeconds)) + " at " + momentText(drift.lastSeconds, isDated);
}

std::string clocksText(const CameraAndCard& key, const ClockDrift& drift) {
    return "by the microphones of the cameras, the clocks of '" + std::string(std::get<0>(key)) + "' and '" +
           std::string(std::get<1>(key)) + "' run apart by " + partsText(drift);
}

struct OwnMove {
    double seconds;
    std::string text;
};

/// The move of one clip's sound; absent if it is no whole frame, or if the clip's time is unknown.
std::optional<OwnMove> ownMove(const Shoot& shoot, const Shoot::Clip& clip, const ClockDrift& drift) {
    if (!clip.place) return std::nullopt;
    const MediaAsset& video = clip.group->video;
    const double seconds = drift.offsetAt(likelyRange(clip).startSeconds) - microphoneDelaySeconds;
    if (framesOf(seconds, video) == 0) return std::nullopt;
    return OwnMove{seconds, shoot.nameOf(video) + " by " + framesText(seconds, video)};
}

} // namespace

std::string runApartText(const ClockDrift& drift) {
    constexpr double ofRates = 1.0 / 1001, nearly = 3e-5;
    return "; the clocks run apart by " + partsText(drift) + ": moved by that, " + changeText(drift) +
           (std::abs(std::abs(drift.perSecond) - ofRates) < nearly
                ? ", as if one counted 24 frames a second and the other 23.976"
                : "");
}

void addClockDrift(const Shoot& shoot, const CameraAndCard& key, const HandledClips& card,
                   const ClockDrift& drift, SyncDoubts& doubts) {
    const std::string about = clocksText(key, drift) + ": " + changeText(drift);
    for (const Shoot::Clip* clip : card.unmoved) {
        const auto own = ownMove(shoot, *clip, drift);
        if (!own) continue;
        doubts.byGroup[clip->group->id].push_back(
            {.kind = SyncDoubt::Kind::drift,
             .message = about + "; move the sound of " + own->text,
             .cure = cureWords::asHeard("move the sound of each clip by its own distance", "'offset_frames'"),
             .own = own->text,
             .suggestion = SyncDoubt::Suggestion{.offsetSeconds = own->seconds}});
    }
}

void addClockDriftUnheard(const Shoot& shoot, const CameraAndCard& key, const HandledClips& unheard,
                          const ClockDrift& drift, SyncDoubts& doubts) {
    for (const Shoot::Clip* clip : unheard.unmoved) {
        const auto own = ownMove(shoot, *clip, drift);
        if (!own || doubts.has(clip->group->id, {SyncDoubt::Kind::drift})) continue;
        doubts.byGroup[clip->group->id].push_back(
            {.kind = SyncDoubt::Kind::drift,
             .message = clocksText(key, drift) + ", and the clips in '" +
                        std::string(folderOf(clip->group->video)) +
                        "' have sound of the same recorder and were not heard: if it is the recorder's "
                        "clock, move the sound of " +
                        own->text,
             .cure = "listen to the first and the last of these clips: where their sound is off as well, "
                     "move that of each by hand, else lock them",
             .own = own->text});
    }
}

} // namespace orvane
