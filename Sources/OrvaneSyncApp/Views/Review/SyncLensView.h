#pragma once

#include "OrvaneSyncApp/ViewModels/Review/SyncLens.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

namespace orvane::views {

/// The frames before, at and after the clap side by side, and below them the sound of exactly that time, so
/// that each frame is above the sound of its duration. A line marks the clap.
class SyncLensView : public QWidget {
  public:
    SyncLensView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);
    bool isLoading() const { return lens_->isLoading(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void look();
    QRect pictureRect(int index) const;
    QRect soundRect() const;
    void paintSound(QPainter& painter) const;

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    const std::shared_ptr<SyncLens> lens_;
    QString note_; ///< why nothing is shown
    platform::Subscription ofLens_, ofReview_, ofWork_, ofEngine_;
};

} // namespace orvane::views
