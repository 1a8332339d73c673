#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"
#include "Platform/Task.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The editor's decisions about a clip, except those about its recordings and tracks. Each operation finds
/// its clip by id and does nothing if there is no such clip or if a number is not finite. None opens an undo
/// step: the caller does, with the step of the same name in UndoSteps.h. "Unless locked": a locked clip is
/// not changed. Interface thread.
class ClipEditing {
  public:
    ClipEditing(OpenWork& work, SmartAudioController& smartAudio) : work_(work), smartAudio_(smartAudio) {}

    static constexpr double furthestOffsetSeconds = 86400; ///< a day, either way
    /// Throws OutOfRange if the resulting offset would be further.
    void adjustAudioOffset(UUID groupID, double deltaSeconds);
    /// Absent: removes the anchor.
    void setAudioAnchor(UUID groupID, std::optional<double> secondsInAudio);
    void resetAudioOffset(UUID groupID);
    /// Locking records offset and anchors as they are; unlocking deletes that record.
    void toggleLocked(UUID groupID);
    /// Locks every clip that has the base name and the shoot of this one.
    void lockAllInCluster(UUID groupID, GroupNaming::Source source,
                          const std::optional<std::string>& customPattern);
    void toggleApproved(UUID groupID);
    void toggleMOS(UUID groupID); ///< only for clips without audio
    void togglePickup(UUID groupID);
    /// Marks this clip's take and the later takes of its scene as pickups, by the recorder's metadata. Clears
    /// no mark.
    void markScenePickupFromHere(UUID groupID);
    void toggleExcludedFromExport(UUID groupID);
    void toggleExcludedFromMulticam(UUID groupID);
    void setManualClipName(UUID groupID, std::string_view name); ///< a blank name removes it
    void setSyncMethod(UUID groupID, SyncMethod method);
    void setGenerateNativeMOS(UUID groupID, bool enabled);
    void setGenerateProjectRateClip(UUID groupID, bool enabled);
    /// Unless locked. Absent: back to the rate that the file states, and to the file's project rate too.
    void setManualSensorFrameRate(UUID groupID, std::optional<double> fps);
    /// The most frequent project rate of the other clips, frames per second; of equally frequent ones the
    /// first in the list.
    double inferredProjectFrameRate(UUID excluding) const;

    /// Removes manual decisions about sound, sync and approval; keeps the matches.
    void resetClipToAutoSync(UUID groupID);
    /// Keeps overrides and excluded tracks. Cannot be undone. The task ends when all clips that had been
    /// analysed have been analysed again.
    platform::Task resetAllClipsToAutoSync();

    /// Writes the new names as one undo step, which it opens; no step if no clip gets a name. `only`: the
    /// clips to rename; absent: all.
    void applyBatchRename(const BatchRenamer& renamer, const std::optional<std::vector<UUID>>& only = {});
    void clearAllManualNames();

  private:
    OpenWork& work_;
    SmartAudioController& smartAudio_;
};

} // namespace orvane
