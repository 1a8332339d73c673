#pragma once

#include "OrvaneSyncApp/ViewModels/Timeline/TimelineLayout.h"
#include "OrvaneSyncApp/Views/Timeline/PictureStrip.h"
#include "OrvaneSyncApp/Views/Timeline/WaveformTiles.h"

#include <QString>

#include <optional>
#include <set>
#include <vector>

class QPainter;

namespace orvane::views {

/// What is painted of a timeline.
struct TimelineScene {
    const TimelineLayout& layout;
    WaveformTiles& tiles;
    PictureStrip& pictures;
    double rulerInterval = 1; ///< seconds
    double pixelRatio = 1;    ///< pixels of the screen a point
    QString soundHint{};      ///< in place of a waveform that is not there
    std::optional<std::size_t> selectedRange{};
    /// A range that is being drawn or moved, and of which track.
    std::optional<TimelineSpan> draftSpan{};
    int draftTrack = 0;
    /// How far a drag has moved the sound, beside the pointer.
    QString dragText{};
    double dragTextX = 0;
    std::optional<TimelineSpan> loop{};
};

/// What was visible and not ready; something simpler was painted in its place.
struct TimelineGaps {
    std::set<WaveformTileKey> tiles;
    std::set<double> pictures; ///< seconds
};

/// Points of a picture of the strip, side by side.
double pictureSlotWidth(const PictureStrip& pictures);
/// Its height in points.
double pictureSlotHeight();

/// Paints what lies within `dirty`, which is in points.
TimelineGaps paintTimeline(QPainter& painter, const TimelineScene& scene, const QRectF& dirty);

} // namespace orvane::views
