#pragma once

#include <string>

namespace orvane::platform {

/// Whether this session has a screen with windows.
bool isDesktopThere();
/// Shows a page in the browser of the desktop. Two seconds at most, after which it is taken to have worked.
bool openWithDesktop(const std::string& url);
/// Makes the desktop hand addresses of a scheme to this program, by an entry in the user's own folder of
/// applications. Without a desktop, and where it can't be done, nothing.
void registerScheme(const std::string& scheme);

} // namespace orvane::platform
