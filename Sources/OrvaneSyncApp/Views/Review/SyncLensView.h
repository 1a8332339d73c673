#pragma once

#include "OrvaneSyncApp/ViewModels/Review/SyncLens.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <cstdint>
#include <optional>

namespace orvane::views {

/// The frames before, at and after the clap side by side, and below them the sound of exactly that time, so
/// that each frame is above the sound of its duration. A line marks the clap. When the playhead is moved
/// while nothing plays, the frame under it is in the middle, so that the frame of the clap can be searched
/// for.
class SyncLensView : public QWidget {
  public:
    SyncLensView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);
    bool isLoading() const { return lens_->isLoading(); }
    /// Whether the clip in view is loaded and has a clap in its picture.
    bool canShow() const;
    /// Leaves that much free at the top, for messages over the picture.
    void setFreeTop(int points);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void look();
    bool isPlayheadMoved();
    QRect pictureRect(int index) const;
    QRect soundRect() const;
    void paintSound(QPainter& painter) const;
    void placePictures();
    void paintClap(QPainter& painter, const SyncLensPlan& plan) const;

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    const std::shared_ptr<SyncLens> lens_;
    QWidget* const pictures_; ///< covers the three pictures; shows nothing itself
    int freeTop_ = 0;
    /// The frame on which the playhead was when the lens began to show a clap.
    struct Rest {
        UUID clip;
        double clapSeconds;
        std::int64_t frame;
    };
    std::optional<Rest> rest_;
    platform::Subscription ofLens_, ofReview_, ofWork_, ofEngine_;
};

} // namespace orvane::views
