#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"

#include <QString>

class QAction;
class QKeyEvent;
class QKeySequence;
class QWidget;

namespace orvane::views {

/// A key press or release in the form of the review; absent for a modifier key.
std::optional<KeyEvent> keyEventOf(const QKeyEvent& event);

/// The key as this desktop writes it, such as "Ctrl+Shift+L" and "K held, J"; empty if unbound.
QString shownKey(const Shortcut& shortcut);
/// Property of a menu entry whose key is the user's key for an action.
inline constexpr const char* keyOfUser = "keyOfUser";
/// Empty if a menu cannot hold it.
QKeySequence menuKey(const Shortcut& shortcut);
/// The entry of the window's menus with this key, which the user cannot change; null for none.
const QAction* entryWithKey(const QWidget& window, const QKeySequence& key);

} // namespace orvane::views
