#pragma once

#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "Timecode/Timecode.h"

#include <optional>
#include <variant>

namespace orvane {

/// What one file says about its place on the axis of timecode seconds, read once. A timecode text is parsed
/// here and nowhere else in matching: reading it at another rate is arithmetic.
class AssetPlacement {
  public:
    /// A label counts at `timecodeRate`, where given and where it exists at that rate.
    explicit AssetPlacement(const MediaAsset& asset,
                            std::optional<TimecodeFrameRate> timecodeRate = std::nullopt);

    /// As `SyncEngine::tcRange` of the asset.
    std::optional<SyncEngine::TCRange> range(std::optional<double> fallbackFrameRate = std::nullopt) const;

  private:
    using Samples = double; ///< seconds, by the recorder's count of samples
    using Clock = Timecode::Components;

    std::variant<std::monostate, Samples, Clock> start_; ///< nothing: the file has no place
    double durationSeconds_ = 0;                         ///< on the axis, not on the file's own timeline
    std::optional<TimecodeFrameRate> timecodeFrameRate_; ///< by which the clock runs where the file says it
    double frameRate_ = 0;                               ///< else, without a fallback
};

} // namespace orvane
