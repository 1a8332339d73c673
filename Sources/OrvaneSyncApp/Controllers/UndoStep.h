#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// What the user takes back at once: the name that the menu shows, and for how long after a change the next
/// one of the same name still belongs to the same step.
struct UndoStep {
    std::string_view actionName;
    double coalescingWindow = 0; ///< seconds; 0: every change is a step of its own
};

/// What a menu needs to know.
struct UndoState {
    bool canUndo = false;
    bool canRedo = false;
    std::optional<std::string> undoActionName;
    std::optional<std::string> redoActionName;

    bool operator==(const UndoState&) const = default;
};

} // namespace orvane
