#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

class QMenu;
class QWidget;

namespace orvane::views {

/// Adds the entries that open sheets of help over a window. "Check for Updates…" is there once a page for it
/// is known to be configured.
void addHelpEntries(Desktop& desktop, QWidget* window, QMenu* help);

} // namespace orvane::views
