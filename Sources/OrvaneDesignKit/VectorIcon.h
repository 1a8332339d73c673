#pragma once

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <functional>
#include <utility>

/// Helpers for the kit's icons, which are drawn by code at any scale.
namespace orvane::design {

/// Draws into the middle of a rectangle; `draw` uses a square of so many units.
template <class Draw>
void drawScaled(QPainter& painter, const QRectF& within, double side, const Draw& draw) {
    const double scale = std::min(within.width(), within.height()) / side;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(within.center() - QPointF(side, side) * scale / 2);
    painter.scale(scale, scale);
    draw();
    painter.restore();
}

class VectorIconEngine final : public QIconEngine {
  public:
    using Draw = std::function<void(QPainter& painter, const QRect& within, QIcon::Mode mode)>;
    explicit VectorIconEngine(Draw draw) : draw_(std::move(draw)) {}
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        draw_(*painter, rect, mode);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        if (pixmap.isNull()) return pixmap; // a control without a size yet
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new VectorIconEngine(*this); }

  private:
    Draw draw_;
};

} // namespace orvane::design
