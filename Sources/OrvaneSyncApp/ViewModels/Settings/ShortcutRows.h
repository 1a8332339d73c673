#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"
#include "OrvaneSyncCore/Utilities/SearchWords.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// One action in the table of keys. Texts are for people.
struct ShortcutRow {
    ShortcutAction action;
    std::string label;
    std::string help;
    std::string key; ///< "—" for none
    bool isDefault = true;
    bool isUnbound = false;
    /// The other actions with this key, in their order.
    std::vector<ShortcutAction> sharedWith{};
    std::string conflict{}; ///< who has the key too, and who gets it; empty without one
};

/// In the order of the actions.
std::vector<ShortcutRow> shortcutRows(const ShortcutBindings& bindings);
/// Whether each of the words stands in the row or its heading, in any case.
bool matches(const ShortcutRow& row, const SearchWords& words);

} // namespace orvane
