#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"
#include "OrvaneSyncCore/Utilities/SearchWords.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// One action in the table of keys. Texts are shown to the user.
struct ShortcutRow {
    ShortcutAction action;
    std::string label;
    std::string help;
    std::string key; ///< "—" for none
    bool isDefault = true;
    bool isUnbound = false;
    /// The other actions with the same key, in their order.
    std::vector<ShortcutAction> sharedWith{};
    std::string conflict{}; ///< which actions have the same key, and which of them gets it; empty: none
};

/// In the order of the actions.
std::vector<ShortcutRow> shortcutRows(const ShortcutBindings& bindings);
/// Whether the row or its heading contains each of the words, in upper or lower case.
bool matches(const ShortcutRow& row, const SearchWords& words);

} // namespace orvane
