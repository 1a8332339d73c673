#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "Platform/Listeners.h"
#include "Platform/MainThread.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace orvane {

/// What of the open work has changed.
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
    doubts, ///< others were derived of the clips
    report,
    smartAudio,
    slates,
    atmo,
    calibration,
    undoState,
    project,
    lockit,
    models
};

/// A change of the open work. A listener that asks for no more may take an ImportField in its place.
struct ImportChange {
    ImportField field;
    /// Of `syncGroups`: the clips at the notice before this one, and now. They share all that has not
    /// changed.
    SyncGroupList clipsBefore = {};
    SyncGroupList clips = {};

    operator ImportField() const { return field; }
    /// Which rows of a list of clips are to be painted again. Made when asked for; costs nothing before.
    SyncGroupChanges clipChanges() const { return clips.changesSince(clipsBefore); }
};

/// Calls back after changes of the open work, on the interface thread. A listener that changes the work
/// itself gets the notices of that before the others get the one that it answers.
class Notices {
  public:
    /// `clips`: the list that `syncGroups` stands for; must outlive this.
    Notices(std::shared_ptr<platform::MainThread> mainThread, const SyncGroupList& clips);

    platform::Subscription onChange(std::function<void(const ImportChange&)> callback);
    void notify(ImportField field);
    /// Runs a change of several fields. Its notices are held back until it is whole, also where it throws,
    /// and then each field's is given once.
    void together(const std::function<void()>& change);

    void assertOnMainThread() const;

  private:
    void callListeners(ImportField field);

    const std::shared_ptr<platform::MainThread> mainThread_;
    const SyncGroupList& clips_;
    SyncGroupList clipsNoticed_;
    platform::Listeners<const ImportChange&> listeners_;
    int changesUnderWay_ = 0;
    std::vector<ImportField> heldBack_; ///< what they have changed so far
};

} // namespace orvane
