#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/KeyText.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"

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
    bool hasNext = false, hasPrevious = false;
    bool canUndo = false, canRedo = false;
    bool hasWork = false;

    bool operator==(const ReviewSituation&) const = default;
};

/// The keys by what they are about. Pure; any thread.
struct KeyGroup {
    struct Row {
        ShortcutAction action;
        std::string key; ///< as the keyboard has it, such as "Shift+Right"; "—" without one
        std::string label;
        std::string help;
        bool acts = false; ///< pressed now, it does something

        bool operator==(const Row&) const = default;
    };
    std::string title;
    std::vector<Row> rows;
};
std::vector<KeyGroup> keyOverview(const ShortcutBindings& bindings, const ReviewSituation& situation);

} // namespace orvane
