#include "OrvaneDesignKit/Icons.h"

#include "OrvaneDesignKit/VectorIcon.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"

#include <QPainterPath>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace orvane::design {

namespace {

constexpr double side = 24; ///< units of the square in which paths are drawn
constexpr double lineWidth = 1.8;

/// Steps of a path: a letter, and numbers in units of the square. M and L x y: move and line, further points
/// are lines; C: a curve through two control points to the third; Z: back to the start; R left top width
/// height radius: a rectangle; O x y radius: a circle; A left top width height start sweep: a line to the arc
/// of that ellipse and along it, in degrees, counterclockwise from the right.
QPainterPath pathOf(std::string_view steps) {
    QPainterPath path;
    char step = 'Z';
    // Read the same in every language of the desktop.
    const auto number = [&steps] {
        steps.remove_prefix(steps.find_first_not_of(' '));
        double value = 0;
        const char* const end = std::from_chars(steps.data(), steps.data() + steps.size(), value).ptr;
        steps.remove_prefix(static_cast<std::size_t>(end - steps.data()));
        return value;
    };
    const auto point = [&] {
        const double x = number();
        return QPointF(x, number());
    };
    const auto rectangle = [&] {
        const QPointF corner = point();
        const QPointF size = point();
        return QRectF(corner, QSizeF(size.x(), size.y()));
    };
    while (!steps.empty()) {
        if (const char next = steps.front(); next == ' ') {
            steps.remove_prefix(1);
        } else if (next >= 'A' && next <= 'Z') {
            step = next;
            steps.remove_prefix(1);
            if (step == 'Z') path.closeSubpath();
            if (step == 'M') path.moveTo(point());
        } else if (step == 'C') {
            const QPointF first = point(), second = point();
            path.cubicTo(first, second, point());
        } else if (step == 'R') {
            const QRectF place = rectangle();
            const double radius = number();
            path.addRoundedRect(place, radius, radius);
        } else if (step == 'O') {
            const QPointF centre = point();
            const double radius = number();
            path.addEllipse(centre, radius, radius);
        } else if (step == 'A') {
            const QRectF place = rectangle();
            const double start = number();
            path.arcTo(place, start, number());
        } else {
            path.lineTo(point());
        }
    }
    return path;
}

struct Drawing {
    Glyph glyph; ///< that it is of
    std::string_view lines;
    std::string_view filled = {};
};
constexpr auto drawings = std::to_array<Drawing>({
    {Glyph::film, "R 3 5 18 14 2",
     "R 5 7.5 2 2 0 R 17 7.5 2 2 0 R 5 11 2 2 0 R 17 11 2 2 0 R 5 14.5 2 2 0 R 17 14.5 2 2 0"},
    {Glyph::sound, "M 4 10 8 10 12 6 12 18 8 14 4 14 4 10 M 15 9 C 17 11 17 13 15 15 M 17.5 6.5 C 21.5 10 "
                   "21.5 14 17.5 17.5"},
    {Glyph::folder, "M 3 19 3 5 9 5 11 8 21 8 21 19 3 19"},
    {Glyph::search, "O 10.5 10.5 6 M 15 15 20.5 20.5"},
    {Glyph::play, "", "M 7 4.5 19.5 12 7 19.5 7 4.5"},
    {Glyph::pause, "", "R 6.5 5 4 14 0 R 13.5 5 4 14 0"},
    {Glyph::check, "M 4.5 12.5 10 18 19.5 6.5"},
    {Glyph::warning, "M 12 3.5 22 20 2 20 12 3.5 M 12 9.5 12 14", "O 12 17 1.2"},
    {Glyph::cross, "M 6 6 18 18 M 18 6 6 18"},
    {Glyph::lock, "R 5 11 14 9 1.5 M 8 11 8 8 A 8 4 8 8 180 -180 L 16 11"},
    {Glyph::unlock, "R 5 11 14 9 1.5 M 8 11 8 8 A 8 4 8 8 180 -150"},
    {Glyph::approve, "O 12 12 9 M 7.5 12.5 11 16 16.5 8.5"},
    {Glyph::refresh, "M 18.128 6.858 A 4 4 16 16 40 280 M 19 3 18.5 7.5 14 7"},
    {Glyph::rename, "M 4 20 5 15.5 16 4.5 19.5 8 8.5 19 4 20"},
    {Glyph::exportDocument, "M 12 15 12 3.5 M 7.5 8 12 3.5 16.5 8 M 4 13 4 20 20 20 20 13"},
    {Glyph::undo, "M 8 5 4 9 8 13 M 4 9 14 9 C 21 9 21 19 14 19 L 8 19"},
    {Glyph::redo, "M 16 5 20 9 16 13 M 20 9 10 9 C 3 9 3 19 10 19 L 16 19"},
    {Glyph::waveform,
     "M 4.5 10 4.5 14 M 7.5 7 7.5 17 M 10.5 4 10.5 20 M 13.5 8 13.5 16 M 16.5 5 16.5 19 M 19.5 9 19.5 15"},
    {Glyph::report, "R 5 3 14 18 1.5 M 8.5 8 15.5 8 M 8.5 12 15.5 12 M 8.5 16 15.5 16"},
    {Glyph::reset, "M 4 7 20 7 M 6 7 7 20.5 17 20.5 18 7 M 9 7 9 3.5 15 3.5 15 7"},
    {Glyph::plus, "M 12 5 12 19 M 5 12 19 12"},
    {Glyph::unfolded, "M 6 9 12 15 18 9"},
    {Glyph::folded, "M 9 6 15 12 9 18"},
    {Glyph::excluded, "O 12 12 8.5 M 6 18 18 6"},
    {Glyph::gear, "O 12 12 3.2 O 12 12 6.5 M 18.5 12 21.5 12 M 16.596 16.596 18.718 18.718 M 12 18.5 12 21.5 "
                  "M 7.404 16.596 5.282 18.718 M 5.5 12 2.5 12 M 7.404 7.404 5.282 5.282 M 12 5.5 12 2.5 M "
                  "16.596 7.404 18.718 5.282"},
    {Glyph::session, "R 3 6 18 13 2 M 6 3.5 18 3.5"},
    {Glyph::toStart, "", "M 19 5 8 12 19 19 19 5 R 5 5 2.2 14 0"},
    {Glyph::frameBack, "", "M 14 5 5 12 14 19 14 5 R 17 5 2.2 14 0"},
    {Glyph::frameForward, "", "M 10 5 19 12 10 19 10 5 R 4.8 5 2.2 14 0"},
    {Glyph::loop, "M 4 12 4 8 19 8 M 16 4.5 19.5 8 16 11.5 M 20 12 20 16 5 16 M 8 12.5 4.5 16 8 19.5"},
    {Glyph::clap, "R 3.5 11 17 9 1 M 3.5 10.5 19 5 M 7.5 11 5.5 14 M 12 11 10 14 M 16.5 11 14.5 14"},
    {Glyph::slow, "M 4 5 11 12 4 19 4 5 M 14 8 14 16 M 17 8 17 16 M 20 8 20 16"},
    {Glyph::lens, "O 10.5 10.5 7 M 15.8 15.8 20.5 20.5 M 10.5 6.5 10.5 14.5"},
    {Glyph::fullscreen, "M 4 9 4 4 9 4 M 15 4 20 4 20 9 M 20 15 20 20 15 20 M 9 20 4 20 4 15"},
    {Glyph::cameras, "R 3.5 5 7.5 5.5 0 R 3.5 13.5 7.5 5.5 0 R 13 5 7.5 5.5 0 R 13 13.5 7.5 5.5 0"},
    {Glyph::back, "M 11 5 4 12 11 19 M 4 12 20 12"},
    {Glyph::roomTone,
     "M 3 11.5 12 4 21 11.5 M 5.5 9.5 5.5 20 18.5 20 18.5 9.5 M 9 14 9 16 M 12 12.5 12 17.5 M 15 14 15 16"},
    {Glyph::network, "M 7 19 C 2 19 2 12.5 6.5 12 6.5 5.5 15 4 16.5 10 22 10 22 19 17 19 Z"},
});
} // namespace

void draw(QPainter& painter, Glyph glyph, const QRectF& square, const QColor& colour) {
    const Drawing& drawing = rowOf(drawings, glyph);
    const QPainterPath lines = pathOf(drawing.lines), filled = pathOf(drawing.filled);
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
