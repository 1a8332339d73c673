#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"

#include <algorithm>
#include <array>
#include <string_view>
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
    case clapCheck:
        return now.canCheckClap;
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
    default: // the actions of playback
        return now.isLoaded;
    }
}

/// Puts the groups into columns of at most `lines` lines.
KeyColumns arranged(const std::vector<KeyGroup>& groups, int lines) {
    KeyColumns positioned{.places = {}, .columns = 1, .lines = lines};
    int line = 0;
    for (const KeyGroup& group : groups) {
        const int own = static_cast<int>(group.rows.size()) + 1;
        if (line > 0 && line + own > lines) {
            ++positioned.columns;
            line = 0;
        }
        positioned.places.push_back({positioned.columns - 1, line});
        line += own + 1;
    }
    return positioned;
}

/// Keys that the user has given to actions, so that the fixed keys of the window are not listed for them.
struct TakenKeys {
    bool approves = false; ///< an action with a key of its own already approves the clip
    bool endsLoop = false; ///< Escape ends a loop
};

KeyGroup keysOfTheWindow(const ReviewSituation& now, const TakenKeys& taken) {
    namespace keys = reviewKeys;
    KeyGroup group{"Window", {}};
    const auto add = [&](const char* key, std::string_view label, bool acts) {
        group.rows.push_back({{}, key, std::string(label), acts});
    };
    add(keys::lens, "Sync Lens", now.hasClip);
    add(keys::putOnFrame, "Put on the Frame Shown", now.hasSound && now.isLoaded && !now.isLocked);
    add(keys::firstFrame, "To the First Frame", now.isLoaded);
    add(keys::lastFrame, "To the Last Frame", now.isLoaded);
    add(keys::attach, "Attach a Recording", now.hasClip && !now.isLocked);
    add("Ctrl+1–9", "Use This Recording", now.hasChoice);
    add(keys::applySuggestion, "Apply the Suggested Offset", now.hasSuggestion);
    add(keys::rename, "Rename Clip", now.hasClip);
    if (!taken.approves) add(keys::approve, label(ShortcutAction::toggleApproved), now.hasClip);
    add(keys::multicam, "Open as Multicam", now.hasClip);
    if (!taken.endsLoop) add(keys::leave, "Back to the Results", !now.isLooping);
    add(keys::overview, "All Keys", true);
    return group;
}

} // namespace

ShortcutCategory shownCategory(ShortcutAction action) {
    return action == ShortcutAction::toggleApproved ? ShortcutCategory::sync : category(action);
}

std::vector<KeyGroup> keyOverview(const ShortcutBindings& bindings, const ReviewSituation& situation) {
    std::vector<KeyGroup> groups;
    for (std::size_t i = 0; i < RawValues<ShortcutCategory>::texts.size(); ++i)
        groups.push_back({std::string(label(static_cast<ShortcutCategory>(i))), {}});
    TakenKeys taken;
    for (const ShortcutAction action : allShortcutActions()) {
        const auto bound = bindings.find(action);
        if (bound == bindings.end() || bound->second.isUnbound()) continue;
        const Shortcut shortcut = bound->second;
        // If two actions have the same key, the first one gets it.
        const bool isReached = actionFor(bindings, shortcut.key, shortcut.modifiers) == action;
        std::string key = keyText(shortcut);
        taken.approves |= action == ShortcutAction::toggleApproved && isReached;
        // Escape is listed once, with what it does now.
        if (action == ShortcutAction::clearLoop && isReached && key == reviewKeys::leave) {
            taken.endsLoop = situation.isLooping;
            if (!situation.isLooping) continue;
        }
        groups[static_cast<std::size_t>(shownCategory(action))].rows.push_back(
            {action, std::move(key), std::string(label(action)), isReached && actsNow(action, situation)});
    }
    groups.push_back(keysOfTheWindow(situation, taken));
    std::erase_if(groups, [](const KeyGroup& group) { return group.rows.empty(); });
    return groups;
}

KeyColumns keyColumns(const std::vector<KeyGroup>& groups, int mostColumns) {
    int most = 0, all = 0;
    for (const KeyGroup& group : groups) {
        const int own = static_cast<int>(group.rows.size()) + 1;
        most = std::max(most, own);
        all += own + 1;
    }
    for (int lines = most; lines < all; ++lines)
        if (KeyColumns positioned = arranged(groups, lines); positioned.columns <= mostColumns)
            return positioned;
    return arranged(groups, all);
}

std::vector<KeyGroup> multicamKeyOverview(const ShortcutBindings& bindings, std::size_t cameras) {
    using enum ShortcutAction;
    constexpr std::array used{playPause,    shuttleForward, shuttleReverse, shuttleStop,      stepForward,
                              stepBackward, slowMoForward,  slowMoReverse,  toggleFullscreen, nextGroup,
                              prevGroup,    toggleApproved, lockCurrent};
    ReviewSituation now;
    now.isLoaded = now.hasClip = now.hasNext = now.hasPrevious = cameras > 0;
    std::vector<KeyGroup> groups = keyOverview(bindings, now);
    for (KeyGroup& group : groups)
        std::erase_if(group.rows, [&](const KeyGroup::Row& row) {
            return row.action ? std::ranges::find(used, *row.action) == used.end()
                              : row.key != reviewKeys::leave && row.key != reviewKeys::overview;
        });
    constexpr std::size_t digits = 9;
    const std::size_t last = std::min(cameras, digits);
    if (last > 1)
        groups.back().rows.insert(groups.back().rows.begin(),
                                  {{}, "1–" + std::to_string(last), "Hear the Camera of This Number", true});
    for (KeyGroup::Row& row : groups.back().rows)
        if (row.key == reviewKeys::leave) row = {{}, row.key, "Back", true};
    std::erase_if(groups, [](const KeyGroup& group) { return group.rows.empty(); });
    return groups;
}

} // namespace orvane
