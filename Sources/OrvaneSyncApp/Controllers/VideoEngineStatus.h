#pragma once

#include "OrvaneSyncApp/Controllers/ShuttleSpeed.h"
#include "OrvaneSyncApp/Controllers/VideoEngineState.h"
#include "Platform/Listeners.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace orvane {

/// Which part of an engine has changed.
enum class VideoEngineField : std::uint8_t { playhead, transport, loop, sound, picture };

/// What an engine shows of its clip; only the engine changes it, except the timecode of the start. Interface
/// thread.
class VideoEngineStatus {
  public:
    VideoEngineStatus(const VideoEngineStatus&) = delete;
    VideoEngineStatus& operator=(const VideoEngineStatus&) = delete;

    // Each of these is observable.

    const PlayheadState& playhead() const { return playhead_; }
    const TransportState& transport() const { return transport_; }
    const LoopState& loop() const { return loop_; }
    /// Calls back after every change.
    platform::Subscription onChange(std::function<void(VideoEngineField)> callback) {
        return changed_.add(std::move(callback));
    }

    ShuttleSpeed speed() const { return speed_; } ///< of the keys J and L
    bool isSlowMotionScrubbing() const { return isSlowMotionScrubbing_; }
    /// The pointer skims over the clip; the player's time reports do not move the playhead.
    bool isSkimming() const { return savedPlayheadBeforeSkim_.has_value(); }
    /// Since the clip was loaded, the user has moved or started the transport.
    bool userHasMovedPlayhead() const { return userHasMovedPlayhead_; }

    void setStartTimecode(double seconds, std::optional<TimecodeFrameRate> rate);
    /// The timecode that the loaded file states; if it has no rate, it is counted at the rate of the
    /// pictures. Does nothing without a timecode.
    void setStartTimecode(const std::optional<std::string>& stated, std::optional<TimecodeFrameRate> rate);

  protected:
    VideoEngineStatus() = default;
    ~VideoEngineStatus() = default;

    void setPlayhead(platform::MediaTime time);
    void setPlaying(bool isPlaying);
    void setSpeed(ShuttleSpeed speed);
    void setLabel(std::string label); ///< of the speed
    void notify(VideoEngineField field) { changed_.notify(field); }
    /// Resets to the state without a clip, except the playhead.
    void clearLoopAndTransport();

    PlayheadState playhead_;
    TransportState transport_;
    LoopState loop_;
    bool isSlowMotionScrubbing_ = false;
    std::optional<platform::MediaTime> savedPlayheadBeforeSkim_; ///< while the pointer skims
    bool userHasMovedPlayhead_ = false;

  private:
    ShuttleSpeed speed_;
    platform::Listeners<VideoEngineField> changed_;
};

} // namespace orvane
