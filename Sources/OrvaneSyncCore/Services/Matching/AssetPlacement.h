#pragma once

#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "Timecode/Timecode.h"

#include <optional>
#include <variant>

namespace orvane {

/// What one file states about its place on the axis of timecode seconds, read once. Only this class parses
/// timecode texts for matching; reading a text at another rate is then arithmetic.
class AssetPlacement {
  public:
    /// A label counts at `timecodeRate` if given and if the label exists at that rate.
    explicit AssetPlacement(const MediaAsset& asset,
                            std::optional<TimecodeFrameRate> timecodeRate = std::nullopt);

    /// As `SyncEngine::tcRange` of the asset.
    std::optional<SyncEngine::TCRange> range(std::optional<double> fallbackFrameRate = std::nullopt) const;

  private:
    using Samples = double; ///< seconds, from the recorder's count of samples
    using Clock = Timecode::Components;

    std::variant<std::monostate, Samples, Clock> start_; ///< monostate: the file has no place
    double durationSeconds_ = 0;                         ///< on the axis, not on the file's own timeline
    std::optional<TimecodeFrameRate> timecodeFrameRate_; ///< the rate of the clock, if the file states it
    double frameRate_ = 0;                               ///< else this rate, without a fallback
};

} // namespace orvane
