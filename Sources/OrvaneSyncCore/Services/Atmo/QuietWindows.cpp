#include "OrvaneSyncCore/Services/Atmo/QuietWindows.h"

#include "Platform/VectorOps.h"

#include <algorithm>
#include <cmath>

namespace orvane {

void QuietWindows::samples(std::span<const float* const> channels, std::size_t frames) {
    for (std::size_t at = 0; at < frames;) {
        const std::size_t some = std::min(windowFrames_ - inWindow_, frames - at);
        for (std::size_t channel = 0; channel < sums_.size(); ++channel)
            sums_[channel] += platform::vector::sumOfSquares({channels[channel] + at, some});
        at += some;
        inWindow_ += some;
        if (inWindow_ < windowFrames_) continue;
        for (std::size_t channel = 0; channel < sums_.size(); ++channel) {
            const double mean = sums_[channel] / static_cast<double>(windowFrames_);
            rms[channel].push_back(static_cast<float>(std::sqrt(mean)));
            sums_[channel] = 0;
        }
        inWindow_ = 0;
    }
}

void QuietWindows::windowEnded() {
    std::ranges::fill(sums_, 0.0);
    inWindow_ = 0;
}

std::unique_ptr<SplittableListener> QuietWindows::sibling(std::size_t /*firstFrame*/) const {
    return std::make_unique<QuietWindows>(sums_.size(), windowFrames_);
}

void QuietWindows::append(SplittableListener& behind) {
    auto& other = dynamic_cast<QuietWindows&>(behind);
    for (std::size_t channel = 0; channel < rms.size(); ++channel)
        rms[channel].insert(rms[channel].end(), other.rms[channel].begin(), other.rms[channel].end());
}

} // namespace orvane
