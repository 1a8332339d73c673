#pragma once

#include <ctime>

namespace orvane::platform {

/// Of a time of the file system: seconds since 1 January 2001 00:00 UTC.
inline double sinceReferenceDate(const timespec& time) {
    constexpr double referenceDateUnixSeconds = 978307200.0;
    return static_cast<double>(time.tv_sec) - referenceDateUnixSeconds +
           static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace orvane::platform
