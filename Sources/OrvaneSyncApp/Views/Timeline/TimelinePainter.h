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

/// The contents of a timeline to paint.
struct TimelineScene {
    const TimelineLayout& layout;
    WaveformTiles& tiles;
    PictureStrip& pictures;
    double rulerInterval = 1; ///< seconds
    double pixelRatio = 1;    ///< pixels of the screen for each point
    QString soundHint{};      ///< shown instead of a waveform that is missing
    std::optional<std::size_t> selectedRange{};
    /// A range that is being drawn or moved, with its track.
    std::optional<TimelineSpan> draftSpan{};
    int draftTrack = 0;
    /// How far a drag has moved the sound; shown beside the pointer.
    QString dragText{};
    double dragTextX = 0;
    std::optional<TimelineSpan> loop{};
};

/// Parts that were visible and not ready; something simpler was painted instead.
struct TimelineGaps {
    std::set<WaveformTileKey> tiles;
    std::set<double> pictures; ///< seconds
};

/// Width in points of a picture in the strip.
double pictureSlotWidth(const PictureStrip& pictures);
/// Its height in points.
double pictureSlotHeight();

/// Paints the part within `dirty`, in points.
TimelineGaps paintTimeline(QPainter& painter, const TimelineScene& scene, const QRectF& dirty);

} // namespace orvane::views
