#pragma once

#include <string>

namespace orvane::platform {

/// Whether this session has a screen with windows.
bool isDesktopThere();
/// Shows a page in the browser of the desktop. Waits two seconds at most; if the call has not failed by then,
/// it is taken as a success.
bool openWithDesktop(const std::string& url);
/// Registers this program with the desktop as the handler of a scheme, by an entry in the user's own folder
/// of applications. Does nothing without a desktop or if it can't be done.
void registerScheme(const std::string& scheme);

} // namespace orvane::platform
