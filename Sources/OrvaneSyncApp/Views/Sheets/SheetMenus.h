#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

class QAction;
class QMenu;
class QWidget;

namespace orvane::views {

/// The entries that open sheets, for menus and tools.
struct SheetActions {
    QAction* renameClips;
    QAction* buildRoomTone;
};
/// Adds them to the menus of a window, enabled as the work stands whenever a menu opens. "Check for Updates…"
/// is there once a page for it is known to be configured.
SheetActions addSheetActions(Desktop& desktop, QWidget* window, QMenu* clip, QMenu* audio, QMenu* help);

} // namespace orvane::views
