#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyText.h"
#include "OrvaneSyncCore/Services/Shortcuts/ReviewKeys.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What of the review decides which keys do something.
struct ReviewSituation {
    bool hasClip = false;
    bool isLoaded = false; ///< its picture or sound can be played
    bool hasSound = false;
    bool isLocked = false;
    bool isLooping = false;
    bool canCheckClap = false;
    bool hasChoice = false;     ///< among several recordings
    bool hasSuggestion = false; ///< by a sibling's move
    bool hasNext = false, hasPrevious = false;
    bool canUndo = false, canRedo = false;
    bool hasWork = false;

    bool operator==(const ReviewSituation&) const = default;
};

/// The keys by what they are about, without actions that have none. Pure; any thread.
struct KeyGroup {
    struct Row {
        std::optional<ShortcutAction> action; ///< absent: the window's, which is not bound
        std::string key;                      ///< as the keyboard has it, such as "Shift+Right"
        std::string label;
        bool acts = false; ///< pressed now, it does something

        bool operator==(const Row&) const = default;
    };
    std::string title;
    std::vector<Row> rows;
};
std::vector<KeyGroup> keyOverview(const ShortcutBindings& bindings, const ReviewSituation& situation);
/// Groups in columns, in their order and none parted: each has a line for its title and one for each row,
/// with a free line between two. As few lines as the columns allow, as few columns as those lines need.
struct KeyColumns {
    struct Place {
        int column, line; ///< from 0
    };
    std::vector<Place> places; ///< of each group
    int columns = 0, lines = 0;
};
KeyColumns keyColumns(const std::vector<KeyGroup>& groups, int mostColumns);
/// Of the cameras of a take beside each other: the keys that they play by, where there are any.
std::vector<KeyGroup> multicamKeyOverview(const ShortcutBindings& bindings, std::size_t cameras);

} // namespace orvane
