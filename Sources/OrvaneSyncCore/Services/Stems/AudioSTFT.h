#pragma once

#include "Platform/FFT/RealFFT.h"

#include <cstddef>
#include <span>
#include <vector>

namespace orvane {

/// The short-time Fourier transform that the separator's model uses: 2048 points every 512 samples, with a
/// periodic Hann window, each frame centred on its sample; beyond the ends the signal is reflected. `inverse`
/// of `transform` gives the samples back. One thread at a time.
class AudioSTFT {
  public:
    static constexpr std::size_t points = 2048, hop = 512, bins = points / 2 + 1;

    AudioSTFT();

    struct Spectrogram {
        std::vector<float> real, imag; ///< bin b of frame t at b x nTime + t, scaled by 1 / sqrt(2048)
        std::size_t nTime = 0;
    };
    Spectrogram transform(std::span<const float> samples);
    /// `outputLength` samples; samples outside all frames are 0.
    std::vector<float> inverse(std::span<const float> real, std::span<const float> imag, std::size_t nTime,
                               std::size_t outputLength);

  private:
    platform::RealFFT fft_;
    std::vector<float> window_;
};

} // namespace orvane
