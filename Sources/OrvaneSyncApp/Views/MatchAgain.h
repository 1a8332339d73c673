#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <vector>

class QWidget;

namespace orvane::views {

/// Matches the clips again by the command, and says in a message over the window of `of` how many clips
/// changed.
void matchAgain(Desktop& desktop, QWidget* of, const std::vector<UUID>& clips);

} // namespace orvane::views
