#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "Platform/Text.h"

#include <cstddef>
#include <span>
#include <string>

namespace orvane::SmartAudioBlockRouter {

/// What the steps of block routing share: levels, stretches of windows, one track in a stretch.

/// In place of the level of what is too quiet to have one, dBFS.
inline constexpr double silentLevelDB = -120.0;
/// Floors of a linear value, at and below which it has no level.
inline constexpr double windowLevelFloor = 1e-7;
inline constexpr double takeLevelFloor = 1e-6; ///< for means over a take and peaks of finished blocks

/// dBFS of a linear value. Always finite: no number counts as silence, infinity as the largest float.
double levelDB(double linear, double floor);

/// Frames `first` up to but not including `end`.
struct WindowRange {
    std::size_t first = 0;
    std::size_t end = 0;
    bool isEmpty() const { return first >= end; }
};
/// The windows of a stretch, each end at the nearest boundary of windows, held within the frames.
WindowRange windowsBetween(double startSeconds, double endSeconds, double windowSeconds,
                           std::size_t frameCount);
/// Seconds as a number of windows, the nearest; 0 to `most`.
std::size_t wholeWindows(double seconds, double windowSeconds, std::size_t most);

/// Null where the track has no such window.
const WindowMetrics* metricsOf(const PerWindowFrame& frame, int track);
/// The highest peak of a track in a stretch, linear; 0 where the track does not appear.
double highestPeak(std::span<const PerWindowFrame> frames, int track);
bool hasSpeech(const PerWindowFrame& frame);

/// As people call a track: "T2".
std::string trackName(int track);
using platform::text::formatted;

} // namespace orvane::SmartAudioBlockRouter
