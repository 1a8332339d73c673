#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// By how much each of several personal microphones leads the others in each window of a take, independent of
/// the recording levels. A "person" is here a track, by its index in the list.
///
/// While one of two people speaks, their own lavalier is louder than the other one; while the other speaks,
/// it is softer by as much. The middle between these two level differences is due to the recording levels
/// alone, and a lead is measured from there.
class SpeakerLevels {
  public:
    /// `tracks`: at least one. Tracks that never rise above their own noise never lead.
    SpeakerLevels(const std::vector<int>& tracks, std::span<const PerWindowFrame> frames);

    std::size_t people() const { return tracks_.size(); }
    std::size_t windows() const { return presence_.size(); }
    int track(std::size_t person) const { return tracks_[person]; }

    /// False if no track ever rises above its own noise.
    bool hasSpeech() const { return hasSpeech_; }
    /// How certain it is that someone speaks in a window, 0 to 1.
    double presence(std::size_t window) const { return presence_[window]; }
    /// Decibels ahead of the nearest other person; negative for all but at most one.
    double leadDB(std::size_t window, std::size_t person) const {
        return leads_[window * tracks_.size() + person];
    }
    /// The range in which a person leads most clearly, among ranges of at least `fewest` windows in a row
    /// that are not taken; absent if there is none.
    std::optional<WindowRange> clearestStretch(std::size_t person, std::size_t fewest,
                                               const std::vector<bool>& isTaken) const;

  private:
    std::vector<int> tracks_;
    bool hasSpeech_ = false;
    std::vector<double> presence_;
    std::vector<double> leads_;
};

} // namespace orvane::SmartAudioBlockRouter
