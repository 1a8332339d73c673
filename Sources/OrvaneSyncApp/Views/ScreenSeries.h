#pragma once

#include <QString>

#include <functional>

namespace orvane::views {

class MainWindow;

/// Writes a picture of each screen into the folder, at three widths, once the work of the window stands, and
/// then calls back. For looking at them, and for the test that looks at all of them.
void writeScreens(MainWindow& window, const QString& folder, std::function<void()> done);

} // namespace orvane::views
