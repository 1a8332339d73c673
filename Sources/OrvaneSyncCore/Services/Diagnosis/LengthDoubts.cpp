#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipInDoubt.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using platform::text::formatted;

// A camera that rolls a moment longer than the recorder is normal.
constexpr double missingSoundSeconds = 1;
constexpr double cutSeconds = 0.5;
constexpr const char* listenToOne =
    "; listen to one of them first, as a clock that is some seconds off looks the same";
// Starts from timecode are rounded to a frame on both sides.
constexpr double smallestGapSeconds = 0.1;
// The time in which a recorder ends one take and begins the next.
constexpr double smallestPauseSeconds = 1;

DoubtCure trimOption(TrimMode mode) {
    return {CureOption::Kind::setting,
            std::string(settings::trimMode.key) + "=" + std::string(rawValue(mode))};
}

/// The parts of the picture that have no sound, and the parts that are cut off.
class LengthDoubts {
  public:
    LengthDoubts(ClipInDoubt& of, bool isHeard) : of_(of), isHeard_(isHeard) {}

    void add() {
        // A lock says that no more sound is to be looked for.
        if (!of_.group.isLocked || isSoundCutOff()) shortSound();
        cutByTrim();
        if (!of_.group.isLocked) splitGap();
    }

  private:
    void shortSound() {
        // With this trim mode the user knows that the clip is shorter.
        if (of_.shoot.input.trimMode == TrimMode::overlap) return;
        if (!of_.clip.place || of_.clip.isUnplaced || of_.clip.atMidnight != nullptr ||
            of_.group.video.isOffspeed() || of_.take.isEmpty())
            return;
        const double start = of_.take.offsetSeconds + of_.group.manualAudioOffsetSeconds;
        const double before = std::clamp(start, 0.0, of_.length());
        const double after = std::clamp(of_.length() - (start + of_.take.durationSeconds), 0.0, of_.length());
        if (isSoundCutOff())
            return of_.addOf(Kind::shortSound,
                             "is cut to " + formatted("%.1f s,", of_.take.durationSeconds) +
                                 " the length of its sound, counted from the picture's start, and " +
                                 of_.shoot.nameOf(*of_.group.primaryAudio()) + " begins " +
                                 formatted("%.1f s", before) + " after that: nothing of it is heard",
                             cureOfCut());
        if (before + after < missingSoundSeconds) return;
        if (before >= of_.length() || after >= of_.length())
            return of_.addOf(
                Kind::shortSound,
                "lasts " + formatted("%.1f s", of_.length()) + ", and " +
                    of_.shoot.nameOf(*of_.group.primaryAudio()) + " lies outside of it: no sound is heard",
                DoubtCure(DoubtCure::Words{
                    .terminal = "take that recording off the clip and attach another one, or put its "
                                "clap on the picture in the window",
                    .window =
                        "take that recording off the clip and attach another one, or go "
                        "to the picture of its clap and click “Detect Clap” and “Put on the Frame Shown”"}));
        std::string where;
        if (before > 0.05) where = formatted("the first %.1f s", before);
        if (after > 0.05) where += (where.empty() ? "" : " and ") + formatted("the last %.1f s", after);
        of_.addOf(Kind::shortSound,
                  "lasts " + formatted("%.1f s", of_.length()) + ", and " + where + " have no sound of " +
                      of_.shoot.nameOf(*of_.group.primaryAudio()),
                  isPartedAtMidnight() ? acrossMidnight()
                  : damaged() != nullptr
                      ? DoubtCure("copy " + of_.shoot.nameOf(*damaged()) +
                                  " again from the card, as it ends early") +
                            cureWords::lock("; where no whole copy is left, lock the clips")
                      : "look for a recording that is missing on the cards, or cut to the sound with " +
                            trimOption(TrimMode::overlap) + (isHeard_ ? "" : listenToOne));
    }
    /// A file of the sound whose end is missing; null if there is none. No picture should be cut to it.
    const MediaAsset* damaged() const {
        const auto cut = std::ranges::find_if(of_.take.files, [&](const TakeFile& file) {
            return isHeard(file.role) && of_.fileOf(file).heldShare;
        });
        return cut != of_.take.files.end() ? &of_.fileOf(*cut) : nullptr;
    }

    /// The end of the picture that the document cuts off; absent if it is too short to report.
    std::optional<double> cutOff() const {
        if (of_.shoot.input.trimMode != TrimMode::commonDuration || of_.group.video.isOffspeed())
            return std::nullopt;
        const double cut = of_.group.video.durationSeconds.value_or(0) - of_.take.durationSeconds;
        // The document never cuts a clip to less than a frame.
        if (of_.take.durationSeconds * clipRate(of_.group.video, rateWithoutAny) < 1 || cut < cutSeconds)
            return std::nullopt;
        return cut;
    }
    /// Whether the sound begins within the picture, but after the part that the document keeps.
    bool isSoundCutOff() const {
        const double start = of_.take.offsetSeconds + of_.group.manualAudioOffsetSeconds;
        return of_.clip.place && cutOff() && start >= of_.take.durationSeconds && start < of_.length();
    }
    static DoubtCure cureOfCut() {
        // First the way that certainly helps: all of the picture includes moments without sound.
        return trimOption(TrimMode::overlap) + " keeps what both have, " +
               trimOption(TrimMode::videoDuration) + " all of the picture";
    }
    void cutByTrim() {
        const auto cut = cutOff();
        // Those doubts report both.
        if (!cut || isSoundCutOff() || of_.clip.atMidnight != nullptr) return;
        const double picture = of_.group.video.durationSeconds.value_or(0);
        of_.addOf(Kind::cutByTrim,
                  "is cut from " + formatted("%.1f s", picture) + formatted(" to %.1f s,", picture - *cut) +
                      " the length of its sound, counted from the picture's start",
                  isPartedAtMidnight() ? acrossMidnight()
                  : damaged() != nullptr
                      ? trimOption(TrimMode::videoDuration) + " keeps all of the picture, until " +
                            of_.shoot.nameOf(*damaged()) + " is copied again"
                      : cureOfCut());
    }
    /// With the rule of neighbouring days only times of day are compared: a recording that continues after
    /// midnight is not found.
    bool isPartedAtMidnight() const {
        if (of_.shoot.input.rules.days != MatchingDays::neighbours || !of_.clip.place) return false;
        const SyncEngine::TCRange behind{0, of_.clip.place->range.endSeconds - secondsADay};
        return behind.endSeconds > 0 &&
               std::ranges::any_of(of_.shoot.recordings, [&](const Recording& recording) {
                   return SyncEngine::overlapDuration(recording.place.range, behind).has_value();
               });
    }
    static DoubtCure acrossMidnight() {
        return DoubtCure(CureOption::Kind::days, std::string(rawValue(MatchingDays::automatic))) +
               ", which finds sound behind midnight";
    }

    /// Finds, for each file, the file of its recorder and its channels that it continues, whatever else was
    /// recorded in between.
    void splitGap() {
        if (of_.group.audioMatches.size() < 2) return;
        const auto endOf = [](const TakeFile& file) { return file.startSeconds + file.durationSeconds; };
        double reportedAt = -std::numeric_limits<double>::infinity(); // the channels of a take in mono files
                                                                      // have their gap at the same moments
        for (const TakeFile& after : of_.take.files) {
            if (after.role == TakeRole::mirror) continue;
            const TakeFile* before = nullptr; // the one that ends last
            for (const TakeFile& file : of_.take.files)
                if (file.role != TakeRole::mirror && file.startSeconds < after.startSeconds &&
                    endOf(file) <= after.startSeconds + SplitRecordingDetector::contiguityToleranceSeconds &&
                    (before == nullptr || endOf(file) > endOf(*before)) &&
                    (isContinuation(file, after) ||
                     (file.firstChannel == after.firstChannel && isHeard(file.role) && isHeard(after.role))))
                    before = &file;
            if (before == nullptr || std::abs(reportedAt - endOf(*before)) < 1 || isFilled(*before, after))
                continue;
            if (gap(*before, after, after.startSeconds - endOf(*before))) reportedAt = endOf(*before);
        }
    }
    /// Whether a part with another name fills the gap, in the same channels.
    bool isFilled(const TakeFile& before, const TakeFile& after) const {
        constexpr double tolerance = SplitRecordingDetector::contiguityToleranceSeconds;
        const double from = before.startSeconds + before.durationSeconds;
        return std::ranges::any_of(of_.take.files, [&](const TakeFile& file) {
            return file.role != TakeRole::mirror && file.firstChannel == after.firstChannel &&
                   std::abs(file.startSeconds - from) <= tolerance &&
                   std::abs(file.startSeconds + file.durationSeconds - after.startSeconds) <= tolerance;
        });
    }
    bool isContinuation(const TakeFile& before, const TakeFile& after) const {
        return SplitRecordingDetector::mayContinue(of_.fileOf(before), of_.fileOf(after));
    }
    bool gap(const TakeFile& before, const TakeFile& after, double seconds) {
        const bool isPause = !isContinuation(before, after);
        if (seconds < (isPause ? smallestPauseSeconds : smallestGapSeconds) ||
            seconds > SplitRecordingDetector::largestGapSeconds)
            return false;
        const double at = of_.take.offsetSeconds + of_.group.manualAudioOffsetSeconds + after.startSeconds;
        if (at - seconds < 0 || at > of_.length()) return false;
        of_.add(Kind::splitGap,
                formatted("%.2f s", seconds) + " of sound are missing between " +
                    of_.shoot.nameOf(of_.fileOf(before)) + " and " + of_.shoot.nameOf(of_.fileOf(after)) +
                    formatted(", %.1f s into ", at - seconds) + of_.name,
                isPause ? "look for a take between them on the cards, or lock the clip if the recorder was "
                          "stopped there"
                        : cureWords::lookForPart());
        return true;
    }

    ClipInDoubt& of_;
    bool isHeard_;
};

} // namespace

void addLengthDoubts(ClipInDoubt& of, bool isHeard) { LengthDoubts(of, isHeard).add(); }

} // namespace orvane
