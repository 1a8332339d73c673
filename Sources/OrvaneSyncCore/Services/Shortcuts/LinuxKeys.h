#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvane {

/// A key event as X11 and Wayland report it.
struct LinuxKeyEvent {
    /// The position of the key as X11 numbers it (the evdev number plus 8; Wayland clients get the same); 0
    /// if unknown, for example from an on-screen keyboard.
    std::uint32_t scanCode = 0;
    /// The XKB symbol after layout and modifiers; 0 if unknown.
    std::uint32_t keysym = 0;
    std::string text{}; ///< the text that the system reports, for symbols of other scripts
    bool isShiftHeld = false, isControlHeld = false, isAltHeld = false, isSuperHeld = false;
    bool isDown = true;
    bool isRepeat = false;
};

/// Converts an event. Control is the modifier of commands (`command`), as usual on Linux; Alt is `option` and
/// Super is `control`.
///
/// Return, space, escape and arrows are recognised by the layout, so that a remapped key has its new meaning.
/// Comma, period, J, K and L are recognised by their position, as shift and comma is reported as "<".
///
/// Absent for a modifier key: it is not a key press by itself.
std::optional<KeyEvent> keyEvent(const LinuxKeyEvent& event);

/// The X11 number for an evdev number.
constexpr std::uint32_t scanCodeOfEvdev(std::uint32_t code) { return code + 8; }

} // namespace orvane
