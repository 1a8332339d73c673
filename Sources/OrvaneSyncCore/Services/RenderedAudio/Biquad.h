#pragma once

namespace orvane {

/// A second-order filter, in 64 bits (transposed direct form 2). The forms are those of R. Bristow-Johnson's
/// "Audio EQ Cookbook". A frequency that the sample rate cannot hold gives the filter that changes nothing.
class Biquad {
  public:
    Biquad() = default;
    /// Butterworth (Q = 1/sqrt(2)): -3 dB at the frequency, 12 dB an octave below it.
    static Biquad highPass(double frequency, double sampleRate);
    /// Slope 1: half of the gain, in dB, at the frequency; the whole far above it.
    static Biquad highShelf(double frequency, double gainDB, double sampleRate);

    double operator()(double in) {
        const double out = b0_ * in + z1_;
        z1_ = b1_ * in - a1_ * out + z2_;
        z2_ = b2_ * in - a2_ * out;
        return out;
    }
    /// Ends a decay that nobody hears before its numbers become too small for quick arithmetic.
    void settle();

  private:
    double b0_ = 1, b1_ = 0, b2_ = 0, a1_ = 0, a2_ = 0;
    double z1_ = 0, z2_ = 0;
};

} // namespace orvane
