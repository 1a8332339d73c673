#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <vector>

class QGridLayout;
class QLabel;

namespace orvane::views {

class CameraStrip;
class KeyOverlay;
class OutlineView;
class ReviewActions;

/// All cameras of a take at once: their pictures, the sound of one of them, one transport, and where they lie
/// beside each other; at the left the list of clips, which leads to one camera or another take.
class MulticamView : public QWidget {
  public:
    /// `leave`: back to the list of results; `openClip`: to one camera's review.
    MulticamView(Desktop& desktop, ReviewActions& actions, std::function<void()> leave,
                 std::function<void(const UUID&)> openClip, QWidget* parent = nullptr);
    ~MulticamView() override;

    /// Opens the cameras, each on its clap.
    void open(const std::vector<UUID>& groupIDs);
    void leaveTake();
    OutlineView& outline() { return *outline_; }
    KeyOverlay& keys() { return *keys_; }
    /// The user wants to see all cameras of a take.
    std::function<void(const std::vector<UUID>& cameras)> openTake;
    /// Hears the camera of that place in the grid. False where there is none.
    bool hear(std::size_t camera);
    /// A key of the camera in fullscreen: Escape and F bring it back.
    bool handleFullscreen(const KeyEvent& event);

  private:
    class Cell;
    void follow();
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
    std::vector<Cell*> cells_;
    std::vector<UUID> shown_;
    std::vector<platform::Subscription> ofEngines_;
    platform::Subscription ofBag_;
};

} // namespace orvane::views
