#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvane {

namespace {

bool actsNow(ShortcutAction action, const ReviewSituation& now) {
    using enum ShortcutAction;
    switch (action) {
    case undo:
        return now.canUndo;
    case redo:
        return now.canRedo;
    case openProject:
        return true;
    case saveProject:
        return now.hasWork;
    case nextGroup:
        return now.hasNext;
    case prevGroup:
        return now.hasPrevious;
    case clearLoop:
        return now.isLooping;
    case updateClapPoint:
        return now.hasSound && now.isLoaded && !now.isLocked;
    case audioOffsetPlus:
    case audioOffsetMinus:
    case audioOffsetPlus5:
    case audioOffsetMinus5:
    case nudgeCommaMinus:
    case nudgePeriodPlus:
    case nudgeCommaMinus10:
    case nudgePeriodPlus10:
    case toggleAudioExpand:
    case jumpPrevEdit:
    case jumpNextEdit:
        return now.hasSound;
    case toggleApproved:
    case lockCurrent:
    case lockAllInCluster:
    case zoomIn:
    case zoomOut:
    case zoomFit:
        return now.hasClip;
    default: // what plays
        return now.isLoaded;
    }
}

} // namespace

std::string keyText(const Shortcut& shortcut) {
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

std::vector<KeyGroup> keyOverview(const ShortcutBindings& bindings, const ReviewSituation& situation) {
    std::vector<KeyGroup> groups;
    for (std::size_t i = 0; i < RawValues<ShortcutCategory>::texts.size(); ++i)
        groups.push_back({std::string(label(static_cast<ShortcutCategory>(i))), {}});
    for (const ShortcutAction action : allShortcutActions()) {
        const auto bound = bindings.find(action);
        const Shortcut shortcut = bound == bindings.end() ? Shortcut::unbound : bound->second;
        // Of two actions with one key the first has it.
        const bool isReached =
            !shortcut.isUnbound() && actionFor(bindings, shortcut.key, shortcut.modifiers) == action;
        groups[static_cast<std::size_t>(category(action))].rows.push_back(
            {action, keyText(shortcut), std::string(label(action)), std::string(helpText(action)),
             isReached && actsNow(action, situation)});
    }
    std::erase_if(groups, [](const KeyGroup& group) { return group.rows.empty(); });
    return groups;
}

} // namespace orvane
