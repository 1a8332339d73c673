#pragma once

#include <string>

/// When a file was last used, for caches that remove the files that were unused for longest. Kept apart from
/// the modification date, which identifies the file's content. Any thread.
namespace orvane::platform::files {

/// Ignores a failure.
void markUsed(const std::string& path);
/// Seconds since 1 January 2001 00:00 UTC; 0 if there is no file.
double lastUsed(const std::string& path);

} // namespace orvane::platform::files
