#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

class QMenu;
class QWidget;

namespace orvane::views {

/// Adds the entries that open the sheets of help over a window. "Check for Updates…" is shown only while an
/// address for it is configured.
void addHelpEntries(Desktop& desktop, QWidget* window, QMenu* help);

} // namespace orvane::views
