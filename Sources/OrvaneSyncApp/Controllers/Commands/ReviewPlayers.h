#pragma once

#include "OrvaneSyncApp/Controllers/ShownClipAudio.h"
#include "OrvaneSyncApp/ViewModels/Review/MulticamViewModel.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutCenter.h"
#include "Platform/Playback/Player.h"

#include <functional>
#include <memory>

namespace orvane::commands {

/// The players of the review and of the multicam screen, each made at the first request. Keys are passed to
/// the screen in front. A rendered sound of the clip in view is played instead of its recording. Interface
/// thread.
class ReviewPlayers {
  public:
    using OpenPlayers = std::function<std::shared_ptr<platform::PlayerSystem>()>;
    /// `rendersPreviews`: renders previews of the clip in view without a request; otherwise only existing
    /// ones are played.
    ReviewPlayers(std::shared_ptr<ImportController> controller, std::shared_ptr<ShortcutCenter> shortcuts,
                  OpenPlayers openPlayers, bool rendersPreviews);

    const std::shared_ptr<ReviewViewModel>& review() const { return review_; }
    const std::shared_ptr<MulticamViewModel>& multicam() const { return multicam_; }
    KeyboardMonitor& keyboard() { return keyboard_; }
    const std::shared_ptr<ShortcutCenter>& shortcuts() const { return shortcuts_; }
    /// Null if nothing can be played.
    const std::shared_ptr<platform::PlayerSystem>& players();

    /// Does the action of the key on the screen in front. Throws OutOfRange.
    void handleKeyAction(KeyAction action);
    /// Returns the number of frames by which the screen in front was moved.
    int scrollFrames(double deltaY, bool hasPreciseDeltas);
    platform::Task loadGroup(const UUID& groupID);
    platform::Task loadCluster(std::vector<UUID> groupIDs);
    /// Ends when the screen in front shows the picture of its newest seek.
    platform::Task shown() const;

  private:
    std::shared_ptr<VideoEngine> makeEngine(std::shared_ptr<WaveformState> waveform);

    const std::shared_ptr<ImportController> controller_;
    const std::shared_ptr<ShortcutCenter> shortcuts_;
    const OpenPlayers openPlayers_;
    const bool rendersPreviews_;
    std::shared_ptr<platform::PlayerSystem> players_;
    const std::shared_ptr<ReviewViewModel> review_;
    const std::shared_ptr<MulticamViewModel> multicam_;
    ShownClipAudio heard_;
    platform::Subscription whenClosed_; ///< the clip was closed in the review
    KeyboardMonitor keyboard_;
};

} // namespace orvane::commands
