#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "OrvaneSyncApp/Views/Review/PictureScaler.h"

#include <QImage>
#include <QWidget>

#include <functional>
#include <memory>

namespace orvane::views {

/// A picture as an image that shares its pixels.
QImage imageOf(const platform::Picture& picture);
/// Its size where it fits into so many pixels of the screen: its own if that is it but for rounding.
QSize fittedSize(const QImage& image, QSize pixels);
/// Paints it in the middle, as large as it fits, with black around it. `isSmooth`: where it has to be scaled.
void paintFitted(QPainter& painter, const QRect& within, const QImage& image, bool isSmooth = true);

/// The picture that a player shows, fitted. It asks the player for the size that it has on the screen, unless
/// another one shows the same player larger. What comes in another size, as pictures are never enlarged by
/// the player, is scaled on another thread; the first one is seen roughly until then.
class PictureCanvas : public QWidget {
  public:
    explicit PictureCanvas(QWidget* parent = nullptr);

    /// Null: black.
    void setEngine(std::shared_ptr<VideoEngine> engine);
    void setAsksForSize(bool asks);
    bool hasPicture() const { return !image_.isNull(); }
    /// What is seen is the player's picture as it will stay.
    bool isSettled() const { return !scaler_ || !scaler_->isScaling(); }

    /// Steps that the wheel or a trackpad asks for.
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
    /// Whether the picture has to be scaled; begins with it.
    bool scale();

    std::shared_ptr<VideoEngine> engine_;
    QImage image_;
    QImage scaled_;                         ///< of it, or of the one before it
    std::unique_ptr<PictureScaler> scaler_; ///< made when something has to be scaled first
    bool asksForSize_ = true;
    platform::Subscription observation_;
};

} // namespace orvane::views
