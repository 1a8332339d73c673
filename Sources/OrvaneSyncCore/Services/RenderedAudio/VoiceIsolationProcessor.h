#pragma once

#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationChain.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <utility>

namespace orvane {

/// Renders the preview of Voice Isolation: the mean of a recording's channels is processed by
/// VoiceIsolationChain to one channel, streamed. Kept in the store and found again for the same recording and
/// settings. Absent if the recording cannot be read or the store not written. Any thread that may wait;
/// throws Stopped.
class VoiceIsolationProcessor {
  public:
    using Settings = VoiceIsolationSettings;
    using Result = RenderResult;

    explicit VoiceIsolationProcessor(std::shared_ptr<const RenderedAudioStore> store)
        : store_(std::move(store)) {}

    /// If the settings have no effect, the result is the input file itself; absent if the input has several
    /// files.
    std::optional<Result> process(const TakeSound& input, const Settings& settings,
                                  const RenderProgress& progress = nullptr,
                                  const std::stop_token& stop = {}) const;
    /// The same into the caller's file with one channel, for as many frames as can be read. Settings without
    /// effect are rendered, too.
    static void render(platform::AudioFile& input, const Settings& settings, platform::AudioFileWriter& out,
                       const RenderProgress& progress = nullptr, const std::stop_token& stop = {});

  private:
    std::shared_ptr<const RenderedAudioStore> store_;
};

} // namespace orvane
