#include "OrvaneSyncCore/Services/Diagnosis/MovedParts.h"

#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/RateText.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace orvane {

namespace {

using Sounding = HandledClips::Sounding;

constexpr std::ptrdiff_t fewestOfAPart = 2; // two that agree, where others do not, are no chance
constexpr std::size_t mostParts = 3;        // a clock that was lost and set right again

double startOf(const Shoot& shoot, std::size_t recording) {
    return onLine(shoot.wholes.places[recording]).startSeconds;
}
double startOf(const Shoot& shoot, const Shoot::Clip* clip) { return startOf(shoot, *clip->primary); }

using Run = std::vector<Sounding>;

void append(std::vector<Run>& runs, const Sounding& one) {
    if (runs.empty() || std::abs(runs.back().back().seconds - one.seconds) > agreeingByHandSeconds)
        runs.emplace_back();
    runs.back().push_back(one);
}

/// Neighbours in time that agree, without one clip that agrees with none: it may have been misheard.
std::vector<Run> runsOf(const Shoot& shoot, std::vector<Sounding> soundings) {
    std::ranges::stable_sort(soundings, {}, [&](const Sounding& one) { return startOf(shoot, one.clip); });
    std::vector<Run> all, runs;
    for (const Sounding& one : soundings) append(all, one);
    const auto isStray = [](const Run& run) {
        return run.size() == 1 && std::abs(run.front().seconds) >= leastByHandSeconds;
    };
    if (std::ranges::count_if(all, isStray) > 1) return {};
    for (const Run& run : all)
        if (!isStray(run))
            for (const Sounding& one : run) append(runs, one);
    return runs;
}

} // namespace

std::vector<MovedPart> movedParts(const Shoot& shoot, const HandledClips& card) {
    const auto runs = runsOf(shoot, card.soundings());
    std::vector<MovedPart> parts;
    if (runs.size() < 2 || runs.size() > mostParts) return parts;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const auto& run = runs[i];
        std::vector<double> offsets;
        for (const Sounding& one : run) offsets.push_back(one.seconds);
        const auto agreed = agreementOf(std::move(offsets), fewestOfAPart);
        if (!agreed) continue;
        MovedPart part{.seconds = agreed->seconds,
                       .count = agreed->count,
                       .isElsewhere = std::ranges::any_of(run, &Sounding::isElsewhere)};
        if (i > 0) part.first = run.front().clip->primary;
        if (i + 1 < runs.size()) part.behind = runs[i + 1].front().clip->primary;
        for (const Shoot::Clip* clip : card.unmoved) {
            const double start = startOf(shoot, clip);
            if ((!part.first || start >= startOf(shoot, *part.first)) &&
                (!part.behind || start < startOf(shoot, *part.behind)))
                part.clips.push_back(clip);
        }
        if (!part.clips.empty()) parts.push_back(std::move(part));
    }
    return parts;
}

void addMovedPart(const Shoot& shoot, const OffsetCure& cure, TimecodeFrameRate rate,
                  const CameraAndCard& key, const MovedPart& part, SyncDoubts& doubts) {
    const auto& [camera, recorder, day] = key;
    Card sound{std::string(recorder), day, {}};
    findRecorder(sound, part.clips);
    const double from = part.first ? startOf(shoot, *part.first) : -std::numeric_limits<double>::infinity();
    const double to = part.behind ? startOf(shoot, *part.behind) : std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i)
        if (isOn(sound, shoot, *shoot.recordings[i].asset) && startOf(shoot, i) >= from &&
            startOf(shoot, i) < to)
            sound.files.push_back(i);
    const auto [first, last] = std::ranges::minmax(
        sound.files, {}, [&](std::size_t file) { return onLine(shoot.recordings[file].place).startSeconds; });
    const auto nameOf = [&](std::size_t file) { return shoot.nameOf(*shoot.recordings[file].asset); };
    addCardDoubt(doubts,
                 {SyncDoubt::Kind::constantOffset,
                  "the microphones of the cameras heard " +
                      std::string(part.isElsewhere ? "other sound in " : "the sound of ") +
                      counted(part.count, "clip", "clips") + " in '" + std::string(camera) +
                      (part.isElsewhere ? "' than '" + std::string(recorder) + "' has under them"
                                        : "' elsewhere than '" + std::string(recorder) + "' has it") +
                      ": its recordings " + nameOf(first) + " to " + nameOf(last) + " are " +
                      spanText(std::abs(part.seconds)) + (part.seconds < 0 ? " late" : " early") +
                      " against the clips",
                  DoubtCure(CureOption::Kind::soundOffset,
                            offsetText(part.seconds + shoot.input.rules.soundOffsetSeconds, rate))
                      .in(cure.scanOfRecordings(sound, true))},
                 part.clips);
}

} // namespace orvane
