#include "OrvaneSyncApp/ViewModels/Settings/ShortcutRows.h"

#include "OrvaneSyncCore/Services/Shortcuts/KeyText.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane {

namespace {

void addConflict(ShortcutRow& row, const SharedShortcut& shared) {
    std::vector<std::string> names;
    for (const ShortcutAction other : shared.actions)
        if (other != row.action) {
            row.sharedWith.push_back(other);
            names.push_back("“" + std::string(label(other)) + "”");
        }
    const ShortcutAction winner = shared.actions.front();
    row.conflict = platform::text::joined(names, " and ") + (names.size() == 1 ? " has" : " have") +
                   " this key too" +
                   (winner == row.action ? "; this action gets it."
                    : names.size() == 1  ? " and gets it."
                                         : "; “" + std::string(label(winner)) + "” gets it.");
}

} // namespace

std::vector<ShortcutRow> shortcutRows(const ShortcutBindings& bindings) {
    const std::vector<SharedShortcut> shared = sharedShortcuts(bindings);
    std::vector<ShortcutRow> rows;
    for (const ShortcutAction action : allShortcutActions()) {
        const auto bound = bindings.find(action);
        const Shortcut shortcut = bound == bindings.end() ? Shortcut::unbound : bound->second;
        ShortcutRow row{action,
                        std::string(label(action)),
                        std::string(helpText(action)),
                        keyText(shortcut),
                        shortcut == defaultShortcut(action),
                        shortcut.isUnbound()};
        for (const SharedShortcut& one : shared)
            if (one.shortcut == shortcut) addConflict(row, one);
        rows.push_back(std::move(row));
    }
    return rows;
}

bool matches(const ShortcutRow& row, const SearchWords& words) {
    return words.areIn(row.label + " " + row.help + " " + row.key + " " +
                       std::string(label(category(row.action))) + " keyboard shortcut");
}

} // namespace orvane
