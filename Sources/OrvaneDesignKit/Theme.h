#pragma once

#include <QColor>
#include <QFont>

class QApplication;

namespace orvane::design {

/// Every colour of the windows. Neutral, so that no colour changes the look of the picture beside it.
struct Colours {
    QColor window{0x1c, 0x1c, 0x1c};
    QColor panel{0x24, 0x24, 0x24};
    QColor raised{0x30, 0x30, 0x30}; ///< controls to press or to type into
    QColor hovered{0x3c, 0x3c, 0x3c};
    QColor line{0x42, 0x42, 0x42};
    QColor text{0xea, 0xea, 0xea};
    QColor facts{0xb4, 0xb4, 0xb4}; ///< less prominent than text
    QColor disabled{0x80, 0x80, 0x80};
    QColor picture{0x00, 0x00, 0x00};  ///< around a picture
    QColor selected{0x2c, 0x68, 0xc6}; ///< the only accent
    QColor onSelected{0xff, 0xff, 0xff};
    QColor focus{0x8a, 0xb8, 0xff};
    // Colours of signals, each shown beside a glyph or a text.
    QColor matched{0x62, 0xc4, 0x73};
    QColor doubtful{0xe6, 0xae, 0x45};
    QColor missing{0xff, 0x93, 0x8b};
};
const Colours& colours();

/// The state that a badge, a banner or a row signals.
enum class Signal { none, matched, doubtful, missing };
QColor colour(Signal signal);

/// Colours of sound channels, in their order; they repeat.
QColor channelColour(int index);

// The fonts: one size for text, a smaller one for facts, digits of equal width in both.
QFont textFont();
QFont factsFont();
QFont titleFont();
QFont timecodeFont();

/// Distances in points.
namespace space {
inline constexpr int tight = 4;
inline constexpr int small = 8;
inline constexpr int medium = 16;
inline constexpr int large = 32;
} // namespace space

/// Applies the theme to the application. Call it before the first window is made.
void applyTheme(QApplication& application);

/// Contrast ratio of two colours, 1 to 21, by WCAG 2.
double contrast(const QColor& a, const QColor& b);

} // namespace orvane::design
