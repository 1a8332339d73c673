#include "OrvaneSyncApp/Views/Review/KeyEvents.h"

#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Shortcuts/LinuxKeys.h"

#include <QAction>
#include <QKeyEvent>
#include <QKeySequence>
#include <QWidget>

#include <algorithm>
#include <array>

namespace orvane::views {

namespace {

struct Symbol {
    int key;
    std::uint32_t keysym;
};
/// Keys without a character, by the symbols of XKB.
constexpr std::array<Symbol, 20> symbols{
    {{Qt::Key_Return, 0xff0d},  {Qt::Key_Enter, 0xff8d},     {Qt::Key_Escape, 0xff1b},
     {Qt::Key_Space, 0x20},     {Qt::Key_Left, 0xff51},      {Qt::Key_Up, 0xff52},
     {Qt::Key_Right, 0xff53},   {Qt::Key_Down, 0xff54},      {Qt::Key_Tab, 0xff09},
     {Qt::Key_Backtab, 0xff09}, {Qt::Key_Backspace, 0xff08}, {Qt::Key_Delete, 0xffff},
     {Qt::Key_Shift, 0xffe1},   {Qt::Key_Control, 0xffe3},   {Qt::Key_CapsLock, 0xffe5},
     {Qt::Key_Meta, 0xffe7},    {Qt::Key_Alt, 0xffe9},       {Qt::Key_Super_L, 0xffeb},
     {Qt::Key_AltGr, 0xfe03},   {Qt::Key_NumLock, 0xff7f}}};

/// For a window system that names none, as without a screen.
std::uint32_t keysymOf(const QKeyEvent& event) {
    const auto* known = std::ranges::find(symbols, event.key(), &Symbol::key);
    if (known != symbols.end()) return known->keysym;
    constexpr char32_t firstPrintable = 0x21, unicode = 0x01000000, lastOfLatin = 0xff;
    const auto typed = event.text().toUcs4();
    if (!typed.isEmpty() && typed.front() >= firstPrintable)
        return typed.front() <= lastOfLatin ? typed.front() : unicode + typed.front();
    // With Control held no text is typed.
    if (event.key() >= Qt::Key_A && event.key() <= Qt::Key_Z)
        return static_cast<std::uint32_t>(event.key() - Qt::Key_A + 'a');
    if (event.key() >= static_cast<int>(firstPrintable) && event.key() <= static_cast<int>(lastOfLatin))
        return static_cast<std::uint32_t>(event.key());
    constexpr std::uint32_t unnamed = 0x20000000; // types nothing, and differs from all other symbols
    return unnamed | static_cast<std::uint32_t>(event.key() & 0xffffff);
}

} // namespace

std::optional<KeyEvent> keyEventOf(const QKeyEvent& event) {
    const Qt::KeyboardModifiers held = event.modifiers();
    LinuxKeyEvent made{.scanCode = event.nativeScanCode(),
                       .keysym = event.nativeVirtualKey() != 0 ? event.nativeVirtualKey() : keysymOf(event),
                       .text = utf8(event.text()),
                       .isShiftHeld = held.testFlag(Qt::ShiftModifier),
                       .isControlHeld = held.testFlag(Qt::ControlModifier),
                       .isAltHeld = held.testFlag(Qt::AltModifier),
                       .isSuperHeld = held.testFlag(Qt::MetaModifier),
                       .isDown = event.type() != QEvent::KeyRelease,
                       .isRepeat = event.isAutoRepeat()};
    return keyEvent(made);
}

QString shownKey(const Shortcut& shortcut) {
    return shortcut.isUnbound() ? QString() : translatedKey(keyText(shortcut));
}

QKeySequence menuKey(const Shortcut& shortcut) {
    const auto menu = shortcut.menuEquivalent();
    return menu ? QKeySequence(
                      text(keyText(shortcut)).replace(QLatin1String("Super+"), QLatin1String("Meta+")),
                      QKeySequence::PortableText)
                : QKeySequence();
}

const QAction* entryWithKey(const QWidget& window, const QKeySequence& key) {
    if (key.isEmpty()) return nullptr;
    const auto entries = window.findChildren<const QAction*>();
    const auto found = std::ranges::find_if(entries, [&](const QAction* entry) {
        return !entry->property(keyOfUser).toBool() && entry->shortcuts().contains(key);
    });
    return found == entries.end() ? nullptr : *found;
}

} // namespace orvane::views
