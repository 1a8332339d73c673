#pragma once

#include "OrvaneSyncApp/ViewModels/Review/CameraAxis.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QTimer>
#include <QWidget>

namespace orvane::views {

/// The cameras of a take in rows, on the time of their sound, with a ruler above and one playhead. A click or
/// a drag moves all of them there.
class CameraStrip : public QWidget {
  public:
    CameraStrip(Desktop& desktop, std::shared_ptr<MulticamViewModel> multicam, QWidget* parent = nullptr);
    /// To be called after the members or the camera that is heard have changed.
    void follow();
    /// Moves the playhead at once, and at the rate of the screen while something plays.
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
    QPixmap rows_; ///< all but the playhead; null if it has to be painted again
    double shownX_ = -1;
    QTimer pace_;
};

} // namespace orvane::views
