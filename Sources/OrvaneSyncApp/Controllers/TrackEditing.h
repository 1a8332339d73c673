#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "Platform/Task.h"

#include <functional>
#include <set>

namespace orvane {

/// The editor's choice of tracks, ranges and level. A returned task is that of the analysis that the change
/// starts. Undo steps and missing clips: as in ClipEditing. Interface thread.
class TrackEditing {
  public:
    TrackEditing(OpenWork& work, SmartAudioController& smartAudio) : work_(work), smartAudio_(smartAudio) {}

    /// The channel's activation box: switches one track of the export on or off, starting from the tracks
    /// that are active without a manual choice.
    platform::Task toggleTrackActive(const UUID& groupID, int trackIndex);
    platform::Task soloTrackActive(const UUID& groupID, int trackIndex);
    /// The channel's box that allows the analysis to use it.
    platform::Task toggleAlgorithmInclusion(const UUID& groupID, int trackIndex);
    platform::Task soloAlgorithmInclusion(const UUID& groupID, int trackIndex);

    static constexpr double shortestOverrideSeconds = 0.1;
    /// In seconds of clip time, in either order; overlapping overrides are cut or removed. Does nothing for a
    /// range below the shortest length. Throws OutOfRange for a track that the clip's take does not have, and
    /// for a range that is not within the clip. `inPlaceOf`: an override that the new one replaces.
    platform::Task addBlockOverride(UUID groupID, double startSeconds, double endSeconds, int trackIndex,
                                    std::optional<UUID> inPlaceOf = std::nullopt);
    platform::Task removeBlockOverride(UUID groupID, UUID overrideID);

    static constexpr double lowestGainDB = -60, highestGainDB = 40;
    /// Throws OutOfRange for a gain outside these limits.
    void setMasterGain(UUID groupID, double gainDB, bool automatic);
    /// Back to the gain that is computed from the measured loudness.
    void resetMasterGain(UUID groupID);

  private:
    platform::Task editTracks(UUID groupID, const std::function<void(SyncGroup&)>& change);
    std::set<int> visibleActiveTracks(const SyncGroup& group) const;

    OpenWork& work_;
    SmartAudioController& smartAudio_;
};

} // namespace orvane
