#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvane {

namespace {

using Code = Shortcut::KeyCode;
using Special = Shortcut::SpecialKey;

struct NamedKey {
    std::string_view key;
    std::uint16_t code;
    std::string_view typed; ///< empty: the key types nothing, or its own name
};
constexpr std::array<NamedKey, 14> namedKeys{{{Special::space, Code::space, " "},
                                              {Special::escape, Code::escape, ""},
                                              {Special::enter, Code::returnMain, "\r"},
                                              {Special::arrowUp, Code::arrowUp, ""},
                                              {Special::arrowDown, Code::arrowDown, ""},
                                              {Special::arrowLeft, Code::arrowLeft, ""},
                                              {Special::arrowRight, Code::arrowRight, ""},
                                              {Special::plus, Code::other, "+"},
                                              {Special::minus, Code::other, "-"},
                                              {",", Code::comma, ","},
                                              {".", Code::period, "."},
                                              {"j", Code::j, "j"},
                                              {"k", Code::k, "k"},
                                              {"l", Code::l, "l"}}};

} // namespace

std::optional<Shortcut> shortcutFor(const KeyEvent& event) {
    return Shortcut::decode(event.keyCode, event.characters, event.charactersIgnoringModifiers,
                            event.modifiers);
}

std::optional<KeyEvent> keyEventNamed(std::string_view key, ModifierSet modifiers, bool isDown,
                                      bool isRepeat) {
    Shortcut shortcut;
    try {
        shortcut = Shortcut::fromText(key);
    } catch (const ShortcutTextError&) {
        return std::nullopt;
    }
    if (shortcut.isUnbound() || shortcut.key == Special::kHeldJ || shortcut.key == Special::kHeldL)
        return std::nullopt;
    KeyEvent event{.isDown = isDown, .isRepeat = isRepeat, .modifiers = modifiers | shortcut.modifiers};
    const auto* const named = std::ranges::find(namedKeys, shortcut.key, &NamedKey::key);
    const bool isNamed = named != namedKeys.end();
    if (isNamed) event.keyCode = named->code;
    event.characters = isNamed ? std::string(named->typed) : shortcut.key;
    event.charactersIgnoringModifiers = event.characters;
    event.physicalKey = event.keyCode;
    if (event.keyCode == Code::other) {
        // The other keys are distinguished by the first letters of their names, as numbers above all key
        // codes.
        event.physicalKey = 1;
        for (const char c : shortcut.key.substr(0, sizeof event.physicalKey))
            event.physicalKey = (event.physicalKey << 8U) | static_cast<unsigned char>(c);
    }
    return event;
}

KeyboardMonitor::KeyboardMonitor(FindAction findAction, std::function<void(KeyAction)> onKey)
    : findAction_(std::move(findAction)), onKey_(std::move(onKey)) {}

bool KeyboardMonitor::handle(KeyEvent event, bool isTextEdited) {
    // Keys that are down are recorded even if the event is for something else.
    if (event.isDown) {
        const bool wasUp = down_.insert(event.physicalKey).second;
        event.isRepeat = event.isRepeat || !wasUp;
    } else if (!event.isRepeat) {
        down_.erase(event.physicalKey);
    }
    isRepeating_ = event.isDown && event.isRepeat;
    if (isTextEdited) {
        if (!event.isDown && !event.isRepeat && event.keyCode == Code::k) releaseK();
        return false;
    }
    return event.isDown ? keyDown(event) : keyUp(event);
}

void KeyboardMonitor::keyboardLost() {
    releaseK();
    down_.clear();
}

bool KeyboardMonitor::keyDown(const KeyEvent& event) {
    if (event.keyCode == Code::k) {
        if (!event.isRepeat) kHeld_ = true;
        return true;
    }
    if (kHeld_ && (event.keyCode == Code::l || event.keyCode == Code::j)) {
        kUsedAsModifier_ = true;
        const bool isForward = event.keyCode == Code::l;
        if (event.isRepeat)
            act(isForward ? Special::kHeldL : Special::kHeldJ, ModifierSet::none, false);
        else
            onKey_(isForward ? KeyAction::stepForward : KeyAction::stepBackward);
        return true;
    }
    const auto shortcut = shortcutFor(event);
    return shortcut && act(shortcut->key, shortcut->modifiers, event.isRepeat);
}

bool KeyboardMonitor::keyUp(const KeyEvent& event) {
    if (event.keyCode != Code::k) return false;
    if (event.isRepeat) return true; // some systems send release and press for each repeat
    const bool isTapped = kHeld_ && !kUsedAsModifier_;
    releaseK();
    if (isTapped) act("k", ModifierSet::none, false);
    return true;
}

void KeyboardMonitor::releaseK() {
    kHeld_ = false;
    kUsedAsModifier_ = false;
}

bool KeyboardMonitor::act(std::string_view key, ModifierSet modifiers, bool onlyIfItRepeats) {
    const auto bound = findAction_(key, modifiers);
    const auto action = bound ? keyAction(*bound) : std::nullopt;
    if (!action) return false;
    if (!onlyIfItRepeats || repeatsWhenHeld(*bound)) onKey_(*action);
    return true;
}

} // namespace orvane
