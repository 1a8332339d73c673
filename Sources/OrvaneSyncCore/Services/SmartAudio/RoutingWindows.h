#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "Platform/Text.h"

#include <cstddef>
#include <span>
#include <string>

namespace orvane::SmartAudioBlockRouter {

/// Common to the steps of block routing: levels, ranges of windows, a track in a range.

/// The level, in dBFS, of anything too quiet to have one.
inline constexpr double silentLevelDB = -120.0;
/// Linear values at or below this floor have no level.
inline constexpr double windowLevelFloor = 1e-7;
inline constexpr double takeLevelFloor = 1e-6; ///< for means over a take and peaks of finished blocks

/// dBFS of a linear value. Always finite: a value that is not a number counts as silence, infinity as the
/// largest float.
double levelDB(double linear, double floor);

/// Frames from `first` up to, but not including, `end`.
struct WindowRange {
    std::size_t first = 0;
    std::size_t end = 0;
    bool isEmpty() const { return first >= end; }
};
/// The windows of a time range; each end is rounded to the nearest window boundary and clamped to the frames.
WindowRange windowsBetween(double startSeconds, double endSeconds, double windowSeconds,
                           std::size_t frameCount);
/// A duration as the nearest number of windows, from 0 to `most`.
std::size_t wholeWindows(double seconds, double windowSeconds, std::size_t most);

/// Null if the frame does not have the track.
const WindowMetrics* metricsOf(const PerWindowFrame& frame, int track);
/// The highest peak of a track in these frames, linear; 0 if none of them has the track.
double highestPeak(std::span<const PerWindowFrame> frames, int track);
bool hasSpeech(const PerWindowFrame& frame);

/// The displayed name of a track: "T2".
std::string trackName(int track);
using platform::text::formatted;

} // namespace orvane::SmartAudioBlockRouter
