#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"

#include <QString>

class QAction;
class QKeyEvent;
class QKeySequence;
class QWidget;

namespace orvane::views {

/// A key that goes down or up as the review understands it; nothing for a modifier key.
std::optional<KeyEvent> keyEventOf(const QKeyEvent& event);

/// The key as this desktop writes it, such as "Ctrl+Shift+L" and "K held, J"; empty when unbound.
QString shownKey(const Shortcut& shortcut);
/// Property of an entry of a menu whose key is that of an action, as the user has bound it.
inline constexpr const char* keyOfUser = "keyOfUser";
/// Empty for what no menu can hold.
QKeySequence menuKey(const Shortcut& shortcut);
/// The entry of the window's menus that has this key, whatever the user binds; null for none.
const QAction* entryWithKey(const QWidget& window, const QKeySequence& key);

} // namespace orvane::views
