#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"
#include "Platform/SettingsStore.h"

#include <memory>
#include <string>

namespace orvane::cli::rpc {

/// What the methods work on: one controller, like the app.
class Desk {
  public:
    std::shared_ptr<ImportController> controller;
    std::shared_ptr<SessionManager> sessions;
    std::shared_ptr<platform::SettingsStore> settings;

    /// Throws GroupNotFound.
    const SyncGroup& group(const UUID& id) const;
};

/// What a caller named, as an absolute location. Throws Error when it cannot be read.
FileURL readableFile(const std::string& path);
FileURL readableFolder(const std::string& path);

} // namespace orvane::cli::rpc
