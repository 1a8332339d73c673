#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <span>

namespace orvane::platform {

/// The discrete Fourier transform of real signals of one length, in 32 bits. A transform does not allocate.
/// One thread at a time.
class RealFFT {
  public:
    /// `size`: samples, even and at least 2; fast if its only prime factors are 2, 3 and 5. Throws
    /// std::invalid_argument for any other.
    explicit RealFFT(std::size_t size);
    ~RealFFT();
    RealFFT(RealFFT&&) noexcept;
    RealFFT& operator=(RealFFT&&) noexcept;

    std::size_t size() const { return size_; }
    /// Number of frequencies from 0 to half the sample rate, both included.
    std::size_t bins() const { return size_ / 2 + 1; }

    /// X[k] = sum of x[n] exp(-2 pi i k n / size), not scaled. `samples` has `size` values, `spectrum`
    /// `bins`.
    void forward(std::span<const float> samples, std::span<std::complex<float>> spectrum);
    /// The inverse of `forward`, scaled by 1 / size: both together return the samples but for rounding. The
    /// imaginary parts of the first and the last bin count as 0.
    void inverse(std::span<const std::complex<float>> spectrum, std::span<float> samples);

  private:
    struct Plans;
    std::size_t size_;
    std::unique_ptr<Plans> plans_;
};

} // namespace orvane::platform
