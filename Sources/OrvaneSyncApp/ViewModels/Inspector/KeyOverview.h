#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyText.h"
#include "OrvaneSyncCore/Services/Shortcuts/ReviewKeys.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The state of the review that decides which keys do something.
struct ReviewSituation {
    bool hasClip = false;
    bool isLoaded = false; ///< its picture or sound can be played
    bool hasSound = false;
    bool isLocked = false;
    bool isLooping = false;
    bool canCheckClap = false;
    bool hasChoice = false;     ///< the clip has several recordings to choose from
    bool hasSuggestion = false; ///< another camera of the take, or a clip of the card, was moved
    bool hasNext = false, hasPrevious = false;
    bool canUndo = false, canRedo = false;
    bool hasWork = false;

    bool operator==(const ReviewSituation&) const = default;
};

/// The group of the action in menus and in the key overview: the mark is with the lock, although the settings
/// list it under navigation.
ShortcutCategory shownCategory(ShortcutAction action);

/// Keys grouped by subject, without actions that have no key. Pure; any thread.
struct KeyGroup {
    struct Row {
        std::optional<ShortcutAction> action; ///< absent: a fixed key of the window
        std::string key;                      ///< with the names on the keyboard, such as "Shift+Right"
        std::string label;
        bool acts = false; ///< it does something if it is pressed now

        bool operator==(const Row&) const = default;
    };
    std::string title;
    std::vector<Row> rows;
};
std::vector<KeyGroup> keyOverview(const ShortcutBindings& bindings, const ReviewSituation& situation);
/// The groups in columns, in their order; no group is split. Each group has a line for its title and one for
/// each row, with a free line between two groups. The columns are as short as possible, and there are no more
/// of them than needed.
struct KeyColumns {
    struct Place {
        int column, line; ///< from 0
    };
    std::vector<Place> places; ///< one for each group
    int columns = 0, lines = 0;
};
KeyColumns keyColumns(const std::vector<KeyGroup>& groups, int mostColumns);
/// The keys of the screen that shows so many cameras of a take beside each other.
std::vector<KeyGroup> multicamKeyOverview(const ShortcutBindings& bindings, std::size_t cameras);

} // namespace orvane
