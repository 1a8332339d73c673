#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <optional>

namespace orvane {

// Rates in frames per second.

/// The rate if nothing states one.
inline constexpr double rateWithoutAny = 24;

/// Whether frames can be counted at this rate: it rounds to 1 or more, and is at most a million. A clip whose
/// header states a rate such as 0.4 counts by another rate.
bool isUsableRate(double fps);
/// The first usable rate, as the exact rate it stands for; 24 if there is none.
double usableRate(std::optional<double> first, std::optional<double> second = std::nullopt,
                  std::optional<double> third = std::nullopt);

/// The rate of all times of a clip, its asset and the elements attached to it, exactly: the rate of its
/// project, else of its file, else `projectRate`.
double clipRate(const MediaAsset& video, double projectRate);

/// The same for the clips of one work. The project has the rate that the user chose (above 0), else the one
/// that most of its clips have. One thread at a time.
class ClipRates {
  public:
    /// `clips` must outlive this object.
    ClipRates(const SyncGroupList& clips, double chosenRate) : clips_(clips), chosenRate_(chosenRate) {}

    double of(const MediaAsset& video) const;

  private:
    const SyncGroupList& clips_;
    double chosenRate_;
    mutable std::optional<double> projectRate_; ///< computed when a clip without a rate first needs it
};

} // namespace orvane
