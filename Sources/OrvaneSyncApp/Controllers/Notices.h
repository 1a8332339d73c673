#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "Platform/Listeners.h"
#include "Platform/MainThread.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// Which part of the open work has changed.
enum class ImportField : std::uint8_t {
    videoFolderURL,
    audioFolderURL,
    scanScope,
    sourceCorrections,
    scanState,
    progress,
    discoveryResult,
    scanResult,
    syncGroups,
    wildTracks,
    doubts, ///< other doubts were derived
    report,
    smartAudio,
    smartAudioProgress, ///< of an analysis or a rendering
    slates,
    atmo,
    calibration,
    undoState,
    project,
    lockit,
    models
};

/// A change of the open work. A listener that needs no more than the field may take an ImportField instead.
struct ImportChange {
    ImportField field;
    /// For `syncGroups`: the clips at the previous notice, and the present ones. They share all that has not
    /// changed.
    SyncGroupList clipsBefore = {};
    SyncGroupList clips = {};
    /// For `smartAudio`: the clips whose results or rendered sound changed; absent: those of any clip.
    std::optional<std::vector<UUID>> smartAudioClips = {};

    operator ImportField() const { return field; }
    /// Which rows of a list of clips have to be painted again. Computed by this call.
    SyncGroupChanges clipChanges() const { return clips.changesSince(clipsBefore); }
};

/// Calls back on the interface thread after changes of the open work. If a listener changes the work itself,
/// the notices of that change come before the remaining listeners get the notice that it reacts to.
class Notices {
  public:
    /// `clips`: the list that `syncGroups` refers to; must outlive this object.
    Notices(std::shared_ptr<platform::MainThread> mainThread, const SyncGroupList& clips);

    platform::Subscription onChange(std::function<void(const ImportChange&)> callback);
    void notify(ImportField field);
    /// Notifies `smartAudio` for these clips only. No clips: whether an analysis runs has changed.
    void notifySmartAudio(const std::vector<UUID>& clips);
    /// Runs a change of several fields. Its notices are held back until it ends, with or without an
    /// exception; then each field's notice is given once.
    void together(const std::function<void()>& change);

    void assertOnMainThread() const;

  private:
    void give(ImportField field);
    void callListeners(ImportField field);

    const std::shared_ptr<platform::MainThread> mainThread_;
    const SyncGroupList& clips_;
    SyncGroupList clipsNoticed_;
    platform::Listeners<const ImportChange&> listeners_;
    int changesUnderWay_ = 0;
    std::vector<ImportField> heldBack_; ///< the fields changed so far
    /// As in the next notice of `smartAudio`.
    std::optional<std::vector<UUID>> smartAudioClips_ = std::vector<UUID>();
};

} // namespace orvane
