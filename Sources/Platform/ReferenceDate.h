#pragma once

#include <ctime>

namespace orvane::platform {

/// 1 January 2001 00:00 UTC, in seconds since 1 January 1970 00:00 UTC.
inline constexpr double referenceDateUnixSeconds = 978307200.0;

/// Converts a time of the file system to seconds since the reference date.
inline double sinceReferenceDate(const timespec& time) {
    return static_cast<double>(time.tv_sec) - referenceDateUnixSeconds +
           static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace orvane::platform
