#pragma once

#include <string>

/// When a file was last used, for caches that throw away what nobody has used for longest. Kept apart from
/// its modification date, by which others know its content. Any thread.
namespace orvane::platform::files {

/// Ignores a failure.
void markUsed(const std::string& path);
/// Seconds since 1 January 2001 00:00 UTC; 0 where nothing is there.
double lastUsed(const std::string& path);

} // namespace orvane::platform::files
