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

/// Renders what is heard of a multi-track recording: the blocks of a routing, or one channel alone. Two
/// channels with the same samples, at the recording's rate, streamed. Rendered files are kept in the store
/// and found again for the same recording and the same blocks. Nothing where there is nothing to render,
/// where the recording cannot be opened, where the disk of the store fails, and where the recording changes
/// meanwhile. Any thread that may wait; throws Stopped, and ReadFailed where the recording is read in part
/// only.
class SmartAudioMixdownRenderer {
  public:
    explicit SmartAudioMixdownRenderer(std::shared_ptr<const RenderedAudioStore> store)
        : store_(std::move(store)) {}

    /// Seconds over which the tracks of two blocks cross.
    static constexpr double usualRampSeconds = 0.25;

    std::optional<RenderResult> render(const TakeSound& sourceAudio, const std::vector<BlockDecision>& blocks,
                                       double rampSeconds = usualRampSeconds,
                                       const RenderProgress& progress = nullptr,
                                       const std::stop_token& stop = {}) const;
    /// `channelIndex` from 0.
    std::optional<RenderResult> renderSolo(const TakeSound& sourceAudio, int channelIndex,
                                           const RenderProgress& progress = nullptr,
                                           const std::stop_token& stop = {}) const;

    // The same into a file of the caller's, of `stereo(source)`; from the source's first frame to its last,
    // or to where reading fails, which the caller asks the source for.
    static platform::AudioFileWriter::Format stereo(const platform::AudioFile& source);
    static void mixDown(platform::AudioFile& source, const std::vector<BlockDecision>& blocks,
                        double rampSeconds, platform::AudioFileWriter& out,
                        const RenderProgress& progress = nullptr, const std::stop_token& stop = {});
    static void solo(platform::AudioFile& source, int channelIndex, platform::AudioFileWriter& out,
                     const RenderProgress& progress = nullptr, const std::stop_token& stop = {});

  private:
    std::shared_ptr<const RenderedAudioStore> store_;
};

/// A recording has a sample rate, channels and frames.
bool canBeRendered(const platform::AudioFile& source);

} // namespace orvane
