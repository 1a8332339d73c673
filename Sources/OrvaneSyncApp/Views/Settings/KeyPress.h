#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/LinuxKeys.h"

class QKeyEvent;

namespace orvane::views {

/// A key event of Qt as the shortcuts know it; nothing for a modifier key.
std::optional<KeyEvent> keyEventOf(const QKeyEvent& event);

} // namespace orvane::views
