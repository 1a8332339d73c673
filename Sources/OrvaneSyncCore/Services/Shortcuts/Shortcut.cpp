#include "OrvaneSyncCore/Services/Shortcuts/Shortcut.h"

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>

namespace orvane {

/// The bits as a number.
template <>
struct JSONForm<ModifierSet> {
    static void put(JSON& json, std::string_view key, ModifierSet modifiers) {
        json.set(key, modifiers.rawValue);
    }
    static ModifierSet taken(const JSON& json, std::string_view key) {
        return {required<std::int64_t>(json, key)};
    }
};

template <>
struct JSONFields<Shortcut> {
    static constexpr std::tuple list{JSONField{"key", &Shortcut::key},
                                     JSONField{"modifiers", &Shortcut::modifiers}};
};

namespace text = platform::text;

namespace {

using Special = Shortcut::SpecialKey;
using Code = Shortcut::KeyCode;

struct ModifierName {
    ModifierSet modifier;
    std::string_view name;
    std::string_view glyph;
};
/// In the order in which the signs are shown.
constexpr std::array<ModifierName, 4> modifierNames{{{ModifierSet::control, "control", "⌃"},
                                                     {ModifierSet::option, "option", "⌥"},
                                                     {ModifierSet::shift, "shift", "⇧"},
                                                     {ModifierSet::command, "command", "⌘"}}};

struct SpecialKeyName {
    std::string_view key;
    std::string_view shown;
    std::string_view inMenu; ///< empty: menus cannot have this key
};
constexpr std::array<SpecialKeyName, 11> specialKeys{{{Special::space, "Space", " "},
                                                      {Special::escape, "⎋", Special::escape},
                                                      {Special::enter, "⏎", Special::enter},
                                                      {Special::arrowUp, "↑", Special::arrowUp},
                                                      {Special::arrowDown, "↓", Special::arrowDown},
                                                      {Special::arrowLeft, "←", Special::arrowLeft},
                                                      {Special::arrowRight, "→", Special::arrowRight},
                                                      {Special::plus, "+", "+"},
                                                      {Special::minus, "−", "-"},
                                                      {Special::kHeldJ, "K + J", ""},
                                                      {Special::kHeldL, "K + L", ""}}};

const SpecialKeyName* specialKey(std::string_view key) {
    const auto* found = std::ranges::find(specialKeys, key, &SpecialKeyName::key);
    return found == specialKeys.end() ? nullptr : found;
}

std::string_view keyOfCode(std::uint16_t code) {
    switch (code) {
    case Code::returnMain:
    case Code::returnNumpad:
        return Special::enter;
    case Code::space:
        return Special::space;
    case Code::escape:
        return Special::escape;
    case Code::arrowLeft:
        return Special::arrowLeft;
    case Code::arrowRight:
        return Special::arrowRight;
    case Code::arrowDown:
        return Special::arrowDown;
    case Code::arrowUp:
        return Special::arrowUp;
    default:
        return {};
    }
}

/// The key for a typed text. Both characters of a bracket key, and of the plus key on a US keyboard, belong
/// to one key.
std::string_view keyOfCharacters(std::string_view characters) {
    if (characters == "+" || characters == "=") return Special::plus;
    if (characters == "-") return Special::minus;
    if (characters == "[" || characters == "{") return "[";
    if (characters == "]" || characters == "}") return "]";
    constexpr std::array<std::string_view, 3> unchangedKeys{Special::zero, ",", "."};
    const auto* same = std::ranges::find(unchangedKeys, characters);
    return same == unchangedKeys.end() ? std::string_view() : *same;
}

/// A letter of any script as a key; absent for any other text.
std::optional<std::string> letterKey(std::string_view typed) {
    const std::string lower = text::lowercased(typed);
    const auto characters = text::characters(lower);
    if (characters.empty() || !text::isLetter(characters.front())) return std::nullopt;
    return std::string(characters.front());
}

std::optional<std::string> keyNamed(std::string_view name) {
    if (const std::string_view key = keyOfCharacters(name); !key.empty()) return std::string(key);
    const std::string lower = text::lowercased(name);
    for (const SpecialKeyName& special : specialKeys)
        if (text::lowercased(special.key) == lower) return std::string(special.key);
    return text::characters(name).size() == 1 ? letterKey(name) : std::nullopt;
}

} // namespace

std::optional<ModifierSet> modifierNamed(std::string_view name) {
    const auto* found = std::ranges::find(modifierNames, text::lowercased(name), &ModifierName::name);
    return found == modifierNames.end() ? std::nullopt : std::optional(found->modifier);
}

std::optional<Shortcut> Shortcut::decode(std::uint16_t keyCode, const std::optional<std::string>& characters,
                                         const std::optional<std::string>& charactersIgnoringModifiers,
                                         ModifierSet modifiers) {
    if (const auto key = keyOfCode(keyCode); !key.empty()) return Shortcut{std::string(key), modifiers};
    if (characters)
        if (const auto key = keyOfCharacters(*characters); !key.empty())
            return Shortcut{std::string(key), modifiers};
    // With shift these two keys type other characters.
    if (keyCode == Code::comma) return Shortcut{",", modifiers};
    if (keyCode == Code::period) return Shortcut{".", modifiers};
    auto letter = letterKey(charactersIgnoringModifiers.value_or(""));
    return letter ? std::optional(Shortcut{std::move(*letter), modifiers}) : std::nullopt;
}

std::string Shortcut::displayString() const {
    if (isUnbound()) return "—";
    std::string shown;
    for (const ModifierName& each : modifierNames)
        if (modifiers.contains(each.modifier)) shown += each.glyph;
    const SpecialKeyName* special = specialKey(key);
    return shown + (special != nullptr ? std::string(special->shown) : text::uppercased(key));
}

std::optional<MenuEquivalent> Shortcut::menuEquivalent() const {
    if (isUnbound()) return std::nullopt;
    const SpecialKeyName* special = specialKey(key);
    if (special == nullptr) return MenuEquivalent{key, modifiers};
    if (special->inMenu.empty()) return std::nullopt;
    return MenuEquivalent{std::string(special->inMenu), modifiers};
}

std::string Shortcut::text() const {
    if (isUnbound()) return "none";
    std::string typed;
    for (const ModifierName& each : modifierNames)
        if (modifiers.contains(each.modifier)) typed.append(each.name).append("+");
    return typed + key;
}

Shortcut Shortcut::fromText(std::string_view text) {
    if (text.empty() || text::lowercased(text) == "none") return unbound;
    Shortcut shortcut;
    std::string_view rest = text;
    // A plus at the end of the text is the key itself.
    for (std::size_t plus = rest.find('+'); plus != std::string_view::npos && plus + 1 < rest.size();
         plus = rest.find('+')) {
        const auto modifier = modifierNamed(rest.substr(0, plus));
        if (!modifier) break;
        shortcut.modifiers = shortcut.modifiers | *modifier;
        rest.remove_prefix(plus + 1);
    }
    auto key = keyNamed(rest);
    if (!key)
        throw ShortcutTextError(
            "'" + std::string(text) +
            "' is no key for an action; one is a letter, 0 , . [ ] plus minus space return "
            "escape arrowUp arrowDown arrowLeft arrowRight kHeldJ kHeldL, with command+ "
            "shift+ option+ control+ in front, or none");
    shortcut.key = std::move(*key);
    return shortcut;
}

JSON toJSON(const Shortcut& shortcut) { return fieldsToJSON(shortcut); }

template <>
Shortcut fromJSON<Shortcut>(const JSON& json) {
    return madeFromJSON<Shortcut>(json);
}

} // namespace orvane
