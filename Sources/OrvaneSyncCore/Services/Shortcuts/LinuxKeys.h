#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvane {

/// A key event as X11 and Wayland report it.
struct LinuxKeyEvent {
    /// Place of the key, as X11 numbers it (evdev's number plus 8, which Wayland clients get too); 0 where it
    /// is not known, such as from a keyboard on the screen.
    std::uint32_t scanCode = 0;
    /// XKB symbol, layout and modifiers applied; 0 where it is not known.
    std::uint32_t keysym = 0;
    std::string text{}; ///< what the system says that it types, for symbols of other scripts
    bool isShiftHeld = false, isControlHeld = false, isAltHeld = false, isSuperHeld = false;
    bool isDown = true;
    bool isRepeat = false;
};

/// Control is the modifier of commands (`command`), as everywhere on Linux; Alt is `option`, Super `control`.
///
/// Return, space, escape and arrows are those that the layout makes them, so that a remapped key counts as
/// what it is mapped to. Comma, period, J, K and L are known by their place: shift and comma arrives as "<".
///
/// Nothing for a modifier key: it is no key press, but changes those of other keys.
std::optional<KeyEvent> keyEvent(const LinuxKeyEvent& event);

/// X11's number of a key that evdev numbers.
constexpr std::uint32_t scanCodeOfEvdev(std::uint32_t code) { return code + 8; }

} // namespace orvane
