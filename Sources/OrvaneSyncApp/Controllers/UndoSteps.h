#pragma once

#include "OrvaneSyncApp/Controllers/UndoStep.h"

/// The undo step of each operation of the editor, named after the operation. A front end opens it with
/// `ImportController::withUndo`; the texts are those of the menu.
namespace orvane::undoSteps {

/// Seconds within which successive nudges, or edits of a name while it is typed, belong to one step.
inline constexpr double nudging = 0.5;
inline constexpr double typing = 1.0;

inline constexpr UndoStep adjustAudioOffset{"Adjust Audio Offset", nudging};
inline constexpr UndoStep setAudioAnchor{"Set Audio Anchor", nudging};
inline constexpr UndoStep resetAudioOffset{"Reset Audio Offset"};
inline constexpr UndoStep toggleApproved{"Toggle Approved"};
inline constexpr UndoStep toggleLocked{"Toggle Lock"};
inline constexpr UndoStep lock{"Lock"}, unlock{"Unlock"}; ///< `toggleLocked` in the window
inline constexpr UndoStep lockAllInCluster{"Lock Cluster"};
inline constexpr UndoStep toggleMOS{"Toggle MOS"};
inline constexpr UndoStep togglePickup{"Toggle Pickup"};
inline constexpr UndoStep markScenePickupFromHere{"Mark Scene Pickups"};
inline constexpr UndoStep toggleExcludedFromExport{"Toggle Excluded"};
inline constexpr UndoStep toggleExcludedFromMulticam{"Toggle Multicam Exclude"};
/// Also used by batch renaming, so that it is one step.
inline constexpr UndoStep setManualClipName{"Rename Clip", typing};
inline constexpr UndoStep acceptSlate{"Accept Slate"};
inline constexpr UndoStep acceptSlates{"Accept Slates"};
inline constexpr UndoStep setSyncMethod{"Change Sync Method"};
inline constexpr UndoStep setGenerateNativeMOS{"Toggle Native MOS"};
inline constexpr UndoStep setGenerateProjectRateClip{"Toggle Project Rate Clip"};
inline constexpr UndoStep attachAudioToGroup{"Attach Audio"};
inline constexpr UndoStep removeAudioMatch{"Remove Audio Match"};
inline constexpr UndoStep confirmAmbiguousMatch{"Confirm Audio Matches"};
inline constexpr UndoStep chooseRecording{"Choose Recording"};
inline constexpr UndoStep setTrimMode{"Change Length of Clips"};
inline constexpr UndoStep applyReview{"Apply Review"};
inline constexpr UndoStep applySuggestions{"Apply Suggestions"};
inline constexpr UndoStep removeVideoFromSync{"Remove Video From Sync"};
inline constexpr UndoStep resyncClip{"Re-sync Clip"};
inline constexpr UndoStep resyncAllClips{"Re-sync All Clips"};
inline constexpr UndoStep resetClipToAutoSync{"Reset Clip"};
inline constexpr UndoStep setManualSensorFrameRate{"Set Sensor FPS"};
inline constexpr UndoStep addBlockOverride{"Add Range Override"};
inline constexpr UndoStep removeBlockOverride{"Remove Range Override"};
inline constexpr UndoStep toggleTrackActive{"Toggle Audio Track"};
inline constexpr UndoStep soloTrackActive = toggleTrackActive;
inline constexpr UndoStep toggleAlgorithmInclusion{"Toggle Algo Inclusion"};
inline constexpr UndoStep soloAlgorithmInclusion = toggleAlgorithmInclusion;
inline constexpr UndoStep setMasterGain{"Set Master Gain"};
inline constexpr UndoStep resetMasterGain{"Reset Master Gain"};
inline constexpr UndoStep renameWildTrack{"Rename Wild Track", typing};
inline constexpr UndoStep toggleWildTrackApproved{"Toggle Wild Track Approved"};

// Opened by the operations themselves, because there is no step if there is nothing to undo.
inline constexpr UndoStep scanAndMatch{"Scan & Match"};
inline constexpr UndoStep syncLockitNetwork{"Sync LockitNetwork"};
inline constexpr UndoStep clearALEMetadata{"Clear ALE Metadata"};
inline constexpr UndoStep clearLockitMetadata{"Clear Lockit Metadata"};
inline constexpr UndoStep clearALEMetadataForAllClips{"Clear ALE Metadata (All)"};
inline constexpr UndoStep clearLockitMetadataForAllClips{"Clear Lockit Metadata (All)"};

} // namespace orvane::undoSteps
