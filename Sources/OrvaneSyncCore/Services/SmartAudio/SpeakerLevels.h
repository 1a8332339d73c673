#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// How far each of several personal microphones is ahead of the others in each window of a take, by a measure
/// that a recording level does not change. A "person" is a track here, by its place in the list.
///
/// Of two lavs the one is louder by the bleed while its own speaker speaks, and softer by it while the other
/// one does. Halfway between the two both are as far from their speakers, whatever their recording levels;
/// from there the lead is counted.
class SpeakerLevels {
  public:
    /// `tracks`: at least one. Those that never rise above their own noise lead nowhere.
    SpeakerLevels(const std::vector<int>& tracks, std::span<const PerWindowFrame> frames);

    std::size_t people() const { return tracks_.size(); }
    std::size_t windows() const { return presence_.size(); }
    int track(std::size_t person) const { return tracks_[person]; }

    /// False where no track ever rises above its own noise.
    bool isAnybodyHeard() const { return isAnybodyHeard_; }
    /// How surely somebody speaks in a window, 0 to 1.
    double presence(std::size_t window) const { return presence_[window]; }
    /// dB ahead of the nearest other; negative for all but at most one.
    double leadDB(std::size_t window, std::size_t person) const {
        return leads_[window * tracks_.size() + person];
    }
    /// Where a person leads most clearly, if they do in at least `fewest` windows in a row, of windows that
    /// are not taken.
    std::optional<WindowRange> clearestStretch(std::size_t person, std::size_t fewest,
                                               const std::vector<bool>& isTaken) const;

  private:
    std::vector<int> tracks_;
    bool isAnybodyHeard_ = false;
    std::vector<double> presence_;
    std::vector<double> leads_;
};

} // namespace orvane::SmartAudioBlockRouter
