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

/// Keeps the sound of the clip on screen up to date. When a clip is shown and after every change of it,
/// passes the player the sound to play instead of the recording. When a clip is shown and after every change
/// that the preview of Voice Isolation depends on, has that preview rendered. A preview that is out of date
/// is not played. Nothing is rendered for other clips: a rendering stops when its clip is no longer shown.
/// Interface thread.
class ShownClipAudio {
  public:
    /// Absent: the recording itself.
    using Play = std::function<void(const std::optional<FileURL>& rendered)>;
    ShownClipAudio(std::shared_ptr<ImportController> controller,
                   const std::shared_ptr<platform::MainThread>& mainThread,
                   const std::shared_ptr<platform::SettingsStore>& settings, Play setMixdownAudio);
    ~ShownClipAudio();

    /// `renders`: whether previews are rendered; otherwise only existing ones are played.
    void show(std::optional<UUID> groupID, bool renders = true);

  private:
    /// The clip's entries in the maps of rendered sound.
    using Entries = std::tuple<std::optional<FileURL>, std::optional<FileURL>, std::optional<int>,
                               std::optional<FileURL>>;
    Entries entries() const;
    void refresh();
    void followEntries();
    void followSettings();

    std::shared_ptr<ImportController> controller_;
    Play play_;
    std::optional<UUID> shown_;
    bool renders_ = true;
    Entries entries_;
    std::optional<RenderedAudioController::HeardSettings> heard_; ///< those of the last refresh
    std::optional<platform::Task> preview_;                       ///< the newest rendering
    std::shared_ptr<ShownClipAudio*> self_;                       ///< null once this object is destroyed
    platform::Subscription ofWork_, ofSettings_;
};

} // namespace orvane
