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

/// The modifier keys of a key press. Unknown bits from a file are kept; they match no key press.
struct ModifierSet {
    std::int64_t rawValue = 0;

    static const ModifierSet none, command, shift, option, control;

    constexpr bool contains(ModifierSet other) const { return (rawValue & other.rawValue) == other.rawValue; }
    friend constexpr ModifierSet operator|(ModifierSet a, ModifierSet b) { return {a.rawValue | b.rawValue}; }
    constexpr auto operator<=>(const ModifierSet&) const = default;
};
inline constexpr ModifierSet ModifierSet::none{0}, ModifierSet::command{1}, ModifierSet::shift{2},
    ModifierSet::option{4}, ModifierSet::control{8};

/// By the names "command", "shift", "option" and "control", ignoring case; absent for any other text.
std::optional<ModifierSet> modifierNamed(std::string_view name);

/// The text is not a key. The description says which texts are.
class ShortcutTextError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The character of a menu's key equivalent, or the name of its special key, with the modifiers.
struct MenuEquivalent {
    std::string key;
    ModifierSet modifiers;

    bool operator==(const MenuEquivalent&) const = default;
};

/// A key with its modifiers, to which an action is bound.
struct Shortcut {
    /// A lower-case letter, digit, punctuation character, or one of `SpecialKey`; empty if unbound.
    std::string key;
    ModifierSet modifiers;

    struct SpecialKey {
        static constexpr std::string_view space = "space", escape = "escape", enter = "return",
                                          arrowUp = "arrowUp", arrowDown = "arrowDown",
                                          arrowLeft = "arrowLeft", arrowRight = "arrowRight", plus = "plus",
                                          minus = "minus", zero = "0";
        /// J or L held while K is down. `decode` never returns them.
        static constexpr std::string_view kHeldJ = "kHeldJ", kHeldL = "kHeldL";
    };
    /// Codes of keys by position on the keyboard. The codes of all other keys are not used.
    struct KeyCode {
        static constexpr std::uint16_t returnMain = 36, returnNumpad = 76, space = 49, escape = 53,
                                       arrowLeft = 123, arrowRight = 124, arrowDown = 125, arrowUp = 126,
                                       comma = 43, period = 47, k = 40, j = 38, l = 37, other = 0xFFFF;
    };
    static const Shortcut unbound;

    bool isUnbound() const { return key.empty(); }

    /// The shortcut that a key press means; absent for a key that no action can have. `characters` is the
    /// text that it types, `charactersIgnoringModifiers` the text without all modifiers but shift.
    static std::optional<Shortcut> decode(std::uint16_t keyCode, const std::optional<std::string>& characters,
                                          const std::optional<std::string>& charactersIgnoringModifiers,
                                          ModifierSet modifiers);

    /// For display: the signs of the modifiers and of the key, such as ⇧⌘L; "—" if unbound.
    std::string displayString() const;
    /// Absent for an unbound shortcut and for the keys that are held together with K.
    std::optional<MenuEquivalent> menuEquivalent() const;

    /// The form in which it is typed: "shift+c", "command+shift+arrowLeft", "+"; "none" if unbound.
    std::string text() const;
    /// Accepts the form of `text`, ignoring case, and signs instead of "plus", "[" and similar names. Throws
    /// ShortcutTextError for anything that `decode` cannot return and that is not a key held with K.
    static Shortcut fromText(std::string_view text);

    bool operator==(const Shortcut&) const = default;
    auto operator<=>(const Shortcut&) const = default;
};
inline const Shortcut Shortcut::unbound{};

JSON toJSON(const Shortcut& shortcut);
template <>
Shortcut fromJSON<Shortcut>(const JSON& json);

} // namespace orvane
