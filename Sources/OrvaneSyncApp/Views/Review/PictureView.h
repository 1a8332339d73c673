#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QAction;
class QLabel;
class QPushButton;
class QSlider;
class QStackedLayout;
class QToolButton;

namespace orvane::design {
class Badge;
class EmptyState;
} // namespace orvane::design

namespace orvane::views {

class LevelMeters;
class PictureCanvas;
class ReviewActions;
class SyncLensView;

/// A button for the action that shows only its glyph. It takes the focus by Tab only, so that the keys still
/// control the review after a click.
QToolButton* transportButton(QAction* action);

/// The picture of the clip in view, or the sync lens instead, with timecodes, meters and transport.
class PictureView : public QWidget {
  public:
    PictureView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, ReviewActions& actions,
                QWidget* parent = nullptr);
    ~PictureView() override;

    PictureCanvas& canvas() { return *canvas_; }
    SyncLensView& lens() { return *lens_; }
    /// What each key does at this moment, for the fullscreen picture.
    std::function<std::vector<KeyGroup>()> keys;

  protected:
    bool event(QEvent* event) override;

  private:
    QWidget* makeBar(ReviewActions& actions);
    QWidget* makeTimecodes();
    void follow(VideoEngineField field);
    void showPage();
    /// Loads the clip again, whose file was missing or could not be read.
    void tryAgain();
    /// Opens the clip again as soon as its file is back.
    void lookForFile();
    void showTransport();
    void showTimecodes();
    void toggleLoop();
    /// Checks whether there is a device that plays the sound.
    void checkDevice();
    const SyncGroup* clip() const;

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    ReviewActions& actions_;
    PictureCanvas* canvas_;
    SyncLensView* lens_;
    design::EmptyState* note_;
    QPushButton* tryAgain_; ///< below the note
    QLabel* whyNoLens_;     ///< over the picture, if the lens has nothing to show
    design::Badge* device_; ///< beside the timecode of the sound, if nothing can be heard
    QStackedLayout* pages_;
    LevelMeters* meters_;
    QLabel* pictureTimecode_;
    QLabel* shuttle_;
    QLabel* soundTimecode_;
    QAction* loop_;
    QSlider* volume_;
    std::optional<UUID> shown_;
    std::shared_ptr<platform::Timer> deviceTimer_, fileTimer_;
    bool wasPlaying_ = false;
    platform::Subscription ofEngine_, ofReview_, ofWork_, ofFullscreen_;
};

} // namespace orvane::views
