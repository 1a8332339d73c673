#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/ScanController.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncApp/Controllers/WorkFiles.h"
#include "Platform/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace orvane {

/// Which recordings are matched to which clip, and the recordings that no clip uses. Undo steps and missing
/// clips: as in ClipEditing. Interface thread.
class RecordingEditing {
  public:
    RecordingEditing(OpenWork& work, ScanController& scan, SmartAudioController& smartAudio);

    /// Unless locked: adds the audio after the others and removes it from the wild tracks. Audio that an
    /// ambiguous clip already has is confirmed.
    void attachAudioToGroup(UUID groupID, MediaAsset audio);
    /// Reads the chosen file and attaches it, in an undo step that it opens.
    platform::Task chooseAndAttachAudio(UUID groupID, FileURL file);
    /// Unless locked. If another recording becomes the first, the anchor keeps its position in the picture.
    void removeAudioMatch(UUID groupID, UUID matchID);
    void confirmAmbiguousMatch(UUID groupID); ///< unless locked
    void confirmAllAmbiguousMatches();        ///< except locked clips
    /// Unless locked: puts the files of the recording that holds this match first and settles the clip; the
    /// other recordings are kept after them. The anchor keeps its position in the picture.
    void chooseRecording(UUID groupID, UUID matchID);
    void removeVideoFromSync(UUID groupID); ///< unless locked
    // Match again against the pool, on a queue, locked clips too; manual decisions are kept, including those
    // made meanwhile. Each is an undo step, which it opens at its end, after the steps made meanwhile.
    /// Clips that are requested before one of them is matched become one step together.
    platform::Task resyncClip(UUID groupID);
    platform::Task resyncAllClips();

    /// The present clips and the scan that made them.
    WorkFiles workFiles() const {
        return {work_.syncGroups(), work_.sharedWildTracks(), scan_.scanResult(), work_.matchRules()};
    }
    /// To be called after a scan has replaced the `earlier` clips, and before another step. Gives their
    /// decisions to the clips with the same camera files (`withDecisionsOf`), within the step of the scan.
    /// Also restores their Smart Audio results.
    platform::Task keepDecisions(WorkFiles earlier);

    void renameWildTrack(UUID id, std::string_view name);
    void toggleWildTrackApproved(UUID id);

    /// The audio of the scan; without a scan, that of the clips and wild tracks. Sorted by path.
    std::vector<MediaAsset> availableAudioPool() const { return workFiles().copiedAudioPool(); }
    /// One recording of the pool; null if the pool does not have it. Valid until the clips change.
    const MediaAsset* audioInPool(const UUID& id) const;
    /// The pool without wild tracks and the clip's own audio, sorted as in a file browser; recordings of
    /// another day than the clip's are after all others.
    std::vector<MediaAsset> rawFilesAvailableToAttach(UUID excludingGroupID) const;
    /// Those of the pool and the wild tracks that are of another day than the clip. If the clip's day comes
    /// only from its header, whose time zone is unknown, the days before and after count as the same day.
    std::unordered_set<UUID> recordingsOfOtherDays(UUID groupID) const;
    /// The stored names of the clips with this audio, ascending.
    std::vector<std::string> clipNames(UUID usingAudioID) const;
    /// How the attach menu lists a file, such as "a.wav  ·  also on 2 clips".
    std::string rawFilesMenuLabel(const MediaAsset& audio) const;

  private:
    static platform::Task attachFile(std::weak_ptr<RecordingEditing> weak, UUID groupID, FileURL file);
    void editWildTrack(UUID id, const std::function<void(WildTrack&)>& change);
    void settleWildTracks(const std::vector<AudioMatch>& released);
    static platform::Task resyncAsked(std::weak_ptr<RecordingEditing> weak);
    static platform::Task resyncAll(std::weak_ptr<RecordingEditing> weak);
    static platform::Task keep(std::weak_ptr<RecordingEditing> weak, WorkFiles earlier);
    void resync(const std::vector<SyncGroup>& matched);

    OpenWork& work_;
    ScanController& scan_;
    SmartAudioController& smartAudio_;
    std::vector<UUID> resyncAsked_; ///< clips to be matched next, together
    std::optional<platform::Task> resyncing_;
    const std::unique_ptr<platform::SerialQueue> matching_;
};

} // namespace orvane
