#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/OffsetWindows.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// An offset that brings recordings under clips, and how far it may be wrong.
struct CommonOffset {
    double seconds = 0;
    double widthSeconds = 0; ///< 0 for what people set clocks wrong by
    int heardClips = 0;      ///< by whose microphones it is known
    bool isRound = true;     ///< of these, whole seconds: `HeardClock`

    /// Found by timecode, and no hours or half hours: there may be another reason for it than a clock.
    bool isOdd() const { return widthSeconds > 0; }
    /// Whether it may be wrong by more than a frame.
    bool isGuess(TimecodeFrameRate rate) const;
    /// Behind the message: how far it is known; empty where that is a frame.
    std::string knownTo(TimecodeFrameRate rate) const;
    /// The same behind the cure.
    std::string clapAfter(TimecodeFrameRate rate) const;
};

/// What is to be added to the recording's place to come to the clip's; absent where they are two days and
/// more apart.
std::optional<double> secondsApart(const Shoot::Clip& clip, const FilePlace& sound);
/// From where one of the two lies under all of the other to where it does so last.
std::optional<OffsetWindow> windowOf(const Shoot::Clip& clip, const FilePlace& sound, std::size_t number);

/// Gives, for an offset, how many of the clips that are looked at ought to find sound.
using ExpectedClips =
    std::function<std::size_t(double offsetSeconds, const std::vector<const Shoot::Clip*>& looked)>;
/// What brings the recordings under the clips, where chance does that at most so often. `rate`: of the
/// labels.
std::optional<CommonOffset> commonOffset(const std::vector<const Shoot::Clip*>& clips,
                                         const std::vector<FilePlace>& sounds,
                                         const ExpectedClips& expectedAt, double mostChance,
                                         TimecodeFrameRate rate);

} // namespace orvane
