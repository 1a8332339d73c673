#pragma once

#include "OrvaneSyncApp/Views/WorkScreen.h"

#include <optional>
#include <vector>

class QGridLayout;
class QLabel;

namespace orvane::views {

class CameraStrip;
class KeyOverlay;
class OutlineView;

/// All cameras of a take at once: their pictures, the sound of one of them, one transport, and their
/// positions on a common time axis; at the left the list of clips, from which one camera or another take is
/// opened.
class MulticamView : public WorkScreen {
  public:
    MulticamView(Desktop& desktop, ScreenHost host);
    ~MulticamView() override;

    /// Opens the cameras, each at its clap.
    void open(const std::vector<UUID>& groupIDs) override;
    bool isOpen() const override { return multicam_->isOpen(); }
    /// The camera that is heard.
    std::vector<UUID> clips() const override;
    std::vector<UUID> seen() const override { return multicam_->members(); }
    QLineEdit* search() const override;
    OutlineView* outlineBeside() const override { return outline_; }
    KeyOverlay* keyOverlay() const override { return keys_; }
    QBoxLayout* messages() const override { return messages_; }
    bool hear(std::size_t camera) override; ///< its index in the grid
    /// Escape and F bring the camera back from fullscreen.
    bool handleFullscreen(const KeyEvent& event) override;
    void leave() override;

  private:
    class Cell;
    void hear(const UUID& camera);
    void follow();
    void followPlayhead();
    void go(int step);
    void layOut();
    void showTake();
    /// Marks the take in the list beside the cameras; of cameras of several takes, the one that is heard.
    QString mark();
    void toggleFullscreen();

    const std::shared_ptr<MulticamViewModel> multicam_;
    OutlineView* outline_;
    QLabel* take_;
    QGridLayout* grid_;
    QBoxLayout* messages_;
    CameraStrip* strip_;
    KeyOverlay* keys_;
    std::unique_ptr<FullscreenManager> fullscreen_; ///< of the camera that was sent there
    bool returnsToFullscreen_ =
        false; ///< once the next take can be seen, unless the user does something else
    std::vector<Cell*> cells_;
    std::vector<UUID> shown_;
    std::optional<UUID> heard_;
    std::vector<platform::Subscription> ofEngines_;
    platform::Subscription ofBag_;
};

} // namespace orvane::views
