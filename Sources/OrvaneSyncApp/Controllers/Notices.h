#pragma once

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
    scanState,
    progress,
    discoveryResult,
    scanResult,
    syncGroups,
    wildTracks,
    report,
    smartAudio,
    undoState,
    project
};

/// Calls back after changes of the open work, on the interface thread.
class Notices {
  public:
    explicit Notices(std::shared_ptr<platform::MainThread> mainThread);

    platform::Subscription onChange(std::function<void(ImportField)> callback);
    void notify(ImportField field);
    /// Runs a change of several fields. Its notices are held back until it is whole, also where it throws,
    /// and then each field's is given once.
    void together(const std::function<void()>& change);

    void assertOnMainThread() const;

  private:
    const std::shared_ptr<platform::MainThread> mainThread_;
    platform::Listeners<ImportField> listeners_;
    int changesUnderWay_ = 0;
    std::vector<ImportField> heldBack_; ///< what they have changed so far
};

} // namespace orvane
