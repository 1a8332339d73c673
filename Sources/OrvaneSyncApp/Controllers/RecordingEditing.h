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

/// Which recordings overlap which clip, and those that no clip uses. Undo steps and clips that are not
/// there: as in ClipEditing. Interface thread.
class RecordingEditing {
  public:
    RecordingEditing(OpenWork& work, ScanController& scan, SmartAudioController& smartAudio);

    /// Unless locked: adds the audio behind the others and takes it from the wild tracks. Audio that an
    /// ambiguous clip has already is confirmed by it.
    void attachAudioToGroup(UUID groupID, MediaAsset audio);
    /// Reads the chosen file and attaches it, in an undo step of its own.
    platform::Task chooseAndAttachAudio(UUID groupID, FileURL file);
    /// Unless locked. The anchor keeps its place under the picture where another recording is the first then.
    void removeAudioMatch(UUID groupID, UUID matchID);
    void confirmAmbiguousMatch(UUID groupID); ///< unless locked
    void confirmAllAmbiguousMatches();        ///< but those of locked clips
    /// Unless locked: the files of the recording that holds this match come first and the clip is settled;
    /// the other recordings stay behind. The anchor keeps its place under the picture.
    void chooseRecording(UUID groupID, UUID matchID);
    void removeVideoFromSync(UUID groupID); ///< unless locked
    // Match again against the pool, on a queue, whatever was locked; manual decisions stay, those too that
    // are made meanwhile. Each is an undo step of its own, on top of those that came before its end.
    /// Clips that are asked for before one of them is matched are one step together.
    platform::Task resyncClip(UUID groupID);
    platform::Task resyncAllClips();

    void renameWildTrack(UUID id, std::string_view name);
    void toggleWildTrackApproved(UUID id);

    /// The audio of the scan; without one that of the clips and wild tracks. In the order of the paths.
    std::vector<MediaAsset> availableAudioPool() const { return workFiles().copiedAudioPool(); }
    /// One of the pool; null when it is not in it. Valid until the clips change.
    const MediaAsset* audioInPool(const UUID& id) const;
    /// The pool without wild tracks and the clip's own audio, in the order of a file browser; recordings of
    /// another day than the clip's behind all others.
    std::vector<MediaAsset> rawFilesAvailableToAttach(UUID excludingGroupID) const;
    /// Of the pool and the wild tracks: what lies on another day than the clip. A day that only the clip's
    /// header says, in whatever zone, is that day or one beside it.
    std::unordered_set<UUID> recordingsOfOtherDays(UUID groupID) const;
    /// The stored names of the clips with this audio, ascending.
    std::vector<std::string> clipNames(UUID usingAudioID) const;
    /// How the attach menu lists a file, such as "a.wav  ·  also on 2 clips".
    std::string rawFilesMenuLabel(const MediaAsset& audio) const;

  private:
    static platform::Task attachFile(std::weak_ptr<RecordingEditing> weak, UUID groupID, FileURL file);
    void editWildTrack(UUID id, const std::function<void(WildTrack&)>& change);
    void settleWildTracks(const std::vector<AudioMatch>& released);
    WorkFiles workFiles() const { return {work_.syncGroups(), work_.sharedWildTracks(), scan_.scanResult()}; }
    static platform::Task resyncAsked(std::weak_ptr<RecordingEditing> weak);
    static platform::Task resyncAll(std::weak_ptr<RecordingEditing> weak);
    void resync(const std::vector<SyncGroup>& matched);

    OpenWork& work_;
    ScanController& scan_;
    SmartAudioController& smartAudio_;
    std::vector<UUID> resyncAsked_; ///< clips to be matched next, together
    std::optional<platform::Task> resyncing_;
    const std::unique_ptr<platform::SerialQueue> matching_;
};

} // namespace orvane
