#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"

#include <QImage>
#include <QWidget>

#include <functional>
#include <memory>

namespace orvane::views {

/// A picture as an image that shares its pixels.
QImage imageOf(const platform::Picture& picture);
/// Paints it in the middle, as large as it fits, with black around it.
void paintFitted(QPainter& painter, const QRect& within, const QImage& image);

/// The picture that a player shows, fitted. It asks the player for the size that it has on the screen, unless
/// another one shows the same player larger.
class PictureCanvas : public QWidget {
  public:
    explicit PictureCanvas(QWidget* parent = nullptr);

    /// Null: black.
    void setEngine(std::shared_ptr<VideoEngine> engine);
    void setAsksForSize(bool asks);
    bool hasPicture() const { return !image_.isNull(); }

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

    std::shared_ptr<VideoEngine> engine_;
    QImage image_;
    bool asksForSize_ = true;
    platform::Subscription observation_;
};

} // namespace orvane::views
