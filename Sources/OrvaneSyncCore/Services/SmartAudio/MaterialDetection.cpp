#include "OrvaneSyncCore/Services/SmartAudio/MaterialDetection.h"

#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr double detectionSeconds = 60;
constexpr double minDialogDensity = 0.4;    // share of windows with speech; below: action
constexpr double interviewDensity = 0.7;    // above, with few changes: interview
constexpr double interviewChangesBelow = 8; // of the loudest speaker, per minute
constexpr double fastDialogChangesAbove = 20;
constexpr double minMeasuredSeconds = 1;

/// The loudest track with speech; the first of equally loud ones.
std::optional<int> dominantTrack(const PerWindowFrame& frame) {
    const WindowMetrics* loudest = nullptr;
    for (const WindowMetrics& window : frame.perChannel)
        if (window.hasSpeech && (loudest == nullptr || window.rms > loudest->rms)) loudest = &window;
    if (loudest == nullptr) return std::nullopt;
    return loudest->trackIndex;
}

} // namespace

MaterialCharacter detectMaterialCharacter(std::span<const PerWindowFrame> frames, double windowSeconds) {
    const std::size_t n = wholeWindows(detectionSeconds, windowSeconds, frames.size());
    if (n < 1) return MaterialCharacter::standardDialog;

    std::size_t speechFrames = 0;
    std::size_t changes = 0;
    std::optional<int> previous;
    for (const PerWindowFrame& frame : frames.first(n)) {
        const std::optional<int> dominant = dominantTrack(frame);
        if (!dominant) continue;
        ++speechFrames;
        if (previous && previous != dominant) ++changes;
        previous = dominant;
    }

    const auto windows = static_cast<double>(n);
    const double density = static_cast<double>(speechFrames) / windows;
    const double changesPerMinute =
        static_cast<double>(changes) / std::max(windows * windowSeconds, minMeasuredSeconds) * 60;

    if (density < minDialogDensity) return MaterialCharacter::actionAtmo;
    if (density > interviewDensity && changesPerMinute < interviewChangesBelow)
        return MaterialCharacter::interview;
    if (changesPerMinute > fastDialogChangesAbove) return MaterialCharacter::fastDialog;
    return MaterialCharacter::standardDialog;
}

} // namespace orvane::SmartAudioBlockRouter
