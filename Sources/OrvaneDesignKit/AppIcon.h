#pragma once

#include <QIcon>

class QPainter;
class QRectF;

namespace orvane::design {

/// The icon of the program: a waveform under a strip of picture. It is drawn for each size.
QIcon appIcon();
void drawAppIcon(QPainter& painter, const QRectF& square);

} // namespace orvane::design
