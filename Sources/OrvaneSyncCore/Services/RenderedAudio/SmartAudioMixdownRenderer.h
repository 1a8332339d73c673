#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/AudioFile.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

namespace orvane {

/// Renders what is played of a multi-track recording: the blocks of a routing, or one channel alone. The
/// output has two equal channels at the recording's rate; the work is streamed. Rendered files are kept in
/// the store and found again for the same recording and blocks. Absent if there is nothing to render, the
/// recording cannot be opened, the store cannot be written, or the recording changes meanwhile. Any thread
/// that may wait; throws Stopped, and ReadFailed if the recording can be read only in part.
class SmartAudioMixdownRenderer {
  public:
    explicit SmartAudioMixdownRenderer(std::shared_ptr<const RenderedAudioStore> store)
        : store_(std::move(store)) {}

    /// Length of the crossfade between two blocks, seconds.
    static constexpr double usualRampSeconds = 0.25;

    std::optional<RenderResult> render(const TakeSound& sourceAudio, const std::vector<BlockDecision>& blocks,
                                       double rampSeconds = usualRampSeconds,
                                       const RenderProgress& progress = nullptr,
                                       const std::stop_token& stop = {}) const;
    /// `channelIndex` from 0.
    std::optional<RenderResult> renderSolo(const TakeSound& sourceAudio, int channelIndex,
                                           const RenderProgress& progress = nullptr,
                                           const std::stop_token& stop = {}) const;

    // The same into the caller's file, which has the format `stereo(source)`. Renders from the first frame of
    // the source to the last, or to where reading fails; the caller asks the source whether it failed.
    static platform::AudioFileWriter::Format stereo(const platform::AudioFile& source);
    static void mixDown(platform::AudioFile& source, const std::vector<BlockDecision>& blocks,
                        double rampSeconds, platform::AudioFileWriter& out,
                        const RenderProgress& progress = nullptr, const std::stop_token& stop = {});
    static void solo(platform::AudioFile& source, int channelIndex, platform::AudioFileWriter& out,
                     const RenderProgress& progress = nullptr, const std::stop_token& stop = {});

  private:
    std::shared_ptr<const RenderedAudioStore> store_;
};

/// Whether the recording has a sample rate, channels and frames.
bool canBeRendered(const platform::AudioFile& source);

} // namespace orvane
