#pragma once

#include <optional>

namespace orvane {

/// What part of a clip the timeline shows. A moment of clip time lies in the content, whose left edge is
/// `preRollSeconds` before the clip, at (moment + preRollSeconds) * pixelsPerSecond() points. All seconds are
/// clip time. A plain value.
struct TimelineZoomState {
    static constexpr double leastZoom = 1, mostZoom = 64;
    static constexpr double zoomInFactor = 1.25, zoomOutFactor = 0.8; ///< of keys and buttons
    static constexpr double leastPadding = 5;                         ///< seconds

    double zoomScale = leastZoom;               ///< 1 shows all, 64 is the closest
    double scrollOffset = 0;                    ///< of the viewport's left edge, in points of the content
    double viewportWidth = 800;                 ///< points
    double clipDuration = 0;                    ///< seconds of the video
    std::optional<double> cursorViewportX = {}; ///< of the pointer, while it is inside
    double playheadSeconds = 0;
    double preRollSeconds = leastPadding;  ///< before the clip
    double postRollSeconds = leastPadding; ///< behind it

    double contentSeconds() const { return preRollSeconds + clipDuration + postRollSeconds; }
    /// The scale at zoom 1; 60 where there is no width or nothing to show.
    double fitPixelsPerSecond() const;
    double pixelsPerSecond() const { return fitPixelsPerSecond() * zoomScale; }
    double largestScrollOffset() const;
    double rulerInterval() const; ///< seconds from tick to tick, over the whole content
    /// In points from the viewport's left edge.
    double viewportX(double seconds) const {
        return (seconds + preRollSeconds) * pixelsPerSecond() - scrollOffset;
    }

    /// Keeps what lies under the pointer where it is on the screen, or else what lies under the playhead.
    void applyZoom(double scaleDelta);
    /// Makes the clip as wide as the viewport.
    void zoomFit();
    /// A new width counts if it differs by more than half a point.
    void updateViewportWidth(double width);
    /// Keeps sound that begins before the picture or ends behind it within reach, with 2 seconds to spare.
    /// Where not all is shown, what is in view stays where it is. `audioOffsetSeconds`: clip time of the
    /// sound's first sample; `audioDuration`: 0 where it is not known.
    void sizePaddingForAudio(double audioOffsetSeconds, double audioDuration);
};

/// The factor of a pinch by its magnification; nothing for one too violent to be meant.
std::optional<double> pinchZoomFactor(double magnification);

/// Turns scrolling with Command held into steps of zoom.
class ZoomScroll {
  public:
    /// Steps in, or out where negative; what is short of a step is kept.
    int steps(double scrollingDeltaY);

  private:
    double accumulated_ = 0;
};

} // namespace orvane
