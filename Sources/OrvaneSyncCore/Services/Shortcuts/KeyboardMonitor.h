#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace orvane {

/// A key that goes down or up, whatever system it comes from.
struct KeyEvent {
    bool isDown = true;
    bool isRepeat = false; ///< as the system says
    std::uint16_t keyCode = Shortcut::KeyCode::other;
    /// Tells the keys of the keyboard apart; the same when a key goes down and up, whatever else is held.
    std::uint32_t physicalKey = 0;
    std::optional<std::string> characters{};                  ///< what it types
    std::optional<std::string> charactersIgnoringModifiers{}; ///< all but shift
    ModifierSet modifiers{};
};

/// What the key press means; nothing for a key that no action can have.
std::optional<Shortcut> shortcutFor(const KeyEvent& event);

/// The event of a key by its name: one of `Shortcut::SpecialKey`, a letter, "," "." "[" or "]". Nothing for
/// another text, and for the keys that are held together with K.
std::optional<KeyEvent> keyEventNamed(std::string_view key, ModifierSet modifiers, bool isDown,
                                      bool isRepeat);

/// Turns the key events of the review into its actions. K acts when it is released; while it is down, L and J
/// step a frame and, held, run in slow motion. These three are known by their place on the keyboard, whatever
/// is bound to them.
///
/// One thread. A press of a key that is down already is a repeat, whether or not the system marks it.
class KeyboardMonitor {
  public:
    using FindAction =
        std::function<std::optional<ShortcutAction>(std::string_view key, ModifierSet modifiers)>;
    /// `findAction`: what is bound to the key.
    KeyboardMonitor(FindAction findAction, std::function<void(KeyAction)> onKey);

    /// Whether the event is used up; otherwise it goes to whoever has the focus. While a text is edited every
    /// event does, and none acts.
    bool handle(KeyEvent event, bool isTextEdited = false);
    /// The keyboard belongs to another window: what is released there is not seen here.
    void keyboardLost();

    bool kHeld() const { return kHeld_; }
    bool kUsedAsModifier() const { return kUsedAsModifier_; }
    /// Whether the action that is delivered comes of a key that is held.
    bool isRepeating() const { return isRepeating_; }

  private:
    bool keyDown(const KeyEvent& event);
    bool keyUp(const KeyEvent& event);
    void releaseK();
    /// Whether the key has an action of the review; it is delivered unless this is a repeat that it does not
    /// take.
    bool act(std::string_view key, ModifierSet modifiers, bool onlyIfItRepeats);

    FindAction findAction_;
    std::function<void(KeyAction)> onKey_;
    bool kHeld_ = false;
    bool kUsedAsModifier_ = false;
    bool isRepeating_ = false;
    std::set<std::uint32_t> down_; ///< physical keys
};

} // namespace orvane
