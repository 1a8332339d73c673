#include "OrvaneSyncApp/Views/Settings/KeyPress.h"

#include <QKeyEvent>

#include <array>
#include <utility>

namespace orvane::views {

namespace {

/// XKB's symbol of a key, where the system gives none: on platforms without a keyboard of their own.
std::uint32_t keysymOf(const QKeyEvent& event) {
    if (event.nativeVirtualKey() != 0) return event.nativeVirtualKey();
    static constexpr std::array<std::pair<int, std::uint32_t>, 7> special{{{Qt::Key_Return, 0xff0d},
                                                                           {Qt::Key_Enter, 0xff8d},
                                                                           {Qt::Key_Escape, 0xff1b},
                                                                           {Qt::Key_Left, 0xff51},
                                                                           {Qt::Key_Up, 0xff52},
                                                                           {Qt::Key_Right, 0xff53},
                                                                           {Qt::Key_Down, 0xff54}}};
    for (const auto& [key, symbol] : special)
        if (event.key() == key) return symbol;
    constexpr int lowerCase = 0x20;
    if (event.key() >= Qt::Key_A && event.key() <= Qt::Key_Z)
        return static_cast<std::uint32_t>(event.key() + lowerCase);
    constexpr int lastASCII = 0x7e;
    return event.key() <= lastASCII ? static_cast<std::uint32_t>(event.key()) : 0;
}

} // namespace

std::optional<KeyEvent> keyEventOf(const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
        return std::nullopt;
    default:
        break;
    }
    return keyEvent({.scanCode = event.nativeScanCode(),
                     .keysym = keysymOf(event),
                     .text = event.text().toStdString(),
                     .isShiftHeld = event.modifiers().testFlag(Qt::ShiftModifier),
                     .isControlHeld = event.modifiers().testFlag(Qt::ControlModifier),
                     .isAltHeld = event.modifiers().testFlag(Qt::AltModifier),
                     .isSuperHeld = event.modifiers().testFlag(Qt::MetaModifier),
                     .isDown = event.type() != QEvent::KeyRelease,
                     .isRepeat = event.isAutoRepeat()});
}

} // namespace orvane::views
