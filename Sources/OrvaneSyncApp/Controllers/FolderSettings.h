#pragma once

#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"
#include "Platform/MainThread.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The settings that follow the work into its folder: notifies half a second after the last change, and makes
/// and applies their snapshot. Interface thread. Held by a shared pointer, as settings change on any thread.
class FolderSettings : public std::enable_shared_from_this<FolderSettings> {
  public:
    FolderSettings(std::shared_ptr<platform::SettingsStore> settings,
                   std::shared_ptr<platform::MainThread> mainThread)
        : settings_(std::move(settings)), mainThread_(std::move(mainThread)) {}

    /// Called half a second after the last of several changes.
    std::function<void()> whenChanged;
    void observe();
    /// At once of a change whose half second is not over.
    void notifyNowIfChanged();

    std::string snapshot() const { return presets_.snapshotData(*settings_); }
    /// Gives the keys that have another value by it. One that can't be understood changes nothing.
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
