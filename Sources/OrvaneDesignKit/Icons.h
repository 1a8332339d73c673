#pragma once

#include "OrvaneDesignKit/Theme.h"

#include <QIcon>
#include <QRectF>

class QPainter;

namespace orvane::design {

enum class Glyph {
    film,
    sound,
    folder,
    search,
    play,
    pause,
    check,
    warning,
    cross,
    lock,
    unlock,
    approve,
    refresh,
    rename,
    exportDocument,
    undo,
    redo,
    waveform,
    report,
    reset,
    plus,
    unfolded,
    folded,
    excluded,
    gear,
    session,
    toStart,
    frameBack,
    frameForward,
    loop,
    clap,
    slow,
    lens,
    fullscreen,
    cameras,
    back,
    roomTone,
    network
};

/// Draws a glyph into a square, as lines of a suitable width.
void draw(QPainter& painter, Glyph glyph, const QRectF& square, const QColor& colour);
/// The same as an icon for any scale, in the theme's colours for enabled and disabled.
QIcon icon(Glyph glyph);
/// The glyph beside a signal's text.
Glyph glyph(Signal signal);

} // namespace orvane::design
