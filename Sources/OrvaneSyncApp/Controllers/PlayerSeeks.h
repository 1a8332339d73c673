#pragma once

#include "Platform/Completion.h"
#include "Platform/Playback/Player.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// The seeks of a player; only the newest counts. Interface thread; held by a shared pointer, because the
/// player's reports hold a weak one.
class PlayerSeeks : public std::enable_shared_from_this<PlayerSeeks> {
  public:
    explicit PlayerSeeks(std::shared_ptr<platform::MainThread> mainThread)
        : mainThread_(std::move(mainThread)) {}

    /// The target of the newest seek; absent once its picture is shown.
    const std::optional<platform::MediaTime>& target() const { return target_; }
    /// `shown` is called when the picture is shown, unless another seek was begun meanwhile.
    void begin(platform::Player& player, platform::MediaTime time, std::function<void()> shown);
    /// Drops the newest seek; a task that waits for it ends.
    void forget();
    /// Ends when the picture of the newest seek is shown.
    platform::Task shown();

  private:
    const std::shared_ptr<platform::MainThread> mainThread_;
    std::optional<platform::MediaTime> target_;
    std::uint64_t newest_ = 0; ///< its number
    std::vector<std::shared_ptr<platform::Completion>> waiting_;
};

} // namespace orvane
