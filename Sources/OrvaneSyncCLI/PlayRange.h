#pragma once

#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/MainThread.h"
#include "Platform/Playback/Player.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::cli {

/// What to play, and how.
struct PlayRange {
    std::string video;
    std::optional<TakeSound> sound; ///< absent: the video's own
    double offset = 0;              ///< seconds of the clip at which the sound begins
    double from = 0;                ///< seconds of the clip
    std::optional<double> to;       ///< absent: to the end
    double rate = 1;                ///< not 0; below 0 backwards, from `to` to `from`
};

/// A player at the beginning of the requested range.
class RangePlayer {
  public:
    /// Throws CommandError for what cannot be played.
    RangePlayer(const std::shared_ptr<platform::RunLoop>& loop, platform::PlayerSystem& players,
                PlayRange range);

    platform::Player& player() { return *player_; }
    double clipSeconds() const { return to_ - range_.from; }
    double outputSeconds() const;
    /// Throws ReadFailed if sound or pictures of the part played so far could not be read.
    void throwIfReadFailed() const;
    /// The played share of the range, 0 to 1.
    double done(platform::MediaTime at) const;
    void start();
    void showProgress(ProgressLine& line, double fraction, std::string_view phase) const;

  private:
    struct Opened;

    const PlayRange range_;
    const std::shared_ptr<Opened> opened_; ///< filled by the player, on its own thread
    const std::uint64_t errorsBefore_;     ///< read errors of any thread
    const std::unique_ptr<platform::Player> player_;
    double to_ = 0;
};

} // namespace orvane::cli
