#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/Shortcut.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// Which key each action has, in the order of the actions. An action that is missing has none.
using ShortcutBindings = std::map<ShortcutAction, Shortcut>;

ShortcutBindings defaultBindings();

/// The first action that has exactly this key and these modifiers.
std::optional<ShortcutAction> actionFor(const ShortcutBindings& bindings, std::string_view key,
                                        ModifierSet modifiers);

/// The user's key where menus have it too: of an action of the menus, and of one of the review where the key
/// is held with Ctrl, Alt or Super. Any other acts in the review alone, as lists use it by themselves.
/// Nothing also for an action that has no key, or whose key another one gets.
std::optional<Shortcut> shortcutInMenus(const ShortcutBindings& bindings, ShortcutAction action);

/// A key that several actions have: the first of them gets it.
struct SharedShortcut {
    Shortcut shortcut;
    std::vector<ShortcutAction> actions; ///< at least two, in their order
};
std::vector<SharedShortcut> sharedShortcuts(const ShortcutBindings& bindings);

/// For people, a line each: the keys that several actions have, and keys that no key press reaches an action
/// by.
std::vector<std::string> bindingProblems(const ShortcutBindings& bindings);

/// A list in which the name of each action is followed by its shortcut.
JSON toJSON(const ShortcutBindings& bindings);
/// Of an action that comes twice the last one counts.
template <>
ShortcutBindings fromJSON<ShortcutBindings>(const JSON& json);

/// {"bindings": {...}} with a member for each action, and "conflicts" where actions share a key.
JSON bindingsListing(const ShortcutBindings& bindings);

} // namespace orvane
