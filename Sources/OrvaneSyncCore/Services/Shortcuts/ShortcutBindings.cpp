#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"

#include "Platform/Text.h"

#include <algorithm>
#include <cstddef>

namespace orvane {

namespace {

/// Why no key press can match the shortcut; empty if one can.
std::string_view whyNeverPressed(const Shortcut& shortcut) {
    using Special = Shortcut::SpecialKey;
    if (shortcut.isUnbound() || shortcut.modifiers == ModifierSet::none) return {};
    if (shortcut.key == "k")
        return "K is the key that J and L are held with, and acts without modifiers alone";
    if (shortcut.key == Special::kHeldJ || shortcut.key == Special::kHeldL)
        return "a key that is held together with K counts without modifiers alone";
    return {};
}

std::string named(const Shortcut& shortcut) {
    return "'" + shortcut.text() + "' (" + shortcut.displayString() + ")";
}

} // namespace

ShortcutBindings defaultBindings() {
    ShortcutBindings bindings;
    for (const ShortcutAction action : allShortcutActions()) bindings[action] = defaultShortcut(action);
    return bindings;
}

std::optional<ShortcutAction> actionFor(const ShortcutBindings& bindings, std::string_view key,
                                        ModifierSet modifiers) {
    const auto found = std::ranges::find_if(bindings, [&](const auto& binding) {
        const Shortcut& shortcut = binding.second;
        return !shortcut.isUnbound() && shortcut.key == key && shortcut.modifiers == modifiers;
    });
    if (found != bindings.end()) return found->first;
    // On most keyboards plus is typed with Shift, so Shift does not belong to the shortcut.
    if (key == Shortcut::SpecialKey::plus && modifiers.contains(ModifierSet::shift))
        return actionFor(bindings, key, {modifiers.rawValue & ~ModifierSet::shift.rawValue});
    return std::nullopt;
}

std::optional<Shortcut> shortcutInMenus(const ShortcutBindings& bindings, ShortcutAction action) {
    const auto found = bindings.find(action);
    if (found == bindings.end() || found->second.isUnbound()) return std::nullopt;
    const Shortcut& key = found->second;
    const auto isHeld = [&](ModifierSet modifier) { return key.modifiers.contains(modifier); };
    if (keyAction(action) && !isHeld(ModifierSet::command) && !isHeld(ModifierSet::option) &&
        !isHeld(ModifierSet::control))
        return std::nullopt;
    return actionFor(bindings, key.key, key.modifiers) == action ? std::optional(key) : std::nullopt;
}

std::vector<SharedShortcut> sharedShortcuts(const ShortcutBindings& bindings) {
    std::vector<SharedShortcut> all;
    for (const auto& [action, shortcut] : bindings) {
        if (shortcut.isUnbound()) continue;
        const auto known = std::ranges::find(all, shortcut, &SharedShortcut::shortcut);
        if (known == all.end())
            all.push_back({shortcut, {action}});
        else
            known->actions.push_back(action);
    }
    std::erase_if(all, [](const SharedShortcut& one) { return one.actions.size() < 2; });
    return all;
}

std::vector<std::string> bindingProblems(const ShortcutBindings& bindings) {
    std::vector<std::string> problems;
    for (const SharedShortcut& shared : sharedShortcuts(bindings)) {
        std::vector<std::string> names;
        for (const ShortcutAction action : shared.actions) names.emplace_back(rawValue(action));
        problems.push_back("the key " + named(shared.shortcut) + " is bound to " +
                           platform::text::joined(names, " and ") + ": " + names.front() +
                           " gets it, as it comes first in the list");
    }
    for (const auto& [action, shortcut] : bindings)
        if (const auto why = whyNeverPressed(shortcut); !why.empty())
            problems.push_back("the key " + named(shortcut) + " never reaches " +
                               std::string(rawValue(action)) + ": " + std::string(why));
    return problems;
}

JSON toJSON(const ShortcutBindings& bindings) {
    JSON::Array list;
    for (const auto& [action, shortcut] : bindings) {
        list.emplace_back(rawValue(action));
        list.push_back(toJSON(shortcut));
    }
    return list;
}

template <>
ShortcutBindings fromJSON<ShortcutBindings>(const JSON& json) {
    const JSON::Array* list = json.elements();
    if (list == nullptr) throw DecodingError("expected a list");
    if (list->size() % 2 != 0) throw DecodingError("the last action has no key");
    ShortcutBindings bindings;
    for (std::size_t i = 0; i < list->size(); i += 2) {
        const auto name = fromJSON<std::string>((*list)[i]);
        const auto action = fromRawValue<ShortcutAction>(name);
        if (!action) throw DecodingError("unknown action \"" + name + "\"");
        bindings[*action] = decodedMember<Shortcut>((*list)[i + 1], name);
    }
    return bindings;
}

JSON bindingsListing(const ShortcutBindings& bindings) {
    JSON byAction = JSON::object();
    for (const auto& [action, shortcut] : bindings) byAction.set(rawValue(action), toJSON(shortcut));
    JSON listing;
    listing.set("bindings", std::move(byAction));
    JSON::Array conflicts;
    for (const SharedShortcut& shared : sharedShortcuts(bindings)) {
        JSON conflict = toJSON(shared.shortcut);
        JSON::Array names;
        for (const ShortcutAction action : shared.actions) names.emplace_back(rawValue(action));
        conflict.set("actions", std::move(names));
        conflicts.push_back(std::move(conflict));
    }
    if (!conflicts.empty()) listing.set("conflicts", std::move(conflicts));
    return listing;
}

} // namespace orvane
