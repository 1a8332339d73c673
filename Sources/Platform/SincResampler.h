#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace orvane::platform {

/// Computes sound between its samples, and at another rate, by a windowed sinc: flat to 0.9 of the lower
/// Nyquist frequency, images and aliases 90 dB down or more. Linear phase, without delay. Costs 128 products
/// for each sample, more when the rate is reduced. One thread.
class SincResampler {
  public:
    /// `step`: input frames for each output frame, above 0; backwards uses the same table.
    explicit SincResampler(double step);

    double step() const { return step_; }
    /// Input frames that are needed before and after each place.
    std::size_t reach() const { return taps_ / 2; }
    /// Values at `place` and at every `step` or `-step` from there. `input` begins at place 0 and continues
    /// `reach()` frames beyond all places. One array for each channel on both sides.
    void render(std::span<const float* const> input, double place, bool isReverse,
                std::span<float* const> output, std::size_t count);

  private:
    double step_;
    std::size_t taps_;
    std::vector<float> rows_; ///< the filter for every phase, one row of taps after another
    std::vector<float> row_;  ///< interpolated between two of them
};

/// A whole sound at another rate: `frames` samples, with silence assumed before and after the sound. Both
/// rates in Hz, above 0. `firstAt`: the position in `samples` of the first result, 0 or later. Pure; any
/// thread.
std::vector<float> resampled(std::span<const float> samples, double fromRate, double toRate,
                             std::size_t frames, double firstAt = 0);
std::vector<std::vector<float>> resampled(std::span<const std::vector<float>> channels, double fromRate,
                                          double toRate, std::size_t frames);

} // namespace orvane::platform
