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
    int channelIndex = 0;   ///< from 0; the last one where the file has no such
    std::int64_t start = 0; ///< frame of the file
    std::int64_t end = 0;   ///< behind the last one
};

/// The stretch as a sound file of its own, from 0. Null where the file cannot be read.
std::unique_ptr<platform::AudioFile> openSegment(const Segment& segment);

/// Plays one stretch at a time, each from its beginning to its end. Interface thread.
class SegmentPlayer {
  public:
    /// Asked when something is played first; null: nothing can be played.
    explicit SegmentPlayer(std::function<std::shared_ptr<platform::PlayerSystem>()> players);

    /// Plays the stretch, in the place of the one that sounds; stops the one that sounds already. False where
    /// nothing can be played.
    bool toggle(const Segment& segment);
    void stop();
    /// Absent while nothing sounds.
    const std::optional<UUID>& playingID() const { return playingID_; }
    /// Another one sounds, or none.
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
