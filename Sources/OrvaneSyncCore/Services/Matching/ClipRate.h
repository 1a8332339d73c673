#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <optional>

namespace orvane {

// Rates in frames per second.

/// Where nothing states a rate.
inline constexpr double rateWithoutAny = 24;

/// Whether frames can be counted at it: a number that rounds to 1 or more, up to a million. A clip that is
/// shot at 0.4, or a header that says so, counts by another rate.
bool isUsableRate(double fps);
/// The first that is usable, exactly, else 24.
double usableRate(std::optional<double> first, std::optional<double> second = std::nullopt,
                  std::optional<double> third = std::nullopt);

/// The one rate of all times of a clip, of its asset and of what hangs on it, exactly: that of its project,
/// else that of its file, else `projectRate`.
double clipRate(const MediaAsset& video, double projectRate);

/// The same for the clips of one work, whose project has the rate that the user chose (above 0), else the
/// one that its clips vote for. One thread at a time.
class ClipRates {
  public:
    /// `clips` outlives it.
    ClipRates(const SyncGroupList& clips, double chosenRate) : clips_(clips), chosenRate_(chosenRate) {}

    double of(const MediaAsset& video) const;

  private:
    const SyncGroupList& clips_;
    double chosenRate_;
    mutable std::optional<double> projectRate_; ///< voted for when the first clip without a rate asks
};

} // namespace orvane
