#include "Platform/Resampling.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orvane::platform {

namespace {

constexpr int zeroCrossings = 32;
constexpr int stepsPerCrossing = 512; // of the table, which is read with linear interpolation
constexpr double kaiserBeta = 9;      // side lobes below -90 dB

/// The right half of the impulse response, at a cut-off of half the sample rate.
std::vector<double> kernelTable() {
    constexpr int length = zeroCrossings * stepsPerCrossing;
    std::vector<double> table(static_cast<std::size_t>(length) + 2, 0.0);
    for (int i = 0; i <= length; ++i) {
        const double x = static_cast<double>(i) / stepsPerCrossing;
        const double within = x / zeroCrossings;
        const double window =
            std::cyl_bessel_i(0, kaiserBeta * std::sqrt(std::max(0.0, 1 - within * within))) /
            std::cyl_bessel_i(0, kaiserBeta);
        const double angle = std::numbers::pi * x;
        table[static_cast<std::size_t>(i)] = (i == 0 ? 1.0 : std::sin(angle) / angle) * window;
    }
    return table;
}

} // namespace

std::vector<float> resampled(std::span<const float> samples, double fromRate, double toRate,
                             std::size_t frames, double firstAt) {
    constexpr double passBand = 0.95; // centre of the slope
    static const std::vector<double> table = kernelTable();
    std::vector<float> out(frames, 0.0F);
    const double step = fromRate / toRate;
    const double cutoff =
        passBand * std::min(1.0, toRate / fromRate); // against the Nyquist frequency of `samples`
    const double reach = zeroCrossings / cutoff;     // samples on either side
    for (std::size_t i = 0; i < frames; ++i) {
        const double at = firstAt + static_cast<double>(i) * step;
        const auto first = static_cast<std::ptrdiff_t>(std::max(0.0, std::ceil(at - reach)));
        const auto last =
            std::min(static_cast<std::ptrdiff_t>(std::floor(at + reach)), std::ssize(samples) - 1);
        double sum = 0;
        for (std::ptrdiff_t k = first; k <= last; ++k) {
            const double place = std::abs(static_cast<double>(k) - at) * cutoff * stepsPerCrossing;
            const auto index = static_cast<std::size_t>(place);
            if (index + 1 >= table.size()) continue;
            const double share = place - static_cast<double>(index);
            sum += static_cast<double>(samples[static_cast<std::size_t>(k)]) *
                   (table[index] + (table[index + 1] - table[index]) * share);
        }
        out[i] = static_cast<float>(sum * cutoff);
    }
    return out;
}

} // namespace orvane::platform
