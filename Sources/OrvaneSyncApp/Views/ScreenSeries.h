#pragma once

#include <QString>

#include <functional>

namespace orvane::views {

class MainWindow;

/// Writes a picture of each screen into the folder, at three widths, after the window has loaded its work;
/// then calls `done`. For people who check the pictures, and for the test of all screens.
void writeScreens(MainWindow& window, const QString& folder, std::function<void()> done);

} // namespace orvane::views
