#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutCenter.h"

#include <memory>
#include <optional>
#include <utility>

namespace orvane {

/// Binds an action to the next key that is pressed. Escape, and a key that no action can have, change
/// nothing. Interface thread.
class ShortcutRecorder {
  public:
    explicit ShortcutRecorder(std::shared_ptr<ShortcutCenter> center) : center_(std::move(center)) {}

    /// Replaces a recording that still waits.
    void record(ShortcutAction action) { action_ = action; }
    /// The action that waits for its key; absent if none does.
    const std::optional<ShortcutAction>& recordedAction() const { return action_; }
    /// Returns whether the event was handled: the key press that ends the recording.
    bool handle(const KeyEvent& event);

  private:
    std::shared_ptr<ShortcutCenter> center_;
    std::optional<ShortcutAction> action_;
};

} // namespace orvane
