#include "OrvaneSyncCore/Services/Timeline/TimelineZoomState.h"

#include "OrvaneSyncCore/Services/Timeline/FrameAccumulator.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineRuler.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

constexpr double pixelsPerSecondOfNothing = 60;
constexpr double leastWidthChange = 0.5; ///< points
constexpr double spareSeconds = 2;       ///< padding beyond the sound
constexpr double pinchSpeed = 0.04;
constexpr double leastPinch = 0.5, mostPinch = 2;
constexpr double scrollOfAStep = 4;

} // namespace

double TimelineZoomState::fitPixelsPerSecond() const {
    const double seconds = contentSeconds();
    return viewportWidth > 0 && seconds > 0 ? viewportWidth / seconds : pixelsPerSecondOfNothing;
}

double TimelineZoomState::largestScrollOffset() const {
    return std::max(contentSeconds() * pixelsPerSecond() - viewportWidth, 0.0);
}

double TimelineZoomState::rulerInterval() const {
    return TimelineRuler::rulerInterval(contentSeconds(), contentSeconds() * pixelsPerSecond());
}

void TimelineZoomState::applyZoom(double scaleDelta) {
    if (!(scaleDelta > 0)) return;
    const double scale = std::clamp(zoomScale * scaleDelta, leastZoom, mostZoom);
    const double x = cursorViewportX.value_or(viewportX(playheadSeconds));
    const double contentTime = (x + scrollOffset) / pixelsPerSecond();
    zoomScale = scale;
    scrollOffset = std::clamp(contentTime * pixelsPerSecond() - x, 0.0, largestScrollOffset());
}

void TimelineZoomState::zoomFit() {
    zoomScale =
        clipDuration > 0 ? std::clamp(contentSeconds() / clipDuration, leastZoom, mostZoom) : leastZoom;
    scrollOffset = 0;
}

void TimelineZoomState::updateViewportWidth(double width) {
    if (std::isfinite(width) && std::abs(width - viewportWidth) > leastWidthChange) viewportWidth = width;
}

void TimelineZoomState::sizePaddingForAudio(double audioOffsetSeconds, double audioDuration) {
    const double scale = pixelsPerSecond(), left = scrollOffset / scale - preRollSeconds;
    preRollSeconds =
        audioOffsetSeconds <= 0 ? std::max(leastPadding, spareSeconds - audioOffsetSeconds) : leastPadding;
    const double overhang = audioDuration + audioOffsetSeconds - clipDuration;
    postRollSeconds = overhang >= 0 ? std::max(leastPadding, overhang + spareSeconds) : leastPadding;
    if (zoomScale > leastZoom) {
        zoomScale = std::clamp(scale / fitPixelsPerSecond(), leastZoom, mostZoom);
        scrollOffset = (left + preRollSeconds) * pixelsPerSecond();
    }
    scrollOffset = std::clamp(scrollOffset, 0.0, largestScrollOffset());
}

std::optional<double> pinchZoomFactor(double magnification) {
    const double factor = (magnification - 1) * pinchSpeed + 1;
    return factor > leastPinch && factor < mostPinch ? std::optional(factor) : std::nullopt;
}

int ZoomScroll::steps(double scrollingDeltaY) {
    return takeWhole(accumulated_, scrollingDeltaY / scrollOfAStep);
}

} // namespace orvane
