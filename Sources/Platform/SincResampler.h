#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace orvane::platform {

/// Sound between its samples, and at another rate, by a windowed sinc: flat to 0.9 of the lower of both
/// Nyquist frequencies, images and aliases 90 dB down or more. Linear phase: nothing is delayed. Costs 128
/// products a sample, more where the rate goes down. One thread.
class SincResampler {
  public:
    /// `step`: input frames for each output frame, above 0; running backwards costs the same table.
    explicit SincResampler(double step);

    double step() const { return step_; }
    /// Input frames that are needed before and behind each place.
    std::size_t reach() const { return taps_ / 2; }
    /// Values at `place` and at every `step` or `-step` from there. `input` begins at place 0 and reaches
    /// `reach()` frames beyond all places. One array a channel on both sides.
    void render(std::span<const float* const> input, double place, bool isReverse,
                std::span<float* const> output, std::size_t count);

  private:
    double step_;
    std::size_t taps_;
    std::vector<float> rows_; ///< the filter for every phase, one row of taps after the other
    std::vector<float> row_;  ///< between two of them
};

/// Whole sounds at another rate: `frames` samples, as of silence before a sound begins and behind its end.
/// Both rates in Hz, above 0. `firstAt`: where among `samples` the first one of the result lies, 0 or later.
/// Pure; any thread.
std::vector<float> resampled(std::span<const float> samples, double fromRate, double toRate,
                             std::size_t frames, double firstAt = 0);
std::vector<std::vector<float>> resampled(std::span<const std::vector<float>> channels, double fromRate,
                                          double toRate, std::size_t frames);

} // namespace orvane::platform
