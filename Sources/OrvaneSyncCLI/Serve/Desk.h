#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"
#include "Platform/SettingsStore.h"

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

    /// Whether the clip, recording, range or wild track that a call names is there: one that is not makes an
    /// operation do nothing, and then there is nothing to take back.
    bool knows(const Call& call) const;
    /// Throws GroupNotFound.
    const SyncGroup& group(const UUID& id) const;
};

/// What a caller named, as an absolute location. Throws Error when it cannot be read.
FileURL readableFile(const std::string& path);
FileURL readableFolder(const std::string& path);

} // namespace orvane::cli::rpc
