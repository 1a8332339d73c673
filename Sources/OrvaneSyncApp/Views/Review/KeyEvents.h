#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"

#include <QString>

class QKeyEvent;
class QKeySequence;

namespace orvane::views {

/// A key that goes down or up as the review understands it; nothing for a modifier key.
std::optional<KeyEvent> keyEventOf(const QKeyEvent& event);

/// The key as this desktop writes it, such as "Ctrl+Shift+L" and "K held, J"; empty when unbound.
QString shownKey(const Shortcut& shortcut);
/// Property of an entry of a menu whose key is that of an action, as the user has bound it.
inline constexpr const char* keyOfUser = "keyOfUser";
/// Empty for what no menu can hold.
QKeySequence menuKey(const Shortcut& shortcut);

} // namespace orvane::views
