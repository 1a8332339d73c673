#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace orvane {

/// The two filters of K-weighting (ITU-R BS.1770): a shelf for the effect of the head, then a high-pass.
/// Computed in 64 bits for several channels at once. Starts in silence. One thread at a time.
class KWeighting {
  public:
    /// Of second-order sections in direct form: numerator, and denominator without its leading 1.
    struct Coefficients {
        std::array<double, 3> shelfB;
        std::array<double, 2> shelfA;
        std::array<double, 2> highPassA; ///< its numerator is always 1, -2, 1
    };
    /// At 48 kHz the coefficients printed in the standard; at other rates those of the same analogue filters.
    /// `sampleRate`: Hz.
    static Coefficients coefficients(double sampleRate);

    KWeighting(std::size_t channels, double sampleRate);

    /// Filters the next `frames` samples of each channel, from `offset` on, and adds up the squares of the
    /// output. A sample that is not finite counts as silence.
    void add(std::span<const float* const> channels, std::size_t offset, std::size_t frames);
    /// The sum of squares of each channel since the last call. Added sample by sample, so the sums do not
    /// depend on how the sound was divided among the calls of `add`.
    std::vector<double> takeEnergies();

  private:
    static constexpr std::size_t lanes = 2; ///< more would not fit into the registers of all machines
    using Lanes = double __attribute__((vector_size(lanes * sizeof(double))));

    /// State and sum of squares of both sections, with one channel in each lane.
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
