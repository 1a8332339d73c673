#pragma once

#include "OrvaneSyncApp/ViewModels/Review/MulticamViewModel.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncCore/Services/Playback/FrameBlips.h"
#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutCenter.h"
#include "Platform/Playback/Player.h"

#include <functional>
#include <memory>

namespace orvane::commands {

/// The players of the review and of the multicam screen, each made when it is first asked for. Keys go to the
/// screen in front. Interface thread.
class ReviewPlayers {
  public:
    /// Both may be null: then nothing is played, or frames are heard through the player.
    struct Playing {
        std::function<std::shared_ptr<platform::PlayerSystem>()> open;
        std::function<std::unique_ptr<FrameBlips>(const std::shared_ptr<platform::PlayerSystem>&)> makeBlips;
    };
    ReviewPlayers(std::shared_ptr<ImportController> controller, std::shared_ptr<ShortcutCenter> shortcuts,
                  Playing playing);

    const std::shared_ptr<ReviewViewModel>& review() const { return review_; }
    const std::shared_ptr<MulticamViewModel>& multicam() const { return multicam_; }
    KeyboardMonitor& keyboard() { return keyboard_; }
    const std::shared_ptr<ShortcutCenter>& shortcuts() const { return shortcuts_; }
    /// Null where nothing can be played.
    const std::shared_ptr<platform::PlayerSystem>& players();

    platform::Task loadGroup(const UUID& groupID);
    platform::Task loadCluster(std::vector<UUID> groupIDs);
    /// Ends when the screen in front shows what its newest seek asked for.
    platform::Task shown() const;

  private:
    std::shared_ptr<VideoEngine> makeEngine(std::shared_ptr<WaveformState> waveform);

    const std::shared_ptr<ImportController> controller_;
    const std::shared_ptr<ShortcutCenter> shortcuts_;
    const Playing playing_;
    std::shared_ptr<platform::PlayerSystem> players_;
    const std::shared_ptr<ReviewViewModel> review_;
    const std::shared_ptr<MulticamViewModel> multicam_;
    KeyboardMonitor keyboard_;
};

} // namespace orvane::commands
