#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// The modifier keys of a key press; further bits that a file holds are kept and match no key press.
struct ModifierSet {
    std::int64_t rawValue = 0;

    static const ModifierSet none, command, shift, option, control;

    constexpr bool contains(ModifierSet other) const { return (rawValue & other.rawValue) == other.rawValue; }
    friend constexpr ModifierSet operator|(ModifierSet a, ModifierSet b) { return {a.rawValue | b.rawValue}; }
    constexpr auto operator<=>(const ModifierSet&) const = default;
};
inline constexpr ModifierSet ModifierSet::none{0}, ModifierSet::command{1}, ModifierSet::shift{2},
    ModifierSet::option{4}, ModifierSet::control{8};

/// By the names "command", "shift", "option" and "control", in any case; nothing for any other.
std::optional<ModifierSet> modifierNamed(std::string_view name);

/// A text that names no key. The description says which texts do.
class ShortcutTextError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The character of a menu's key equivalent, or the name of its special key, and the modifiers.
struct MenuEquivalent {
    std::string key;
    ModifierSet modifiers;

    bool operator==(const MenuEquivalent&) const = default;
};

/// A key with its modifiers, as actions are bound to it.
struct Shortcut {
    /// Lower-case letter, digit, punctuation character, or one of `SpecialKey`; empty when unbound.
    std::string key;
    ModifierSet modifiers;

    struct SpecialKey {
        static constexpr std::string_view space = "space", escape = "escape", enter = "return",
                                          arrowUp = "arrowUp", arrowDown = "arrowDown",
                                          arrowLeft = "arrowLeft", arrowRight = "arrowRight", plus = "plus",
                                          minus = "minus", zero = "0";
        /// J or L held down while K is down. No key press gives them.
        static constexpr std::string_view kHeldJ = "kHeldJ", kHeldL = "kHeldL";
    };
    /// Codes of keys by their place on the keyboard. Every other key has one that means nothing here.
    struct KeyCode {
        static constexpr std::uint16_t returnMain = 36, returnNumpad = 76, space = 49, escape = 53,
                                       arrowLeft = 123, arrowRight = 124, arrowDown = 125, arrowUp = 126,
                                       comma = 43, period = 47, k = 40, j = 38, l = 37, other = 0xFFFF;
    };
    static const Shortcut unbound;

    bool isUnbound() const { return key.empty(); }

    /// What a key press means; nothing for a key that no action can have. `characters` is what it types,
    /// `charactersIgnoringModifiers` what it would type without all modifiers but shift.
    static std::optional<Shortcut> decode(std::uint16_t keyCode, const std::optional<std::string>& characters,
                                          const std::optional<std::string>& charactersIgnoringModifiers,
                                          ModifierSet modifiers);

    /// For people: the signs of the modifiers and of the key, such as ⇧⌘L; "—" when unbound.
    std::string displayString() const;
    /// Nothing for an unbound shortcut and for the keys that are held together with K.
    std::optional<MenuEquivalent> menuEquivalent() const;

    /// As people type it: "shift+c", "command+shift+arrowLeft", "+"; "none" when unbound.
    std::string text() const;
    /// Takes what `text` gives, in any case, with signs in place of "plus", "[" and the like. Throws
    /// ShortcutTextError for anything that `decode` can't give and that is no key held with K.
    static Shortcut fromText(std::string_view text);

    bool operator==(const Shortcut&) const = default;
    auto operator<=>(const Shortcut&) const = default;
};
inline const Shortcut Shortcut::unbound{};

JSON toJSON(const Shortcut& shortcut);
template <>
Shortcut fromJSON<Shortcut>(const JSON& json);

} // namespace orvane
