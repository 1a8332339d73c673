#pragma once

#include "OrvaneSyncApp/Views/WorkScreen.h"

#include <functional>
#include <vector>

class QGridLayout;
class QLabel;

namespace orvane::views {

class CameraStrip;
class KeyOverlay;
class OutlineView;
class ReviewActions;

/// All cameras of a take at once: their pictures, the sound of one of them, one transport, and their
/// positions on a common time axis; at the left the list of clips, from which one camera or another take is
/// opened.
class MulticamView : public WorkScreen {
  public:
    /// `leave`: back to the list of results; `openClip`: opens one camera in the review.
    MulticamView(Desktop& desktop, ReviewActions& actions, std::function<void()> leave,
                 std::function<void(const UUID&)> openClip, QWidget* parent = nullptr);
    ~MulticamView() override;

    /// Opens the cameras, each at its clap.
    void open(const std::vector<UUID>& groupIDs);
    OutlineView& outline() { return *outline_; }
    /// The user wants to see all cameras of a take.
    std::function<void(const std::vector<UUID>& cameras)> openTake;
    /// Empty: no command for a clip acts on several cameras.
    std::vector<UUID> clips() const override { return {}; }
    std::vector<UUID> seen() const override { return multicam_->members(); }
    QLineEdit* search() const override;
    KeyOverlay* keyOverlay() const override { return keys_; }
    bool hear(std::size_t camera) override; ///< its index in the grid
    /// Escape and F bring the camera back from fullscreen.
    bool handleFullscreen(const KeyEvent& event) override;
    void leave() override;

  private:
    class Cell;
    void hear(const UUID& camera);
    void follow();
    void go(int step);
    void layOut();
    void showTake();
    void toggleFullscreen();

    Desktop& desktop_;
    const std::shared_ptr<MulticamViewModel> multicam_;
    ReviewActions& actions_;
    const std::function<void(const UUID&)> openClip_;
    OutlineView* outline_;
    QLabel* take_;
    QGridLayout* grid_;
    CameraStrip* strip_;
    KeyOverlay* keys_;
    std::unique_ptr<FullscreenManager> fullscreen_; ///< of the camera that was sent there
    bool returnsToFullscreen_ =
        false; ///< once the next take can be seen, unless the user does something else
    std::vector<Cell*> cells_;
    std::vector<UUID> shown_;
    std::vector<platform::Subscription> ofEngines_;
    platform::Subscription ofBag_;
};

} // namespace orvane::views
