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
    /// Of a second-order section in direct form (its numerator and its denominator less the leading 1).
    struct Coefficients {
        std::array<double, 3> shelfB;
        std::array<double, 2> shelfA;
        std::array<double, 2> highPassA; ///< its numerator is 1, -2, 1
    };
    /// At 48 kHz those that the standard prints, at any other rate those of the same analogue filters.
    /// `sampleRate`: Hz.
    static Coefficients coefficients(double sampleRate);

    KWeighting(std::size_t channels, double sampleRate);

    /// Filters the next `frames` samples of each channel, from `offset` on, and adds up the squares of what
    /// comes out. A sample that is no finite number counts as silence.
    void add(std::span<const float* const> channels, std::size_t offset, std::size_t frames);
    /// The sum of squares of each channel since the last call. They are sums sample by sample: where the
    /// calls of `add` cut makes no difference.
    std::vector<double> takeEnergies();

  private:
    static constexpr std::size_t lanes = 2; ///< more would not fit into the registers of every machine
    using Lanes = double __attribute__((vector_size(lanes * sizeof(double))));

    /// The delayed values of both sections and the sum of squares, of one channel a lane.
    struct Group {
        Lanes shelf1{}, shelf2{}, highPass1{}, highPass2{}, energy{};
    };

    void settle();

    std::size_t channels_;
    Coefficients coefficients_;
    std::vector<Group> groups_;
    std::vector<Lanes> interleaved_;
};

} // namespace orvane
