#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"

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
