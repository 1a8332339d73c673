#pragma once

#include "Timecode/TimecodeFrameRate.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// An offset of one card's recordings.
struct DeepestOffset {
    double seconds = 0;
    int depth = 0;           ///< clips that it finds sound for, of those that were looked at
    double widthSeconds = 0; ///< how far it may move and still find as many
    /// The same for nearly as many: a clip or two may lie otherwise, as sound that began late or ended early.
    double likelyWidthSeconds = 0;
};

/// Offsets by which one recording comes to lie under one clip.
struct OffsetWindow {
    double first, last;
    double start; ///< where both begin together
    std::size_t clip;
    std::size_t recording = 0;
};

/// Offsets may serve a little fewer clips than the best one.
inline constexpr double nearlyAll = 0.9;
/// The offset in most clips' windows, in the middle of where they overlap.
DeepestOffset deepest(const std::vector<OffsetWindow>& windows, std::size_t clipCount);
/// What an offset does for the clips.
struct OffsetFit {
    int depth = 0;                 ///< how many have a window there
    double startsApartSeconds = 0; ///< from the recordings' starts to those of these clips, on average
};
OffsetFit fitAt(const std::vector<OffsetWindow>& windows, std::size_t clipCount, double offset);

/// An offset that people set clocks wrong by, else one that is all that the windows know.
struct NicestOffset {
    double seconds;
    bool isNice; ///< whole or half hours
};
/// Whole hours go before half ones, these before whole seconds: of all offsets that find sound for the
/// same clips, what people set their clocks wrong by. Long recordings lie under clips by several of them;
/// by the right one both begin nearly together.
NicestOffset nicest(const std::vector<OffsetWindow>& windows, std::size_t clipCount,
                    const DeepestOffset& best, TimecodeFrameRate rate);
/// That the best of all offsets finds sound for `depth` clips although the two have nothing to do with
/// each other: the windows would then lie anywhere.
double chanceOf(const std::vector<OffsetWindow>& windows, int depth);
/// How many recordings have a window at the offset.
int recordingsAt(const std::vector<OffsetWindow>& windows, double offset);

} // namespace orvane
