#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"
#include "Platform/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

namespace orvane {

/// Keeps the sound of the clip on screen up to date: hands the player what it plays in the place of the
/// recording, when the clip comes into view and after every change of it, and has the preview of Voice
/// Isolation rendered when the clip comes into view and after every change that it depends on. A preview of
/// what holds no longer is not played. Nothing is rendered for other clips: what is under way for one stops
/// when it leaves. Interface thread.
class ShownClipAudio {
  public:
    /// Nothing: the recording itself.
    using Play = std::function<void(const std::optional<FileURL>& rendered)>;
    ShownClipAudio(std::shared_ptr<ImportController> controller,
                   const std::shared_ptr<platform::MainThread>& mainThread,
                   const std::shared_ptr<platform::SettingsStore>& settings, Play setMixdownAudio);
    ~ShownClipAudio();

    /// `renders`: whether previews are rendered, or only what is there already is played.
    void show(std::optional<UUID> groupID, bool renders = true);

  private:
    /// The clip's entries in the maps of rendered sound.
    using Entries = std::tuple<std::optional<FileURL>, std::optional<FileURL>, std::optional<int>,
                               std::optional<FileURL>>;
    Entries entries() const;
    void refresh();
    void followEntries();

    std::shared_ptr<ImportController> controller_;
    Play play_;
    std::optional<UUID> shown_;
    bool renders_ = true;
    Entries entries_;
    std::optional<platform::Task> preview_; ///< the newest
    std::shared_ptr<ShownClipAudio*> self_; ///< null once this is gone
    platform::Subscription ofWork_, ofSettings_;
};

} // namespace orvane
