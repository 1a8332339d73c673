#include "OrvaneSyncCore/Services/Diagnosis/MovedParts.h"

#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <utility>

namespace orvane {

namespace {

using Sounding = HandledClips::Sounding;

constexpr std::ptrdiff_t fewestOfAPart = 2; // two that agree, and differ from the others, are no coincidence
constexpr std::size_t mostParts = 3;        // a clock that lost its time and was set right again

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

/// Runs of consecutive clips that agree. A single clip that agrees with none is left out: it may have been
/// measured wrongly.
std::vector<Run> runsOf(const Shoot& shoot, std::vector<Sounding> soundings) {
    std::ranges::stable_sort(soundings, {}, [&](const Sounding& one) { return startOf(shoot, one.clip); });
    std::vector<Run> all, runs;
    for (const Sounding& one : soundings) append(all, one);
    const auto isOutlier = [](const Run& run) {
        return run.size() == 1 && std::abs(run.front().seconds) >= leastByHandSeconds;
    };
    if (std::ranges::count_if(all, isOutlier) > 1) return {};
    for (const Run& run : all)
        if (!isOutlier(run))
            for (const Sounding& one : run) append(runs, one);
    return runs;
}

bool isIn(const Shoot& shoot, const MovedPart& part, std::size_t recording) {
    const double start = startOf(shoot, recording);
    return (!part.first || start >= startOf(shoot, *part.first)) &&
           (!part.behind || start < startOf(shoot, *part.behind));
}

/// What the other cameras show about the recordings of a part.
struct OtherCameras {
    bool hasOwnTime = false;               ///< one of them heard the recordings at another distance
    std::vector<std::string> withoutSound; ///< folders of those that heard nothing, if none heard them
    std::vector<const Shoot::Clip*> clipsWithoutSound;
};
OtherCameras othersOf(const Shoot& shoot, const std::map<CameraAndCard, HandledClips>& cards,
                      const CameraAndCard& key, const MovedPart& part) {
    OtherCameras others;
    bool areAgreed = false;
    for (const auto& [other, card] : cards) {
        if (other == key || std::get<1>(other) != std::get<1>(key) || std::get<2>(other) != std::get<2>(key))
            continue;
        bool isHeard = false;
        for (const Sounding& one : card.soundings()) {
            if (!isIn(shoot, part, *one.clip->primary)) continue;
            isHeard = true;
            (std::abs(one.seconds - part.seconds) <= agreeingByHandSeconds ? areAgreed : others.hasOwnTime) =
                true;
        }
        const auto before = others.clipsWithoutSound.size();
        if (!isHeard)
            std::ranges::copy_if(card.unmoved, std::back_inserter(others.clipsWithoutSound),
                                 [&](const Shoot::Clip* clip) { return isIn(shoot, part, *clip->primary); });
        if (others.clipsWithoutSound.size() > before)
            others.withoutSound.push_back("'" + std::string(std::get<0>(other)) + "'");
    }
    if (areAgreed) {
        others.withoutSound.clear();
        others.clipsWithoutSound.clear();
    }
    return others;
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
        for (const Shoot::Clip* clip : card.unmoved)
            if (isIn(shoot, part, *clip->primary)) part.clips.push_back(clip);
        if (!part.clips.empty()) parts.push_back(std::move(part));
    }
    return parts;
}

void addMovedPart(const Shoot& shoot, const std::map<CameraAndCard, HandledClips>& cards,
                  const CameraAndCard& key, const MovedPart& part, SyncDoubts& doubts) {
    const auto& [camera, recorder, day] = key;
    const TimecodeFrameRate rate = rateOfLabels(shoot);
    const OffsetCure cure(shoot, rate);
    Card sound{std::string(recorder), day, {}};
    findRecorder(shoot, sound, part.clips);
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i)
        if (isOn(sound, shoot, *shoot.recordings[i].asset) && isIn(shoot, part, i)) sound.files.push_back(i);
    const OtherCameras others = othersOf(shoot, cards, key, part);
    const bool isOfCamera = others.hasOwnTime || !others.withoutSound.empty();
    const HeardClock clock = heardClock(part.seconds, rate);
    const bool isSoundLate = part.seconds < 0;
    std::string text = "the microphones of the cameras heard " +
                       std::string(part.isElsewhere ? "other sound in " : "the sound of ") +
                       counted(part.count, "clip", "clips") + " in '" + std::string(camera) +
                       (part.isElsewhere ? "' than '" + std::string(recorder) + "' has under them"
                                         : "' elsewhere than '" + std::string(recorder) + "' has it");
    DoubtCure moved(CureOption::Kind::soundOffset,
                    offsetText(clock.seconds + shoot.input.rules.soundOffsetSeconds, rate));
    const char* clap = clock.isExact ? "" : checkAClap;
    if (!isOfCamera) {
        const auto [first, last] = std::ranges::minmax(sound.files, {}, [&](std::size_t file) {
            return onLine(shoot.recordings[file].place).startSeconds;
        });
        const auto nameOf = [&](std::size_t file) { return shoot.nameOf(*shoot.recordings[file].asset); };
        text += ": its recordings " + nameOf(first) + " to " + nameOf(last) + " are " +
                offsetSpanText(std::abs(clock.seconds), rate) + (isSoundLate ? " late" : " early") +
                " against the clips";
        const auto scan = cure.scanOfRecordings(sound, true);
        SyncDoubt doubt{SyncDoubt::Kind::constantOffset, std::move(text),
                        std::move(moved).in(scan) + clap + (scan ? OffsetCure::forOtherRecordings() : "")};
        // A table keeps all clips in one document. Of one recorder's clips, those that the table does not
        // move would be in doubt after it.
        std::vector<const Shoot::Clip*> rest;
        std::ranges::copy_if(cards.at(key).unmoved, std::back_inserter(rest), [&](const Shoot::Clip* clip) {
            return std::ranges::find(part.clips, clip) == part.clips.end();
        });
        if (!part.isElsewhere && scan && haveNoOtherSound(shoot, part.clips, recorder) &&
            areOfTwoRecorders(part.clips, rest)) {
            doubt.cure += "; in one document, " + cureWords::moveAsHeard();
            doubt.suggestion = SyncDoubt::Suggestion{.offsetSeconds = clock.seconds};
        }
        addCardDoubt(doubts, std::move(doubt), part.clips);
        return;
    }
    text += ": the clips " + shoot.nameOf(part.clips.front()->group->video) + " to " +
            shoot.nameOf(part.clips.back()->group->video) + " are " +
            offsetSpanText(std::abs(clock.seconds), rate) + (isSoundLate ? " early" : " late") +
            " against the recordings";
    if (others.hasOwnTime && !part.isElsewhere && haveNoOtherSound(shoot, part.clips, recorder)) {
        addCardDoubt(doubts,
                     {.kind = SyncDoubt::Kind::constantOffset,
                      .message = std::move(text),
                      .cure = cureWords::moveAsHeard() + clap,
                      .suggestion = SyncDoubt::Suggestion{.offsetSeconds = clock.seconds}},
                     part.clips);
        return;
    }
    // Without a bound, the part extends to the camera's first or last clip.
    const Shoot::Clip *first = part.clips.front(), *last = part.clips.back();
    for (const Shoot::Clip& clip : shoot.clips) {
        if (folderOf(clip.group->video) != camera) continue;
        if (!part.first) first = std::min(first, &clip);
        if (!part.behind) last = std::max(last, &clip);
    }
    std::vector<const Shoot::Clip*> doubted = part.clips;
    if (!others.hasOwnTime) {
        text += ", or these are wrong by that: the clips in " +
                platform::text::joined(others.withoutSound, ", ") +
                " have the same recordings and could not be heard";
        doubted.insert(doubted.end(), others.clipsWithoutSound.begin(), others.clipsWithoutSound.end());
        std::ranges::sort(doubted); // in the order of the clips
    }
    addCardDoubt(doubts,
                 {SyncDoubt::Kind::constantOffset, std::move(text),
                  std::move(moved).in(cure.scanOfClipsBetween(*first, *last, &sound)) + clap},
                 doubted);
}

} // namespace orvane
