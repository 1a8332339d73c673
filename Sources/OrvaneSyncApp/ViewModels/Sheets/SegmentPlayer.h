#pragma once

#include "OrvaneSyncCore/Models/UUID.h"
#include "Platform/Playback/Player.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace orvane {

/// A stretch of one channel of a file.
struct Segment {
    UUID id;
    std::string path;       ///< in the bytes of the file system
    int channelIndex = 0;   ///< from 0; the last channel if the file has fewer
    std::int64_t start = 0; ///< frame of the file
    std::int64_t end = 0;   ///< after the last frame
};

/// The stretch as a sound file that starts at 0. Null if the file cannot be read.
std::unique_ptr<platform::AudioFile> openSegment(const Segment& segment);

/// Plays one stretch at a time, each from its beginning to its end. Interface thread.
class SegmentPlayer {
  public:
    /// `players` is called when something is played for the first time; null: nothing can be played.
    explicit SegmentPlayer(std::function<std::shared_ptr<platform::PlayerSystem>()> players);

    /// Plays the stretch and stops the one that is playing; if it is this one, only stops it. False if
    /// nothing can be played.
    bool toggle(const Segment& segment);
    void stop();
    /// Absent while nothing is playing.
    const std::optional<UUID>& playingID() const { return playingID_; }
    /// Called when another stretch begins, or the playing one ends.
    std::function<void()> whenChanged;

  private:
    void setPlaying(std::optional<UUID> id);

    const std::function<std::shared_ptr<platform::PlayerSystem>()> openPlayers_;
    std::shared_ptr<platform::PlayerSystem> players_;
    std::unique_ptr<platform::Player> player_;
    platform::Subscription end_;
    std::optional<UUID> playingID_;
};

} // namespace orvane
