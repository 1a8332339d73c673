#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutCenter.h"

#include <memory>
#include <optional>
#include <utility>

namespace orvane {

/// Binds an action to the next key that is pressed. Escape changes nothing, and so does a key that no action
/// can have. Interface thread.
class ShortcutRecorder {
  public:
    explicit ShortcutRecorder(std::shared_ptr<ShortcutCenter> center) : center_(std::move(center)) {}

    /// Takes the place of a recording that waits still.
    void record(ShortcutAction action) { action_ = action; }
    /// The action that waits for its key; absent when none does.
    const std::optional<ShortcutAction>& recordedAction() const { return action_; }
    /// Whether the event is used up: the key press that ends the recording.
    bool handle(const KeyEvent& event);

  private:
    std::shared_ptr<ShortcutCenter> center_;
    std::optional<ShortcutAction> action_;
};

} // namespace orvane
