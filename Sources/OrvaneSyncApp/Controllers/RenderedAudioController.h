#pragma once

#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"
#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "Platform/Task.h"
#include "Platform/Throttle.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace orvane {

/// The rendered sound of the open work, with which the player plays what the document will sound like. If
/// nothing can be rendered, there is no file, and the player uses the next entry of `playbackAudioURL`.
/// Operations fail only with ReadFailed, for a recording that is only partly read. Without a store nothing is
/// rendered. Interface thread.
class RenderedAudioController {
  public:
    RenderedAudioController(OpenWork& work, SmartAudioCaches& caches);
    ~RenderedAudioController();

    using Rendered = std::shared_ptr<std::optional<RenderResult>>;
    /// Renders the blocks of the clip's analysis. `result` is unchanged if there is nothing to render.
    platform::Task renderMixdown(const UUID& groupID, Rendered result = nullptr);
    /// Plays only one track of the clip's take, counted from 1; the same track again ends it. A track that
    /// the take does not have changes nothing.
    platform::Task toggleSoloMonitor(const UUID& groupID, int trackIndex);
    /// Renders the preview of Voice Isolation again if the settings, or the sound that the player would play
    /// without it, have changed.
    platform::Task runVoiceIsolationForGroup(const UUID& groupID);

    /// The file that the player plays instead of the clip's recording: the preview, the track that is played
    /// alone, or the blocks, in this order. Absent: the recording itself.
    std::optional<FileURL> playbackAudioURL(const UUID& groupID) const;
    /// The same without a preview that was made from another sound or by other settings.
    std::optional<FileURL> currentAudioURL(const UUID& groupID) const;
    /// The settings that the played sound depends on.
    struct HeardSettings {
        bool areEffectsHeard;
        SmartAudioPreset effects;
        bool operator==(const HeardSettings&) const = default;
    };
    HeardSettings heardSettings() const;

  private:
    using Rendering =
        std::function<std::optional<RenderResult>(const RenderProgress&, const std::stop_token&)>;
    /// The input from which a clip's preview is made.
    std::optional<VoiceIsolationInput> previewInput(const SyncGroup& group) const;
    std::optional<FileURL> audioURL(const UUID& groupID, bool withPreview) const;
    RenderProgress report(std::string phase);
    platform::Task start(platform::Task task) { return work_.runOnClips(std::move(task)); }
    using Weak = std::weak_ptr<RenderedAudioController>;
    static platform::Task render(Weak weak, platform::SerialQueue* queue, std::string phase,
                                 Rendering rendering, Rendered result);
    static platform::Task renderSolo(Weak weak, UUID groupID, int trackIndex);

    struct BlocksInput;
    std::optional<BlocksInput> blocksInput(const SyncGroup& group) const;
    void rememberPreview(const UUID& groupID, VoiceIsolationInput input);
    template <class Input>
    struct Kind;
    template <class Input>
    static platform::Task renderLatest(Weak weak, UUID groupID, Kind<Input> kind, Input input,
                                       Rendered result);

    OpenWork& work_;
    SmartAudioCaches& caches_;
    const std::shared_ptr<platform::Throttle<SmartAudioProgress>> shown_;
    int underWay_ = 0;
    std::map<UUID, int> soloWanted_; ///< tracks that are being rendered
    const std::unique_ptr<platform::SerialQueue> mixdowns_, previews_;
};

} // namespace orvane
