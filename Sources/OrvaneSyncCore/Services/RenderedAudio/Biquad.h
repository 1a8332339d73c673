#pragma once

namespace orvane {

/// A second-order filter in 64 bits (transposed direct form 2). The coefficients are those of R.
/// Bristow-Johnson's "Audio EQ Cookbook". If the sample rate is too low for the frequency, the filter changes
/// nothing.
class Biquad {
  public:
    Biquad() = default;
    /// Butterworth (Q = 1/sqrt(2)): -3 dB at the frequency, falling 12 dB an octave below it.
    static Biquad highPass(double frequency, double sampleRate);
    /// Slope 1: half of the gain, in dB, at the frequency; the full gain far above it.
    static Biquad highShelf(double frequency, double gainDB, double sampleRate);

    double operator()(double in) {
        const double out = b0_ * in + z1_;
        z1_ = b1_ * in - a1_ * out + z2_;
        z2_ = b2_ * in - a2_ * out;
        return out;
    }
    /// Sets the state to 0 when its decay is inaudible, before denormal numbers slow down the arithmetic.
    void settle();

  private:
    double b0_ = 1, b1_ = 0, b2_ = 0, a1_ = 0, a2_ = 0;
    double z1_ = 0, z2_ = 0;
};

} // namespace orvane
