#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "OrvaneSyncApp/Views/Review/PictureScaler.h"

#include <QImage>
#include <QWidget>

#include <functional>
#include <memory>

namespace orvane::views {

/// An image that shares the pixels of the picture.
QImage imageOf(const platform::Picture& picture);
/// Its size when fitted into that many pixels of the screen; its own size if that differs only by rounding.
QSize fittedSize(const QImage& image, QSize pixels);
/// Paints the image centred, as large as it fits, on black. `isSmooth`: interpolates if it has to be scaled.
void paintFitted(QPainter& painter, const QRect& within, const QImage& image, bool isSmooth = true);

/// The picture that a player shows, fitted. It requests its size on the screen from the player, unless
/// another canvas shows the same player larger. A picture of another size (the player never enlarges) is
/// scaled on another thread; the first one is shown with rough scaling until then.
class PictureCanvas : public QWidget {
  public:
    explicit PictureCanvas(QWidget* parent = nullptr);

    /// Null: black.
    void setEngine(std::shared_ptr<VideoEngine> engine);
    void setAsksForSize(bool asks);
    bool hasPicture() const { return !image_.isNull(); }
    /// The picture on the screen is final: no scaling runs.
    bool isSettled() const { return !scaler_ || !scaler_->isScaling(); }

    /// The user scrolled with the wheel or a trackpad, to step.
    std::function<void(double deltaY, bool isPrecise)> whenScrolled;
    std::function<void()> whenDoubleClicked;
    std::function<void()> whenClicked;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

  private:
    void follow(VideoEngineField field);
    void takePicture();
    void askForSize();
    QSize sizeOnScreen() const; ///< pixels
    /// Whether the picture has to be scaled; if so, starts the scaling.
    bool scale();

    std::shared_ptr<VideoEngine> engine_;
    QImage image_;
    QImage scaled_;                         ///< of this picture, or of the one before it
    std::unique_ptr<PictureScaler> scaler_; ///< made at the first scaling
    bool asksForSize_ = true;
    platform::Subscription observation_;
};

} // namespace orvane::views
