#pragma once

#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"
#include "Platform/MainThread.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The settings that are stored with the work's folder. Notifies half a second after the last change, makes
/// their snapshot and applies it. Interface thread. Held by a shared pointer, because settings change on any
/// thread.
class FolderSettings : public std::enable_shared_from_this<FolderSettings> {
  public:
    FolderSettings(std::shared_ptr<platform::SettingsStore> settings,
                   std::shared_ptr<platform::MainThread> mainThread)
        : settings_(std::move(settings)), mainThread_(std::move(mainThread)) {}

    /// Called half a second after the last of several changes.
    std::function<void()> whenChanged;
    void observe();
    /// Notifies at once if the half second after a change is not over.
    void notifyNowIfChanged();

    std::string snapshot() const { return presets_.snapshotData(*settings_); }
    /// Returns the keys whose value the snapshot changes. A snapshot that can't be parsed changes nothing.
    std::vector<std::string> apply(const std::string& snapshot) const;

  private:
    void wait();

    const std::shared_ptr<platform::SettingsStore> settings_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    const PresetManager presets_{};
    platform::Subscription observation_;
    std::shared_ptr<platform::Timer> timer_;
};

} // namespace orvane
