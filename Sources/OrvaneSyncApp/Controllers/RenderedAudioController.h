#pragma once

#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "Platform/Task.h"
#include "Platform/Throttle.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace orvane {

/// The rendered sound of the open work, by which the player plays what the document will sound like. Where
/// nothing can be rendered, there is no file, and the player takes the next one down the list of
/// `playbackAudioURL`; an operation fails with ReadFailed alone, of a recording that is read in part. Without
/// a store nothing is rendered. Interface thread.
class RenderedAudioController {
  public:
    RenderedAudioController(OpenWork& work, SmartAudioCaches& caches);
    ~RenderedAudioController();

    using Rendered = std::shared_ptr<std::optional<RenderResult>>;
    /// Renders the blocks of the clip's analysis. `result` is left as it is where there is nothing to render.
    platform::Task renderMixdown(const UUID& groupID, Rendered result = nullptr);
    /// Plays one track of the clip's take alone, from 1; the same track again ends it. A track that the take
    /// does not have changes nothing.
    platform::Task toggleSoloMonitor(const UUID& groupID, int trackIndex);
    /// Brings the preview of Voice Isolation up to date with the settings and with what the player would play
    /// without it.
    platform::Task runVoiceIsolationForGroup(const UUID& groupID);

    /// What the player plays in the place of the clip's recording: the preview, the track that is played
    /// alone, or the blocks. Nothing: the recording itself.
    std::optional<FileURL> playbackAudioURL(const UUID& groupID) const;
    /// The same without a preview that was made from another sound or by other settings.
    std::optional<FileURL> currentAudioURL(const UUID& groupID) const;

  private:
    using Rendering =
        std::function<std::optional<RenderResult>(const RenderProgress&, const std::stop_token&)>;
    /// What a clip's preview is to be made from.
    std::optional<VoiceIsolationInput> previewInput(const SyncGroup& group) const;
    std::optional<FileURL> audioURL(const UUID& groupID, bool withPreview) const;
    RenderProgress report(std::string phase);
    platform::Task start(platform::Task task) { return work_.running.add(std::move(task)); }
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
