#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"
#include "Platform/SettingsStore.h"

#include <functional>
#include <memory>
#include <string>

namespace orvane::cli::rpc {

class Call;

/// What the methods work on: one controller, like the app.
class Desk {
  public:
    std::shared_ptr<ImportController> controller;
    std::shared_ptr<SessionManager> sessions;
    std::shared_ptr<platform::SettingsStore> settings;
    std::shared_ptr<platform::MainThread> mainThread;

    /// Throws for a clip, recording, range or wild track that a call names and that is not there: before the
    /// call has done anything, so that there is nothing to take back.
    void expectKnown(const Call& call) const;
    /// Runs an edit as an undo step. The task is that of the analysis which the edit sets off.
    platform::Task withUndo(const UndoStep& step, const std::function<platform::Task()>& edit) const;
    /// Throws GroupNotFound.
    const SyncGroup& group(const UUID& id) const;
};

/// What a caller named, as an absolute location. Throws Error when it cannot be read.
FileURL readableFile(const std::string& path);
FileURL readableFolder(const std::string& path);

} // namespace orvane::cli::rpc
