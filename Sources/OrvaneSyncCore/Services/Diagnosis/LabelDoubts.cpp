#include "OrvaneSyncCore/Services/Diagnosis/ClipInDoubt.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Text.h"
#include "Timecode/Timecode.h"

#include <cmath>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

// Drop frame follows the clock within a few frames a day.
constexpr double smallestDriftSeconds = 0.1;

/// By the recorder's flag, else by the text of its rate. A rate text that states neither is read as drop
/// frame by convention, which is no evidence about the recorder.
std::optional<bool> countsDropFrame(const MediaAsset& sound) {
    if (!sound.ixmlData) return std::nullopt;
    for (const auto& said : {sound.ixmlData->timecodeFlag, sound.ixmlData->timecodeRate}) {
        const std::string text = platform::text::uppercased(said.value_or(""));
        if (text.find("DF") != std::string::npos) return text.find("NDF") == std::string::npos;
    }
    return std::nullopt;
}

/// The time in which labels count one hour.
double secondsOfAnHour(TimecodeFrameRate rate) { return Timecode({.hours = 1}, rate).realTimeValue(); }

/// Differences between how a clip and its sound count labels.
class OtherCounts {
  public:
    explicit OtherCounts(ClipInDoubt& of) : of_(of) {}

    void add() {
        if (of_.clip.isDecided) return; // its place is known
        dropMix();
        otherRate();
    }

  private:
    static DoubtCure rateFor(std::string rate) { return {CureOption::Kind::timecodeRate, std::move(rate)}; }
    /// Uses only what both files state.
    void dropMix() {
        if (of_.shoot.input.rules.timecodeRate) return;
        const auto& own = of_.group.video.timecodeFrameRate;
        const MediaAsset& sound = *of_.group.primaryAudio();
        if (!own || !sound.timecodeFrameRate) return;
        const auto isDropped = countsDropFrame(sound);
        if (!isDropped || timecodeRate::rate(*own) != timecodeRate::rate(*sound.timecodeFrameRate) ||
            timecodeRate::isDrop(*own) == *isDropped)
            return;
        const auto kind = [](bool isDrop) { return isDrop ? "drop frame" : "non-drop"; };
        of_.addOf(Kind::dropMix,
                  std::string("counts ") + kind(!*isDropped) + " and " + of_.shoot.nameOf(sound) + " " +
                      kind(*isDropped) + "; equal timecodes lie 3.6 s apart after each hour",
                  rateFor("29.97DF") + " or " + rateFor("29.97NDF") + ", whichever all were meant to count");
    }

    /// Labels of one family that were counted at two rates drift apart from midnight on. A start in samples
    /// was computed from such a label at the recorder's rate.
    void otherRate() {
        if (of_.shoot.input.rules.timecodeRate || !of_.clip.place) return;
        const auto& own = of_.group.video.timecodeFrameRate;
        const MediaAsset& sound = *of_.group.primaryAudio();
        if (!own || !sound.timecodeFrameRate || !sound.ixmlData || !sound.ixmlData->timecodeRate) return;
        const auto rateOfSound = timecodeRate::rate(*sound.timecodeFrameRate);
        if (timecodeRate::maxFrames(*own) != timecodeRate::maxFrames(*sound.timecodeFrameRate) ||
            timecodeRate::rate(*own) == rateOfSound)
            return;
        const auto other = timecodeRate::from(rateOfSound, countsDropFrame(sound).value_or(false))
                               .value_or(*sound.timecodeFrameRate);
        const double start = of_.clip.place->range.startSeconds;
        const double drift = start * std::abs(secondsOfAnHour(other) / secondsOfAnHour(*own) - 1);
        if (drift < smallestDriftSeconds || drift * timecodeRate::rate(*own).doubleValue() < 1) return;
        of_.addOf(Kind::timecodeRate,
                  "counts " + rateText(*own) + " frames a second and " + of_.shoot.nameOf(sound) + " " +
                      rateText(other) + ": where they agree on the timecode, they lie " + spanText(drift) +
                      " apart at " + spanText(start) + " after midnight",
                  rateFor(rateText(*own)) + " or " + rateFor(rateText(other)) +
                      ", whichever all were meant to count");
    }

    ClipInDoubt& of_;
};

} // namespace

void addLabelOutsideOfRate(ClipInDoubt& of, const MediaAsset& file) {
    if (!file.startTimecodeString || file.bextTimeReference.value_or(0) != 0) return;
    auto rate = labelRate(file);
    const auto label = Timecode::fromString(*file.startTimecodeString, rate);
    if (!label) return;
    const auto frame = label->components().frames;
    const auto& corrected = of.shoot.input.rules.timecodeRate;
    if (corrected && frame < timecodeRate::maxFrames(*corrected)) rate = *corrected;
    if (frame < timecodeRate::maxFrames(rate)) return;
    const int fitting = frame < 25 ? 25 : frame < 30 ? 30 : 60;
    of.add(SyncDoubt::Kind::timecodeRate,
           "the timecode " + *file.startTimecodeString + " of " + of.shoot.nameOf(file) + " has frame " +
               std::to_string(frame) + ", and it is read at " +
               std::to_string(timecodeRate::maxFrames(rate)) + " frames a second",
           DoubtCure(CureOption::Kind::timecodeRate, std::to_string(fitting)) +
               ", or the rate at which the timecode was made");
}

void addOtherCounts(ClipInDoubt& of) { OtherCounts(of).add(); }

} // namespace orvane
