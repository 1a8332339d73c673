#pragma once

#include "Timecode/TimecodeFrameRate.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// An offset of one card's recordings.
struct DeepestOffset {
    double seconds = 0;
    int depth = 0;           ///< clips that it finds sound for, of those considered
    double widthSeconds = 0; ///< how far it may move and still find as many
    /// The same for nearly as many clips: one or two may differ, as with sound that began late or ended
    /// early.
    double likelyWidthSeconds = 0;
};

/// The offsets at which one recording lies under one clip.
struct OffsetWindow {
    double first, last;
    double start; ///< the offset at which both begin together
    std::size_t clip;
    std::size_t recording = 0;
};

/// An offset may serve this share of the best one's clips and still be accepted.
inline constexpr double nearlyAll = 0.9;
/// The offset that is in the windows of most clips, in the middle of their overlap.
DeepestOffset deepest(const std::vector<OffsetWindow>& windows, std::size_t clipCount);
/// How well an offset fits the clips.
struct OffsetFit {
    int depth = 0;                 ///< clips that have a window at the offset
    double startsApartSeconds = 0; ///< between the starts of the recordings and of these clips, mean
};
OffsetFit fitAt(const std::vector<OffsetWindow>& windows, std::size_t clipCount, double offset);

/// A typical offset of wrongly set clocks, else the offset that the windows give.
struct NicestOffset {
    double seconds;
    bool isNice; ///< whole or half hours
};
/// Prefers whole hours, then half hours, then whole seconds, among the offsets that find sound for the same
/// clips: people set clocks wrong by such steps. Long recordings lie under clips at several of these offsets;
/// at the right one both begin nearly together.
NicestOffset nicest(const std::vector<OffsetWindow>& windows, std::size_t clipCount,
                    const DeepestOffset& best, TimecodeFrameRate rate);
/// Probability that the best of all offsets finds sound for `depth` clips although clips and recordings are
/// unrelated, that is, although the windows are at random places.
double chanceOf(const std::vector<OffsetWindow>& windows, int depth);
/// The number of recordings that have a window at the offset.
int recordingsAt(const std::vector<OffsetWindow>& windows, double offset);

} // namespace orvane
