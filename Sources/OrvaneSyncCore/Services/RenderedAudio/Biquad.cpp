#include "OrvaneSyncCore/Services/RenderedAudio/Biquad.h"

#include <cmath>
#include <numbers>

namespace orvane {

namespace {

bool isWithin(double frequency, double sampleRate) { return frequency > 0 && frequency * 2 < sampleRate; }

} // namespace

Biquad Biquad::highPass(double frequency, double sampleRate) {
    Biquad filter;
    if (!isWithin(frequency, sampleRate)) return filter;
    const double w = 2 * std::numbers::pi * frequency / sampleRate, cosine = std::cos(w);
    const double alpha = std::sin(w) / std::numbers::sqrt2; // sin(w) / (2 Q)
    const double a0 = 1 + alpha;
    filter.b0_ = filter.b2_ = (1 + cosine) / 2 / a0;
    filter.b1_ = -(1 + cosine) / a0;
    filter.a1_ = -2 * cosine / a0;
    filter.a2_ = (1 - alpha) / a0;
    return filter;
}

Biquad Biquad::highShelf(double frequency, double gainDB, double sampleRate) {
    constexpr double dBPerDecadeOfA = 40; // A is the square root of the gain
    Biquad filter;
    if (!isWithin(frequency, sampleRate)) return filter;
    const double a = std::pow(10, gainDB / dBPerDecadeOfA);
    const double w = 2 * std::numbers::pi * frequency / sampleRate, cosine = std::cos(w);
    const double edge = std::sqrt(a) * std::sin(w) * std::numbers::sqrt2; // 2 sqrt(A) alpha with slope 1
    const double a0 = (a + 1) - (a - 1) * cosine + edge;
    filter.b0_ = a * ((a + 1) + (a - 1) * cosine + edge) / a0;
    filter.b1_ = -2 * a * ((a - 1) + (a + 1) * cosine) / a0;
    filter.b2_ = a * ((a + 1) + (a - 1) * cosine - edge) / a0;
    filter.a1_ = 2 * ((a - 1) - (a + 1) * cosine) / a0;
    filter.a2_ = ((a + 1) - (a - 1) * cosine - edge) / a0;
    return filter;
}

void Biquad::settle() {
    constexpr double inaudible = 1e-30;
    if (std::abs(z1_) < inaudible && std::abs(z2_) < inaudible) z1_ = z2_ = 0;
}

} // namespace orvane
