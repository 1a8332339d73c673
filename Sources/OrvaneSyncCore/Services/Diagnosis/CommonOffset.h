#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/OffsetWindows.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// An offset that puts recordings under clips, and how inaccurate it may be.
struct CommonOffset {
    double seconds = 0;
    double widthSeconds = 0; ///< 0 for an offset that people typically set clocks wrong by
    int heardClips = 0;      ///< clips whose cameras' microphones confirm it
    bool isExact = true;     ///< for an offset that was measured: as in `HeardClock`
    /// For whole and half hours that only timecode shows: the width of the range that timecode allows.
    double unheardHourSeconds = 0;

    /// It was found by timecode and is not a multiple of half an hour: the reason may be something other than
    /// a clock.
    bool isOdd() const { return widthSeconds > 0; }
    /// Whether it may be wrong by more than a frame.
    bool isGuess(TimecodeFrameRate rate) const;
    /// Text to add to the message: how exactly the offset is known; empty if it is known to a frame.
    std::string knownTo(TimecodeFrameRate rate) const;
    /// The same as text to add to the cure.
    std::string clapAfter(TimecodeFrameRate rate) const;
};

/// The offset to add to the recording's place so that it is at the clip's; absent if they are two days or
/// more apart.
std::optional<double> secondsApart(const Shoot::Clip& clip, const FilePlace& sound);
/// From the first offset at which one of the two covers the other to the last one.
std::optional<OffsetWindow> windowOf(const Shoot::Clip& clip, const FilePlace& sound, std::size_t number);

/// Returns, for an offset, how many of the considered clips should find sound.
using ExpectedClips =
    std::function<std::size_t(double offsetSeconds, const std::vector<const Shoot::Clip*>& looked)>;
/// The offset that puts the recordings under the clips, if the probability of this by chance is at most
/// `mostChance`. `rate`: of the labels.
std::optional<CommonOffset> commonOffset(const std::vector<const Shoot::Clip*>& clips,
                                         const std::vector<FilePlace>& sounds,
                                         const ExpectedClips& expectedAt, double mostChance,
                                         TimecodeFrameRate rate);

} // namespace orvane
