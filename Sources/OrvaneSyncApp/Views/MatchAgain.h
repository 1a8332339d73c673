#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <vector>

class QWidget;

namespace orvane::views {

/// Runs the command for the clips, and says over the window of `of` how many of them have changed.
void matchAgain(Desktop& desktop, QWidget* of, const std::vector<UUID>& clips);

} // namespace orvane::views
