#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include <memory>
#include <string>

namespace orvane::cli {

/// The session with that id, with an id that begins so, or with that name. Throws CommandError unless exactly
/// one matches.
SessionInfo sessionNamed(const SessionStore& store, const std::string& words);

/// A session opened for reading: nothing on the disk changes.
class OpenSession {
  public:
    /// Warns of what cannot be read. Throws CommandError if that is the clips.
    OpenSession(const Context& context, const SessionStore& store, SessionInfo info);

    const SessionInfo& info() const { return info_; }
    const SessionFolders& folders() const { return folders_; }
    const ImportController& controller() const { return *controller_; }
    ImportController& controller() { return *controller_; }
    /// Waits for an operation of the controller; its exception passes through.
    void wait(const platform::Task& operation) const;
    /// The clip with that name in Final Cut, with that camera file (its extension is optional), or with that
    /// id. Throws CommandError unless exactly one matches.
    const SyncGroup& clipNamed(const std::string& words) const;

  private:
    SessionInfo info_;
    SessionFolders folders_;
    std::shared_ptr<platform::RunLoop> loop_;
    std::shared_ptr<ImportController> controller_;
};

} // namespace orvane::cli
