#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace orvane {

/// The two filters in front of the ear's loudness (ITU-R BS.1770): a shelf for the head, then a high-pass, in
/// 64 bits, for several channels side by side. Starts in silence. One thread at a time.
class KWeighting {
  public:
    KWeighting(std::size_t channels, double sampleRate);

    /// Filters the next `frames` samples of each channel, from `offset` on, and adds each channel's sum of
    /// the squares of what comes out to `energies`. A sample that is no finite number counts as silence.
    void addEnergies(std::span<const float* const> channels, std::size_t offset, std::size_t frames,
                     std::span<double> energies);
    /// Ends what a filter still rings with once nobody could measure it, so that silence is not computed with
    /// numbers too small for the machine's arithmetic.
    void settle();

  private:
    static constexpr std::size_t lanes = 4;
    using Lanes = double __attribute__((vector_size(lanes * sizeof(double))));

    /// Of a second-order section in direct form (its numerator and its denominator less the leading 1).
    struct Coefficients {
        std::array<double, 3> shelfB;
        std::array<double, 2> shelfA;
        std::array<double, 2> highPassA; ///< its numerator is 1, -2, 1
    };
    /// The delayed values of both sections, of one channel a lane.
    struct Delays {
        Lanes shelf1{}, shelf2{}, highPass1{}, highPass2{};
    };

    static const Coefficients coefficients48000;
    static const Coefficients coefficients44100;

    Coefficients coefficients_;
    std::vector<Delays> groups_;
    std::vector<Lanes> interleaved_;
};

} // namespace orvane
