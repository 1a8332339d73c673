#include "OrvaneDesignKit/AppIcon.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneDesignKit/VectorIcon.h"

namespace orvane::design {

namespace {

// The square has 64 units. Packaging/icons has the same shape for the desktop's menu.
constexpr double iconSide = 64;
constexpr double corner = 13;
constexpr double frameTop = 14, frameHeight = 17, frameWidth = 14, frameGap = 3, firstFrame = 8;
constexpr double waveMiddle = 45, barWidth = 3, barStep = 6.2, firstBar = 9.5;
constexpr double barHeights[] = {3, 6, 10, 5, 8, 3.5, 7, 2.5};
constexpr double lineAt = 32;

} // namespace

void drawAppIcon(QPainter& painter, const QRectF& square) {
    const Colours& all = colours();
    drawScaled(painter, square, iconSide, [&] {
        painter.setPen(Qt::NoPen);
        painter.setBrush(all.window);
        painter.drawRoundedRect(QRectF(2, 2, iconSide - 4, iconSide - 4), corner, corner);
        for (int i = 0; i < 3; ++i) {
            painter.setBrush(i == 1 ? all.selected : all.hovered);
            painter.drawRoundedRect(
                QRectF(firstFrame + i * (frameWidth + frameGap), frameTop, frameWidth, frameHeight), 2, 2);
        }
        painter.setBrush(all.matched);
        int bar = 0;
        for (const double height : barHeights)
            painter.drawRoundedRect(
                QRectF(firstBar + barStep * bar++ - barWidth / 2, waveMiddle - height, barWidth, 2 * height),
                1.5, 1.5);
        painter.setPen(QPen(all.onSelected, 1.6));
        painter.drawLine(QPointF(lineAt, 9), QPointF(lineAt, 55));
    });
}

QIcon appIcon() {
    return QIcon(new VectorIconEngine(
        [](QPainter& painter, const QRect& within, QIcon::Mode) { drawAppIcon(painter, within); }));
}

} // namespace orvane::design
