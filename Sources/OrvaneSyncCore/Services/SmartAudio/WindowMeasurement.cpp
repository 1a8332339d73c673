#include "OrvaneSyncCore/Services/SmartAudio/WindowMeasurement.h"

#include "Platform/VectorOps.h"

#include <algorithm>
#include <cmath>

namespace orvane {

using namespace platform::vector;

void WindowMeasurement::hear(const AudioPiece& piece) {
    for (std::size_t channel = 0; channel < windows_.size(); ++channel) {
        Window& window = windows_[channel];
        const std::span<const float> samples(piece.channels()[channel], piece.frames());
        if (window.frames > 0 && (window.lastSample >= 0) != (samples.front() >= 0)) ++window.signChanges;
        window.signChanges += signChanges(samples);
        for (const Level& level : piece.levels(channel)) {
            window.sumOfSquares += level.sumOfSquares;
            window.peak = std::max(window.peak, level.peak);
        }
        window.lastSample = samples.back();
        window.frames += samples.size();
    }
}

void WindowMeasurement::windowEnded() {
    for (std::size_t channel = 0; channel < windows_.size(); ++channel) {
        const Window& window = windows_[channel];
        const auto frames = static_cast<double>(window.frames);
        analyses_[channel].add(static_cast<float>(std::sqrt(window.sumOfSquares / frames)), window.peak,
                               static_cast<float>(static_cast<double>(window.signChanges) / frames));
        windows_[channel] = {};
    }
}

std::unique_ptr<SplittableListener> WindowMeasurement::sibling(std::size_t /*firstFrame*/) const {
    return std::make_unique<WindowMeasurement>(windows_.size());
}

void WindowMeasurement::append(SplittableListener& behind) {
    auto& other = dynamic_cast<WindowMeasurement&>(behind);
    for (std::size_t channel = 0; channel < analyses_.size(); ++channel)
        analyses_[channel].append(other.analyses_[channel]);
}

} // namespace orvane
