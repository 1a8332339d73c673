#include "OrvaneDesignKit/Icons.h"

#include "OrvaneDesignKit/VectorIcon.h"

#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace orvane::design {

namespace {

constexpr double side = 24; ///< units of the square in which paths are drawn
constexpr double lineWidth = 1.8;

void moveAlong(QPainterPath& path, std::initializer_list<QPointF> points) {
    auto next = points.begin();
    path.moveTo(*next++);
    for (; next != points.end(); ++next) path.lineTo(*next);
}

void padlock(QPainterPath& path, bool isOpen) {
    path.addRoundedRect(5, 11, 14, 9, 1.5, 1.5);
    path.moveTo(8, 11);
    path.lineTo(8, 8);
    path.arcTo(QRectF(8, 4, 8, 8), 180, isOpen ? -150 : -180);
    if (!isOpen) path.lineTo(16, 11);
}

void arrowTurning(QPainterPath& path, bool isBack) {
    const auto x = [isBack](double value) { return isBack ? value : side - value; };
    moveAlong(path, {{x(8), 5}, {x(4), 9}, {x(8), 13}});
    path.moveTo(x(4), 9);
    path.lineTo(x(14), 9);
    path.cubicTo(x(21), 9, x(21), 19, x(14), 19);
    path.lineTo(x(8), 19);
}

/// `lines` are the strokes of the glyph, `filled` its filled areas.
void drawGlyph(Glyph glyph, QPainterPath& lines, QPainterPath& filled) {
    switch (glyph) {
    case Glyph::film:
        lines.addRoundedRect(3, 5, 18, 14, 2, 2);
        for (const double y : {8.5, 12.0, 15.5}) {
            filled.addRect(5, y - 1, 2, 2);
            filled.addRect(17, y - 1, 2, 2);
        }
        return;
    case Glyph::sound:
        moveAlong(lines, {{4, 10}, {8, 10}, {12, 6}, {12, 18}, {8, 14}, {4, 14}, {4, 10}});
        lines.moveTo(15, 9);
        lines.cubicTo(17, 11, 17, 13, 15, 15);
        lines.moveTo(17.5, 6.5);
        lines.cubicTo(21.5, 10, 21.5, 14, 17.5, 17.5);
        return;
    case Glyph::folder:
        moveAlong(lines, {{3, 19}, {3, 5}, {9, 5}, {11, 8}, {21, 8}, {21, 19}, {3, 19}});
        return;
    case Glyph::search:
        lines.addEllipse(QPointF(10.5, 10.5), 6, 6);
        moveAlong(lines, {{15, 15}, {20.5, 20.5}});
        return;
    case Glyph::play:
        moveAlong(filled, {{7, 4.5}, {19.5, 12}, {7, 19.5}, {7, 4.5}});
        return;
    case Glyph::pause:
        filled.addRect(6.5, 5, 4, 14);
        filled.addRect(13.5, 5, 4, 14);
        return;
    case Glyph::check:
        moveAlong(lines, {{4.5, 12.5}, {10, 18}, {19.5, 6.5}});
        return;
    case Glyph::warning:
        moveAlong(lines, {{12, 3.5}, {22, 20}, {2, 20}, {12, 3.5}});
        moveAlong(lines, {{12, 9.5}, {12, 14}});
        filled.addEllipse(QPointF(12, 17), 1.2, 1.2);
        return;
    case Glyph::cross:
        moveAlong(lines, {{6, 6}, {18, 18}});
        moveAlong(lines, {{18, 6}, {6, 18}});
        return;
    case Glyph::lock:
        padlock(lines, false);
        return;
    case Glyph::unlock:
        padlock(lines, true);
        return;
    case Glyph::approve:
        lines.addEllipse(QPointF(12, 12), 9, 9);
        moveAlong(lines, {{7.5, 12.5}, {11, 16}, {16.5, 8.5}});
        return;
    case Glyph::refresh:
        lines.arcMoveTo(QRectF(4, 4, 16, 16), 40);
        lines.arcTo(QRectF(4, 4, 16, 16), 40, 280);
        moveAlong(lines, {{19, 3}, {18.5, 7.5}, {14, 7}});
        return;
    case Glyph::rename:
        moveAlong(lines, {{4, 20}, {5, 15.5}, {16, 4.5}, {19.5, 8}, {8.5, 19}, {4, 20}});
        return;
    case Glyph::exportDocument:
        moveAlong(lines, {{12, 15}, {12, 3.5}});
        moveAlong(lines, {{7.5, 8}, {12, 3.5}, {16.5, 8}});
        moveAlong(lines, {{4, 13}, {4, 20}, {20, 20}, {20, 13}});
        return;
    case Glyph::undo:
        arrowTurning(lines, true);
        return;
    case Glyph::redo:
        arrowTurning(lines, false);
        return;
    case Glyph::waveform: {
        constexpr double heights[] = {2, 5, 8, 4, 7, 3};
        for (int i = 0; i < 6; ++i)
            moveAlong(lines, {{4.5 + 3 * i, 12 - heights[i]}, {4.5 + 3 * i, 12 + heights[i]}});
        return;
    }
    case Glyph::report:
        lines.addRoundedRect(5, 3, 14, 18, 1.5, 1.5);
        for (const double y : {8.0, 12.0, 16.0}) moveAlong(lines, {{8.5, y}, {15.5, y}});
        return;
    case Glyph::reset:
        moveAlong(lines, {{4, 7}, {20, 7}});
        moveAlong(lines, {{6, 7}, {7, 20.5}, {17, 20.5}, {18, 7}});
        moveAlong(lines, {{9, 7}, {9, 3.5}, {15, 3.5}, {15, 7}});
        return;
    case Glyph::plus:
        moveAlong(lines, {{12, 5}, {12, 19}});
        moveAlong(lines, {{5, 12}, {19, 12}});
        return;
    case Glyph::unfolded:
        moveAlong(lines, {{6, 9}, {12, 15}, {18, 9}});
        return;
    case Glyph::folded:
        moveAlong(lines, {{9, 6}, {15, 12}, {9, 18}});
        return;
    case Glyph::excluded:
        lines.addEllipse(QPointF(12, 12), 8.5, 8.5);
        moveAlong(lines, {{6, 18}, {18, 6}});
        return;
    case Glyph::gear:
        lines.addEllipse(QPointF(12, 12), 3.2, 3.2);
        lines.addEllipse(QPointF(12, 12), 6.5, 6.5);
        for (int tooth = 0; tooth < 8; ++tooth) {
            const double angle = tooth * M_PI / 4;
            const QPointF out(std::cos(angle), std::sin(angle));
            moveAlong(lines, {QPointF(12, 12) + out * 6.5, QPointF(12, 12) + out * 9.5});
        }
        return;
    case Glyph::toStart:
        moveAlong(filled, {{19, 5}, {8, 12}, {19, 19}, {19, 5}});
        filled.addRect(5, 5, 2.2, 14);
        return;
    case Glyph::frameBack:
        moveAlong(filled, {{14, 5}, {5, 12}, {14, 19}, {14, 5}});
        filled.addRect(17, 5, 2.2, 14);
        return;
    case Glyph::frameForward:
        moveAlong(filled, {{10, 5}, {19, 12}, {10, 19}, {10, 5}});
        filled.addRect(4.8, 5, 2.2, 14);
        return;
    case Glyph::loop:
        moveAlong(lines, {{4, 12}, {4, 8}, {19, 8}});
        moveAlong(lines, {{16, 4.5}, {19.5, 8}, {16, 11.5}});
        moveAlong(lines, {{20, 12}, {20, 16}, {5, 16}});
        moveAlong(lines, {{8, 12.5}, {4.5, 16}, {8, 19.5}});
        return;
    case Glyph::clap:
        lines.addRoundedRect(3.5, 11, 17, 9, 1, 1);
        moveAlong(lines, {{3.5, 10.5}, {19, 5}});
        for (const double x : {7.5, 12.0, 16.5}) moveAlong(lines, {{x, 11}, {x - 2, 14}});
        return;
    case Glyph::slow:
        moveAlong(lines, {{4, 5}, {11, 12}, {4, 19}, {4, 5}});
        for (const double x : {14.0, 17.0, 20.0}) moveAlong(lines, {{x, 8}, {x, 16}});
        return;
    case Glyph::lens:
        lines.addEllipse(QPointF(10.5, 10.5), 7, 7);
        moveAlong(lines, {{15.8, 15.8}, {20.5, 20.5}});
        moveAlong(lines, {{10.5, 6.5}, {10.5, 14.5}});
        return;
    case Glyph::fullscreen:
        moveAlong(lines, {{4, 9}, {4, 4}, {9, 4}});
        moveAlong(lines, {{15, 4}, {20, 4}, {20, 9}});
        moveAlong(lines, {{20, 15}, {20, 20}, {15, 20}});
        moveAlong(lines, {{9, 20}, {4, 20}, {4, 15}});
        return;
    case Glyph::cameras:
        for (const double x : {3.5, 13.0})
            for (const double y : {5.0, 13.5}) lines.addRect(x, y, 7.5, 5.5);
        return;
    case Glyph::back:
        moveAlong(lines, {{11, 5}, {4, 12}, {11, 19}});
        moveAlong(lines, {{4, 12}, {20, 12}});
        return;
    case Glyph::roomTone:
        moveAlong(lines, {{3, 11.5}, {12, 4}, {21, 11.5}});
        moveAlong(lines, {{5.5, 9.5}, {5.5, 20}, {18.5, 20}, {18.5, 9.5}});
        moveAlong(lines, {{9, 14}, {9, 16}});
        moveAlong(lines, {{12, 12.5}, {12, 17.5}});
        moveAlong(lines, {{15, 14}, {15, 16}});
        return;
    case Glyph::network:
        lines.moveTo(7, 19);
        lines.cubicTo(2, 19, 2, 12.5, 6.5, 12);
        lines.cubicTo(6.5, 5.5, 15, 4, 16.5, 10);
        lines.cubicTo(22, 10, 22, 19, 17, 19);
        lines.closeSubpath();
        return;
    case Glyph::session:
        lines.addRoundedRect(3, 6, 18, 13, 2, 2);
        moveAlong(lines, {{6, 3.5}, {18, 3.5}});
        return;
    }
}

} // namespace

void draw(QPainter& painter, Glyph glyph, const QRectF& square, const QColor& colour) {
    QPainterPath lines;
    QPainterPath filled;
    drawGlyph(glyph, lines, filled);
    drawScaled(painter, square, side, [&] {
        painter.setPen(QPen(colour, lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(lines);
        painter.fillPath(filled, colour);
    });
}

QIcon icon(Glyph glyph) {
    return QIcon(new VectorIconEngine([glyph](QPainter& painter, const QRect& within, QIcon::Mode mode) {
        const Colours& all = colours();
        const QColor colour = mode == QIcon::Disabled   ? all.disabled
                              : mode == QIcon::Selected ? all.onSelected
                                                        : all.text;
        // In a rectangle wider than high, keeps a distance to the text on its right.
        const int square = std::min(within.width(), within.height());
        draw(painter, glyph, QRect(within.left(), within.top(), square, square), colour);
    }));
}

Glyph glyph(Signal signal) {
    switch (signal) {
    case Signal::matched:
        return Glyph::check;
    case Signal::missing:
        return Glyph::cross;
    case Signal::doubtful:
    case Signal::none:
        break;
    }
    return Glyph::warning;
}

} // namespace orvane::design
