#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// What the user undoes at once: the name in the menu, and the time after a change in which the next change
/// of the same name belongs to the same step.
struct UndoStep {
    std::string_view actionName;
    double coalescingWindow = 0; ///< seconds; 0: every change is a step of its own
};

/// The information that a menu shows.
struct UndoState {
    bool canUndo = false;
    bool canRedo = false;
    std::optional<std::string> undoActionName;
    std::optional<std::string> redoActionName;

    bool operator==(const UndoState&) const = default;
};

} // namespace orvane
