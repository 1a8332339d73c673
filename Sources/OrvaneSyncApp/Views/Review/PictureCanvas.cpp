#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"

#include "OrvaneDesignKit/Theme.h"

#include <QPainter>
#include <QWheelEvent>

#include <cmath>
#include <utility>

namespace orvane::views {

QImage imageOf(const platform::Picture& picture) {
    // Over black, a colour multiplied by its alpha is the visible colour, so alpha can be ignored.
    auto* held = new std::shared_ptr(picture.pixels);
    return {picture.pixels.get(),
            picture.size.width,
            picture.size.height,
            QImage::Format_RGB32,
            [](void* pixels) { delete static_cast<std::shared_ptr<const std::uint8_t[]>*>(pixels); },
            held};
}

QSize fittedSize(const QImage& image, QSize pixels) {
    const QSize size = image.size().scaled(pixels, Qt::KeepAspectRatio);
    constexpr int almost = 1; // a side may differ by this through rounding
    const bool isOwn = std::abs(size.width() - image.width()) <= almost &&
                       std::abs(size.height() - image.height()) <= almost;
    return isOwn ? image.size() : size;
}

void paintFitted(QPainter& painter, const QRect& within, const QImage& image, bool isSmooth) {
    const QColor& black = design::colours().picture;
    if (image.isNull()) return painter.fillRect(within, black);
    const double ratio = painter.device()->devicePixelRatioF();
    // On whole pixels of the screen, so that a picture of the right size is copied without resampling.
    const QSize pixels(static_cast<int>(std::lround(within.width() * ratio)),
                       static_cast<int>(std::lround(within.height() * ratio)));
    const QSize size = fittedSize(image, pixels);
    const QPoint corner((pixels.width() - size.width()) / 2, (pixels.height() - size.height()) / 2);
    const QRectF target(within.left() + corner.x() / ratio, within.top() + corner.y() / ratio,
                        size.width() / ratio, size.height() / ratio);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, isSmooth && size != image.size());
    for (const QRectF& bar :
         {QRectF(within.left(), within.top(), within.width(), target.top() - within.top()),
          QRectF(within.left(), target.bottom(), within.width(), within.bottom() + 1 - target.bottom()),
          QRectF(within.left(), target.top(), target.left() - within.left(), target.height()),
          QRectF(target.right(), target.top(), within.right() + 1 - target.right(), target.height())})
        painter.fillRect(bar, black);
    painter.drawImage(target, image);
}

PictureCanvas::PictureCanvas(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(tr("Picture"));
    setMinimumSize(160, 90);
}

void PictureCanvas::setEngine(std::shared_ptr<VideoEngine> engine) {
    observation_ = nullptr;
    engine_ = std::move(engine);
    if (engine_) observation_ = engine_->onChange([this](VideoEngineField field) { follow(field); });
    askForSize();
    takePicture();
}

void PictureCanvas::setAsksForSize(bool asks) {
    asksForSize_ = asks;
    askForSize();
}

void PictureCanvas::follow(VideoEngineField field) {
    if (field == VideoEngineField::transport) {
        askForSize();
        if (engine_->player() == nullptr) takePicture();
    }
    if (field == VideoEngineField::picture) takePicture();
}

void PictureCanvas::takePicture() {
    const platform::Player* player = engine_ ? engine_->player() : nullptr;
    const auto picture = player == nullptr ? std::nullopt : player->picture();
    image_ = picture ? imageOf(*picture) : QImage();
    // The earlier picture stays visible until this one is scaled.
    if (!scale() || scaled_.isNull()) update();
}

QSize PictureCanvas::sizeOnScreen() const { return (QSizeF(size()) * devicePixelRatioF()).toSize(); }

bool PictureCanvas::scale() {
    const QSize wanted = image_.isNull() ? QSize() : fittedSize(image_, sizeOnScreen());
    if (wanted.isEmpty() || wanted == image_.size() || !isVisible()) {
        scaled_ = {};
        return false;
    }
    if (!scaler_)
        scaler_ = std::make_unique<PictureScaler>([this](QImage scaled) {
            // The scaled picture may be of an earlier size or of an earlier picture.
            const QSize fitted = image_.isNull() ? QSize() : fittedSize(image_, sizeOnScreen());
            if (scaled.size() != fitted || fitted == image_.size()) return;
            scaled_ = std::move(scaled);
            update();
        });
    scaler_->scale(image_, wanted);
    return true;
}

void PictureCanvas::askForSize() {
    platform::Player* player = engine_ ? engine_->player() : nullptr;
    if (player == nullptr || !asksForSize_ || !isVisible()) return;
    const double ratio = devicePixelRatioF();
    player->setPictureSize(
        {static_cast<int>(std::lround(width() * ratio)), static_cast<int>(std::lround(height() * ratio))});
}

void PictureCanvas::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const bool isScaled = !scaled_.isNull() && scaled_.size() == fittedSize(image_, sizeOnScreen());
    paintFitted(painter, rect(), isScaled ? scaled_ : image_, false);
}

void PictureCanvas::resizeEvent(QResizeEvent*) {
    askForSize();
    scale();
}
void PictureCanvas::showEvent(QShowEvent*) {
    askForSize();
    scale();
}

void PictureCanvas::wheelEvent(QWheelEvent* event) {
    if (!whenScrolled) return event->ignore();
    constexpr double stepOfWheel = 120; // eighths of a degree
    const bool isPrecise = !event->pixelDelta().isNull();
    whenScrolled(isPrecise ? event->pixelDelta().y() : event->angleDelta().y() / stepOfWheel, isPrecise);
    event->accept();
}

void PictureCanvas::mousePressEvent(QMouseEvent* event) {
    if (!whenClicked) return event->ignore();
    whenClicked();
}

void PictureCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!whenDoubleClicked) return event->ignore();
    whenDoubleClicked();
}

} // namespace orvane::views
