#pragma once

namespace orvane {

inline constexpr double secondsADay = 86400; ///< of the clock on the wall, which knows no leap seconds

} // namespace orvane
