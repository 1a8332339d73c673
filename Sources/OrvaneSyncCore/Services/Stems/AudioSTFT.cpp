#include "OrvaneSyncCore/Services/Stems/AudioSTFT.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>

namespace orvane {

namespace {

using Complex = std::complex<float>;

constexpr std::size_t padding = AudioSTFT::points / 2;
/// Frames that are transposed at a time: one cache line in each bin's row.
constexpr std::size_t framesAtOnce = 16;
/// Square root of 2048.
constexpr float norm = 45.254833995939045F;

/// The sample at a position that may be before the first or after the last one.
float reflected(std::span<const float> samples, std::ptrdiff_t at) {
    const std::ptrdiff_t last = std::ssize(samples) - 1;
    if (last < 0) return 0;
    if (at < 0) at = std::min(-at, last);
    if (at > last) at = std::max<std::ptrdiff_t>(2 * last - at, 0);
    return samples[static_cast<std::size_t>(at)];
}

} // namespace

AudioSTFT::AudioSTFT() : fft_(points), window_(points) {
    for (std::size_t n = 0; n < points; ++n)
        window_[n] = static_cast<float>(0.5 * (1 - std::cos(2 * std::numbers::pi * static_cast<double>(n) /
                                                            static_cast<double>(points))));
}

AudioSTFT::Spectrogram AudioSTFT::transform(std::span<const float> samples) {
    Spectrogram result;
    result.nTime = samples.size() / hop + 1;
    result.real.resize(bins * result.nTime);
    result.imag.resize(bins * result.nTime);
    std::vector<float> frame(points);
    std::vector<Complex> spectra(framesAtOnce * bins);
    for (std::size_t first = 0; first < result.nTime; first += framesAtOnce) {
        const std::size_t count = std::min(framesAtOnce, result.nTime - first);
        for (std::size_t i = 0; i < count; ++i) {
            const auto start =
                static_cast<std::ptrdiff_t>((first + i) * hop) - static_cast<std::ptrdiff_t>(padding);
            if (start >= 0 && start + static_cast<std::ptrdiff_t>(points) <= std::ssize(samples)) {
                const float* const in = samples.data() + start;
                for (std::size_t n = 0; n < points; ++n) frame[n] = in[n] * window_[n];
            } else {
                for (std::size_t n = 0; n < points; ++n)
                    frame[n] = reflected(samples, start + static_cast<std::ptrdiff_t>(n)) * window_[n];
            }
            fft_.forward(frame, std::span(spectra).subspan(i * bins, bins));
        }
        for (std::size_t bin = 0; bin < bins; ++bin) {
            float* const real = result.real.data() + bin * result.nTime + first;
            float* const imag = result.imag.data() + bin * result.nTime + first;
            for (std::size_t i = 0; i < count; ++i) {
                real[i] = spectra[i * bins + bin].real() / norm;
                imag[i] = spectra[i * bins + bin].imag() / norm;
            }
        }
    }
    return result;
}

std::vector<float> AudioSTFT::inverse(std::span<const float> real, std::span<const float> imag,
                                      std::size_t nTime, std::size_t outputLength) {
    std::vector<float> sums(nTime == 0 ? 0 : (nTime - 1) * hop + points, 0.0F);
    std::vector<float> weights(sums.size(), 0.0F);
    std::vector<float> frame(points);
    std::vector<Complex> spectra(framesAtOnce * bins);
    for (std::size_t first = 0; first < nTime; first += framesAtOnce) {
        const std::size_t count = std::min(framesAtOnce, nTime - first);
        for (std::size_t bin = 0; bin < bins; ++bin)
            for (std::size_t i = 0; i < count; ++i)
                spectra[i * bins + bin] = {real[bin * nTime + first + i] * norm,
                                           imag[bin * nTime + first + i] * norm};
        for (std::size_t i = 0; i < count; ++i) {
            fft_.inverse(std::span(spectra).subspan(i * bins, bins), frame);
            float* const out = sums.data() + (first + i) * hop;
            float* const weight = weights.data() + (first + i) * hop;
            for (std::size_t n = 0; n < points; ++n) {
                out[n] += frame[n] * window_[n];
                weight[n] += window_[n] * window_[n];
            }
        }
    }
    constexpr float smallestWeight = 1e-8F;
    std::vector<float> result(outputLength, 0.0F);
    for (std::size_t i = 0; i < outputLength && i + padding < sums.size(); ++i)
        if (weights[i + padding] > smallestWeight) result[i] = sums[i + padding] / weights[i + padding];
    return result;
}

} // namespace orvane
