#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

namespace {

/// Hours and half hours, also as labels count them, are typical clock errors and therefore no guess.
bool isOfAWrongHour(double seconds, TimecodeFrameRate rate) {
    const double aFrame = 1 / timecodeRate::frameRateForRealTimeCalculation(rate);
    return std::ranges::any_of(std::array{niceOffsetStepSeconds, labelSeconds(niceOffsetStepSeconds, rate)},
                               [&](double step) { return std::abs(std::remainder(seconds, step)) < aFrame; });
}

/// Seconds between the clip's sound and the sound that its camera heard; absent if it was not measured.
std::optional<double> heardLag(const Shoot& shoot, const Shoot::Clip& clip) {
    const auto* heard = shoot.input.heardLags;
    if (heard == nullptr) return std::nullopt;
    const auto found = heard->find(clip.group->audioMatches.front().id);
    return found != heard->end() ? std::optional(found->second.seconds) : std::nullopt;
}

/// Whether a decision of the user or a microphone confirms the place of the clip's sound.
bool isChecked(const Shoot& shoot, const Shoot::Clip& clip) {
    if (clip.isDecided || clip.group->manualAudioOffsetSeconds != 0) return true;
    const auto lag = heardLag(shoot, clip);
    return lag && std::abs(*lag) < inPlaceSeconds;
}

} // namespace

void addGivenOffset(const Shoot& shoot, SyncDoubts& doubts) {
    const double given = shoot.input.rules.soundOffsetSeconds;
    const TimecodeFrameRate rate = rateOfLabels(shoot);
    if (given == 0 || isOfAWrongHour(given, rate)) return;
    std::vector<const Shoot::Clip*> clips;
    std::vector<OffsetWindow> windows;
    int checked = 0, audible = 0;
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip& clip : shoot.clips) {
        check();
        if (!clip.place || !clip.primary || clip.group->isExcludedFromExport) continue;
        if (isChecked(shoot, clip)) {
            ++checked;
            continue;
        }
        if (!clip.isCovered) continue;
        if (doubts.has(clip.group->id, {SyncDoubt::Kind::constantOffset, SyncDoubt::Kind::timecodeRate,
                                        SyncDoubt::Kind::drift}))
            return;
        if (isAudible(clip)) ++audible;
        const FilePlace& sound = shoot.wholes.places[*clip.primary];
        if (const auto window = windowOf(clip, sound, clips.size())) {
            windows.push_back(*window);
            clips.push_back(&clip);
        }
    }
    // If the clips' own sound was not analysed, there is no doubt yet: 'diagnose' analyses it.
    const bool isUnasked = shoot.input.heardLags == nullptr && audible >= explanation::fewest;
    if (checked >= explanation::fewest || isUnasked || std::cmp_less(clips.size(), explanation::fewest))
        return;
    const CommonOffset known{given, deepest(windows, clips.size()).likelyWidthSeconds};
    if (!known.isGuess(rate)) return;
    const auto elsewhere =
        std::ranges::count_if(clips, [&](const auto* clip) { return heardLag(shoot, *clip).has_value(); });
    const std::string heard = elsewhere > 0 ? "; the microphones of the cameras heard that of " +
                                                  counted(elsewhere, "clip", "clips") + " elsewhere"
                                            : "";
    addCardDoubt(doubts,
                 {SyncDoubt::Kind::constantOffset,
                  "the sound of " + counted(clips.size(), "clip", "clips") + " lies by an offset of " +
                      spanText(std::abs(given)) + " that only timecode suggests" + known.knownTo(rate) +
                      heard,
                  DoubtCure::Words{"check a clap, give the offset that it shows as --sound-offset, and lock "
                                   "three clips that are right",
                                   "check a clap, move three clips by hand, and lock those that are right"}},
                 clips);
    for (const Shoot::Clip* clip : clips)
        if (const auto lag = heardLag(shoot, *clip);
            lag && haveNoOtherSound({clip}, folderOf(*clip->group->audioMatches.front().audio)))
            doubts.byGroup[clip->group->id].back().suggestion =
                SyncDoubt::Suggestion{.offsetSeconds = *lag - microphoneDelaySeconds};
}

} // namespace orvane
