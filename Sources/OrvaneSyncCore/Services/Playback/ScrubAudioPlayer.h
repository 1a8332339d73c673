#pragma once

#include "OrvaneSyncCore/Services/Playback/FrameBlips.h"
#include "Platform/MainThread.h"
#include "Platform/Playback/Mixer.h"

#include <memory>

namespace orvane {

/// Plays short pieces of a recording while the player is paused. The recording is opened, read and converted
/// to the output's rate on a separate queue; if blips come faster than that, only the newest is played. The
/// player joins the mixer at the first blip, so that no audio device is opened before the first step.
class ScrubAudioPlayer final : public FrameBlips {
  public:
    explicit ScrubAudioPlayer(std::shared_ptr<platform::Mixer> mixer);
    ~ScrubAudioPlayer() override;
    ScrubAudioPlayer(const ScrubAudioPlayer&) = delete;
    ScrubAudioPlayer& operator=(const ScrubAudioPlayer&) = delete;

    void load(std::optional<TakeSound> sound) override;
    /// The recording counts as open until opening it has failed.
    bool hasOpenFile() const override;
    void playBlip(double atSourceSeconds, double seconds, float volume) override;
    void silence() override;
    void shutdown() override;

    /// Waits for the blips that were requested. Not on the interface thread.
    void waitUntilIdle();

  private:
    struct Reading;
    class Source;
    void leaveMixer();

    const std::shared_ptr<platform::Mixer> mixer_;
    const std::shared_ptr<Source> source_;
    bool isInMixer_ = false;
    std::optional<TakeSound> loaded_;
    std::shared_ptr<Reading> reading_; ///< of the loaded recording, shared with the queue
    std::stop_source stop_;
    std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
