#pragma once

#include <optional>

namespace orvane {

/// The part of a clip that the timeline shows. The left edge of the content is `preRollSeconds` before the
/// clip; a clip time is at (time + preRollSeconds) * pixelsPerSecond() points in the content. All seconds are
/// clip time. A plain value.
struct TimelineZoomState {
    static constexpr double leastZoom = 1, mostZoom = 64;
    static constexpr double zoomInFactor = 1.25, zoomOutFactor = 0.8; ///< for keys and buttons
    static constexpr double leastPadding = 5;                         ///< seconds

    double zoomScale = leastZoom;               ///< 1 shows everything, 64 is the largest
    double scrollOffset = 0;                    ///< of the viewport's left edge in the content, points
    double viewportWidth = 800;                 ///< points
    double clipDuration = 0;                    ///< seconds of the video
    std::optional<double> cursorViewportX = {}; ///< position of the pointer while it is inside
    double playheadSeconds = 0;
    double preRollSeconds = leastPadding;  ///< before the clip
    double postRollSeconds = leastPadding; ///< after the clip

    double contentSeconds() const { return preRollSeconds + clipDuration + postRollSeconds; }
    /// Points per second at zoom 1; 60 if there is no width or nothing to show.
    double fitPixelsPerSecond() const;
    double pixelsPerSecond() const { return fitPixelsPerSecond() * zoomScale; }
    double largestScrollOffset() const;
    double rulerInterval() const; ///< seconds between ticks, for the whole content
    /// In points from the viewport's left edge.
    double viewportX(double seconds) const {
        return (seconds + preRollSeconds) * pixelsPerSecond() - scrollOffset;
    }

    /// Keeps the time under the pointer at its place on the screen, or else the time under the playhead.
    void applyZoom(double scaleDelta);
    /// Makes the clip as wide as the viewport.
    void zoomFit();
    /// A new width is used only if it differs by more than half a point.
    void updateViewportWidth(double width);
    /// Adapts the padding so that sound before the start or after the end of the picture can be scrolled to,
    /// with 2 seconds to spare. If only a part is visible, the visible part does not move.
    /// `audioOffsetSeconds`: clip time of the sound's first sample; `audioDuration`: 0 if unknown.
    void sizePaddingForAudio(double audioOffsetSeconds, double audioDuration);
};

/// The zoom factor for a pinch of that magnification; absent if the change is too large to be intended.
std::optional<double> pinchZoomFactor(double magnification);

/// Converts scrolling with Command held into zoom steps.
class ZoomScroll {
  public:
    /// Zoom steps, negative to zoom out; a fraction of a step is kept for the next call.
    int steps(double scrollingDeltaY);

  private:
    double accumulated_ = 0;
};

} // namespace orvane
