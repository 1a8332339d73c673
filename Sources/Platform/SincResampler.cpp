#include "Platform/SincResampler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace orvane::platform {

namespace {

constexpr double zeroCrossings = 64; // of the sinc, on each side
// Kaiser's formula for 100 dB: with this many zero crossings the filter's transition ends within 5 % of
// Nyquist on either side of the cutoff, and images begin where it ends.
constexpr double kaiserBeta = 0.1102 * (100 - 8.7);
constexpr double cutoffOfNyquist = 0.955;
// Rows between two phases are interpolated: an error of -116 dB.
constexpr std::size_t phases = 512;
constexpr std::size_t dotLanes = 8; ///< sums that are computed in parallel

double besselI0(double x) {
    double term = 1;
    double sum = 1;
    for (int k = 1; term > sum * 1e-12; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

float product(const float* a, const float* b, std::size_t count) {
    std::array<float, dotLanes> sums{};
    for (std::size_t i = 0; i < count; i += dotLanes)
        for (std::size_t k = 0; k < dotLanes; ++k) sums[k] += a[i + k] * b[i + k];
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

} // namespace

SincResampler::SincResampler(double step) : step_(step) {
    const double cutoff = cutoffOfNyquist / std::max(1.0, step);
    const double width = zeroCrossings / cutoff * cutoffOfNyquist;
    taps_ = (static_cast<std::size_t>(std::ceil(2 * width)) + dotLanes - 1) / dotLanes * dotLanes;
    const double half = static_cast<double>(taps_) / 2;
    const double scale = 1 / besselI0(kaiserBeta);
    rows_.resize((phases + 1) * taps_);
    row_.resize(taps_);
    std::vector<double> exact(taps_);
    for (std::size_t phase = 0; phase <= phases; ++phase) {
        double sum = 0;
        for (std::size_t tap = 0; tap < taps_; ++tap) {
            const double x = half - 1 - static_cast<double>(tap) + static_cast<double>(phase) / phases;
            const double angle = std::numbers::pi * cutoff * x;
            const double sinc = std::abs(angle) < 1e-9 ? 1 : std::sin(angle) / angle;
            const double inside = 1 - (x / half) * (x / half);
            exact[tap] = inside <= 0 ? 0 : sinc * besselI0(kaiserBeta * std::sqrt(inside)) * scale;
            sum += exact[tap];
        }
        for (std::size_t tap = 0; tap < taps_; ++tap)
            rows_[phase * taps_ + tap] = static_cast<float>(exact[tap] / sum);
    }
}

void SincResampler::render(std::span<const float* const> input, double place, bool isReverse,
                           std::span<float* const> output, std::size_t count) {
    const double step = isReverse ? -step_ : step_;
    for (std::size_t i = 0; i < count; ++i) {
        const double at = place + static_cast<double>(i) * step;
        const double whole = std::floor(at);
        const double phase = (at - whole) * phases;
        const auto below = std::min(static_cast<std::size_t>(phase), phases - 1);
        const auto share = static_cast<float>(phase - static_cast<double>(below));
        const float* first = rows_.data() + below * taps_;
        const float* const second = first + taps_;
        const float* row = first; // if the place is exactly at a row
        if (share > 0) {
            for (std::size_t tap = 0; tap < taps_; ++tap)
                row_[tap] = first[tap] + share * (second[tap] - first[tap]);
            row = row_.data();
        }
        const auto from = static_cast<std::size_t>(whole) + 1 - taps_ / 2;
        for (std::size_t channel = 0; channel < output.size(); ++channel)
            output[channel][i] = product(input[channel] + from, row, taps_);
    }
}

namespace {

std::vector<float> converted(SincResampler& resampler, std::span<const float> samples, std::size_t frames,
                             double firstAt) {
    std::vector<float> out(frames);
    if (frames == 0) return out;
    const std::size_t reach = resampler.reach() + 1;
    const double lastAt = firstAt + static_cast<double>(frames - 1) * resampler.step();
    const std::size_t needed = std::max(samples.size(), static_cast<std::size_t>(std::ceil(lastAt)) + 1);
    std::vector<float> padded(needed + 2 * reach, 0.0F);
    std::ranges::copy(samples, padded.begin() + static_cast<std::ptrdiff_t>(reach));
    const float* const input = padded.data();
    float* const output = out.data();
    resampler.render({&input, 1}, static_cast<double>(reach) + firstAt, false, {&output, 1}, frames);
    return out;
}

} // namespace

std::vector<float> resampled(std::span<const float> samples, double fromRate, double toRate,
                             std::size_t frames, double firstAt) {
    SincResampler resampler(fromRate / toRate);
    return converted(resampler, samples, frames, firstAt);
}

std::vector<std::vector<float>> resampled(std::span<const std::vector<float>> channels, double fromRate,
                                          double toRate, std::size_t frames) {
    SincResampler resampler(fromRate / toRate);
    std::vector<std::vector<float>> all;
    for (const auto& channel : channels) all.push_back(converted(resampler, channel, frames, 0));
    return all;
}

} // namespace orvane::platform
