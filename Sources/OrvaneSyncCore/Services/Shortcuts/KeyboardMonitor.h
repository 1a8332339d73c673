#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace orvane {

/// A key press or release, independent of the system that reported it.
struct KeyEvent {
    bool isDown = true;
    bool isRepeat = false; ///< as reported by the system
    std::uint16_t keyCode = Shortcut::KeyCode::other;
    /// Identifies the key on the keyboard; the same at press and release, whatever other keys are held.
    std::uint32_t physicalKey = 0;
    std::optional<std::string> characters{};                  ///< the text that it types
    std::optional<std::string> charactersIgnoringModifiers{}; ///< the text without all modifiers but shift
    ModifierSet modifiers{};
};

/// The shortcut that the key press means; absent for a key that no action can have.
std::optional<Shortcut> shortcutFor(const KeyEvent& event);

/// The event of a key that is given by name: one of `Shortcut::SpecialKey`, a letter, "," "." "[" or "]".
/// Absent for any other text, and for the keys that are held together with K.
std::optional<KeyEvent> keyEventNamed(std::string_view key, ModifierSet modifiers, bool isDown,
                                      bool isRepeat);

/// Converts the key events of the review into its actions. The action of K is called when the key is
/// released; while it is down, L and J step a frame and, if held, play in slow motion. These three keys are
/// recognised by their position on the keyboard, whatever is bound to them.
///
/// One thread. A press of a key that is already down is a repeat, whether or not the system marks it so.
class KeyboardMonitor {
  public:
    using FindAction =
        std::function<std::optional<ShortcutAction>(std::string_view key, ModifierSet modifiers)>;
    /// `findAction` returns the action that is bound to a key.
    KeyboardMonitor(FindAction findAction, std::function<void(KeyAction)> onKey);

    /// Returns whether the event was handled; if not, it is passed to the control with the focus. While a
    /// text is edited, every event is passed on and none has an effect.
    bool handle(KeyEvent event, bool isTextEdited = false);
    /// Call when another window gets the keyboard: key releases there are not reported here.
    void keyboardLost();

    bool kHeld() const { return kHeld_; }
    bool kUsedAsModifier() const { return kUsedAsModifier_; }
    /// Whether the current action comes from a key that is held down.
    bool isRepeating() const { return isRepeating_; }

  private:
    bool keyDown(const KeyEvent& event);
    bool keyUp(const KeyEvent& event);
    void releaseK();
    /// Returns whether the key has an action of the review. The action is called, unless this is a repeat and
    /// the action does not repeat.
    bool act(std::string_view key, ModifierSet modifiers, bool onlyIfItRepeats);

    FindAction findAction_;
    std::function<void(KeyAction)> onKey_;
    bool kHeld_ = false;
    bool kUsedAsModifier_ = false;
    bool isRepeating_ = false;
    std::set<std::uint32_t> down_; ///< physical keys
};

} // namespace orvane
