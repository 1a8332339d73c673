#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/Shortcut.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The key of each action, in the order of the actions. An action that is missing has none.
using ShortcutBindings = std::map<ShortcutAction, Shortcut>;

ShortcutBindings defaultBindings();

/// The first action with exactly this key and these modifiers.
std::optional<ShortcutAction> actionFor(const ShortcutBindings& bindings, std::string_view key,
                                        ModifierSet modifiers);

/// The user's key if menus use it as well: the key of an action of the menus, or of an action of the review
/// if the key is held with Ctrl, Alt or Super. Other keys work only in the review, as lists use them for
/// themselves. Also absent for an action without a key, or if another action gets the key.
std::optional<Shortcut> shortcutInMenus(const ShortcutBindings& bindings, ShortcutAction action);

/// A key that several actions have; the first of them gets it.
struct SharedShortcut {
    Shortcut shortcut;
    std::vector<ShortcutAction> actions; ///< at least two, in their order
};
std::vector<SharedShortcut> sharedShortcuts(const ShortcutBindings& bindings);

/// Messages, one for each problem: keys that several actions have, and keys that no key press can match.
std::vector<std::string> bindingProblems(const ShortcutBindings& bindings);

/// A list in which the name of each action is followed by its shortcut.
JSON toJSON(const ShortcutBindings& bindings);
/// If an action occurs twice, the last one counts.
template <>
ShortcutBindings fromJSON<ShortcutBindings>(const JSON& json);

/// {"bindings": {...}} with a member for each action, and "conflicts" if actions share a key.
JSON bindingsListing(const ShortcutBindings& bindings);

} // namespace orvane
