#pragma once

#include "Platform/Playback/SampleWindow.h"

#include <cstdint>
#include <vector>

namespace orvane::platform {

/// Frames of a recording at which a clap, or a similar sound, begins: within a millisecond the sound
/// becomes several times as loud as at any moment shortly before. Periods of a voice are no attacks. Of
/// several close together the strongest counts.
///
/// The result does not depend on where a search begins or ends, or on the direction.
class AttackSearch {
  public:
    explicit AttackSearch(double sampleRate);

    /// Those from `first` up to `end`, ascending. `isReverse`: the next searches are for earlier frames.
    const std::vector<std::int64_t>& attacks(SampleWindow& window, std::int64_t first, std::int64_t end,
                                             bool isReverse);

  private:
    double rise(std::size_t hop) const;

    const std::int64_t hopFrames_;
    std::vector<float> peaks_; ///< one for each hop
    std::vector<double> rises_;
    std::vector<std::int64_t> found_;
};

} // namespace orvane::platform
