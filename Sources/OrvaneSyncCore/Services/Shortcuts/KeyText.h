#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace orvane {

/// The key in the form of this system, such as "Ctrl+Shift+L"; "—" if there is none.
inline std::string keyText(const Shortcut& shortcut) {
    using Key = Shortcut::SpecialKey;
    if (shortcut.isUnbound()) return "—";
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 11> names{{
        {Key::space, "Space"},
        {Key::escape, "Esc"},
        {Key::enter, "Return"},
        {Key::arrowUp, "Up"},
        {Key::arrowDown, "Down"},
        {Key::arrowLeft, "Left"},
        {Key::arrowRight, "Right"},
        {Key::plus, "+"},
        {Key::minus, "-"},
        {Key::kHeldJ, "K held, J"},
        {Key::kHeldL, "K held, L"},
    }};
    std::string text;
    for (const auto& [modifier, name] :
         {std::pair(ModifierSet::command, "Ctrl+"), std::pair(ModifierSet::control, "Super+"),
          std::pair(ModifierSet::option, "Alt+"), std::pair(ModifierSet::shift, "Shift+")})
        if (shortcut.modifiers.contains(modifier)) text += name;
    const auto named =
        std::ranges::find(names, shortcut.key, &std::pair<std::string_view, std::string_view>::first);
    if (named != names.end()) return text + std::string(named->second);
    std::string key = shortcut.key;
    if (key.size() == 1 && key[0] >= 'a' && key[0] <= 'z') key[0] = static_cast<char>(key[0] - 'a' + 'A');
    return text + key;
}

/// Replaces the actions that a text names in angle brackets, such as "⟨lockCurrent⟩", by their keys. `keyOf`:
/// the key of an action, as text.
template <class KeyOf>
std::string withKeysOfActions(std::string_view text, const KeyOf& keyOf) {
    constexpr std::string_view open = "⟨", close = "⟩";
    std::string named;
    for (;;) {
        const std::size_t begin = text.find(open), end = text.find(close, begin);
        if (end == std::string_view::npos) return named += text;
        const std::size_t name = begin + open.size();
        named += text.substr(0, begin);
        if (const auto action = fromRawValue<ShortcutAction>(text.substr(name, end - name)))
            named += keyOf(*action);
        else
            named += text.substr(begin, end + close.size() - begin);
        text.remove_prefix(end + close.size());
    }
}

/// The same for a reader without keys of their own, such as that of `serve`.
inline std::string withStandardKeys(std::string_view text) {
    return withKeysOfActions(text,
                             [](ShortcutAction action) { return keyText(defaultBindings().at(action)); });
}

/// Converts a text with modifiers as signs (⌘⌥) or "Cmd+" to the names of this system's keyboards.
inline std::string withKeysOfThisSystem(std::string_view text) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 5> modifiers{
        {{"⌘", "Ctrl+"}, {"⌃", "Super+"}, {"⌥", "Alt+"}, {"⇧", "Shift+"}, {"Cmd+", "Ctrl+"}}};
    std::string named;
    while (!text.empty()) {
        const auto found =
            std::ranges::find_if(modifiers, [&](const auto& one) { return text.starts_with(one.first); });
        if (found == modifiers.end()) {
            named += text.front();
            text.remove_prefix(1);
            continue;
        }
        named += found->second;
        text.remove_prefix(found->first.size());
        // A blank or a hyphen may separate the modifiers from the key.
        if (text.starts_with(' ') || text.starts_with('-')) text.remove_prefix(1);
    }
    return named;
}

} // namespace orvane
