#include "OrvaneSyncCore/Services/Shortcuts/ShortcutRecorder.h"

#include <utility>

namespace orvane {

bool ShortcutRecorder::handle(const KeyEvent& event) {
    if (!action_ || !event.isDown) return false;
    const ShortcutAction action = *std::exchange(action_, std::nullopt);
    if (event.keyCode == Shortcut::KeyCode::escape) return true;
    if (auto shortcut = shortcutFor(event)) center_->setBinding(std::move(*shortcut), action);
    return true;
}

} // namespace orvane
