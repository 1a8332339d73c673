#pragma once

#include "OrvaneSyncApp/ViewModels/Review/CameraAxis.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QTimer>
#include <QWidget>

namespace orvane::views {

/// The cameras of a take below each other on the time of their sound, with a ruler above and one playhead. A
/// click or a drag goes there with all of them.
class CameraStrip : public QWidget {
  public:
    CameraStrip(Desktop& desktop, std::shared_ptr<MulticamViewModel> multicam, QWidget* parent = nullptr);
    /// After the members or the camera that is heard have changed.
    void follow();
    /// Moves the playhead now, and with the screen while something plays.
    void followPlayhead();

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

  private:
    QRect axisRect() const;
    double playheadX() const;
    void go(double x);

    Desktop& desktop_;
    const std::shared_ptr<MulticamViewModel> multicam_;
    CameraAxis axis_;
    QPixmap rows_; ///< all but the playhead; null where it is to be painted again
    double shownX_ = -1;
    QTimer pace_;
};

} // namespace orvane::views
