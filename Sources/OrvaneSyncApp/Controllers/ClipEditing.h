#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"
#include "Platform/Task.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The editor's decisions about a clip but its recordings and tracks. Each operation finds its clip by id and
/// does nothing without it, nor with a number that is not finite. None opens an undo step: its caller does,
/// with the step of that name in UndoSteps.h. "Unless locked": a locked clip stays as it is. Interface
/// thread.
class ClipEditing {
  public:
    ClipEditing(OpenWork& work, SmartAudioController& smartAudio) : work_(work), smartAudio_(smartAudio) {}

    static constexpr double furthestOffsetSeconds = 86400; ///< a day, either way
    /// Throws OutOfRange where the offset would be further.
    void adjustAudioOffset(UUID groupID, double deltaSeconds);
    /// Absent: no anchor.
    void setAudioAnchor(UUID groupID, std::optional<double> secondsInAudio);
    void resetAudioOffset(UUID groupID);
    /// Locking records offset and anchors as they are; unlocking forgets the record.
    void toggleLocked(UUID groupID);
    /// Every clip of this one's base name and shoot.
    void lockAllInCluster(UUID groupID, GroupNaming::Source source,
                          const std::optional<std::string>& customPattern);
    void toggleApproved(UUID groupID);
    void toggleMOS(UUID groupID); ///< only without audio
    void togglePickup(UUID groupID);
    /// The takes of this scene from this one on, by the recorder's metadata. Clears no flag.
    void markScenePickupFromHere(UUID groupID);
    void toggleExcludedFromExport(UUID groupID);
    void toggleExcludedFromMulticam(UUID groupID);
    void setManualClipName(UUID groupID, std::string_view name); ///< a blank one is none
    void setSyncMethod(UUID groupID, SyncMethod method);
    void setGenerateNativeMOS(UUID groupID, bool enabled);
    void setGenerateProjectRateClip(UUID groupID, bool enabled);
    /// Unless locked. Absent: back to what the file says, its project rate too.
    void setManualSensorFrameRate(UUID groupID, std::optional<double> fps);
    /// The most frequent project rate of the other clips, frames per second; of equals the first in the list.
    double inferredProjectFrameRate(UUID excluding) const;

    /// Manual decisions about sound, sync and approval go, the matches stay.
    void resetClipToAutoSync(UUID groupID);
    /// Overrides and excluded tracks stay. Cannot be taken back. The task ends when all clips that had been
    /// analysed have been analysed again.
    platform::Task resetAllClipsToAutoSync();

    /// Writes the new names as one undo step of its own; none when no clip gets a name.
    /// `only`: the clips to rename; absent: all.
    void applyBatchRename(const BatchRenamer& renamer, const std::optional<std::vector<UUID>>& only = {});
    void clearAllManualNames();

  private:
    OpenWork& work_;
    SmartAudioController& smartAudio_;
};

} // namespace orvane
