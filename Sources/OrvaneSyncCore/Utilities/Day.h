#pragma once

namespace orvane {

inline constexpr double secondsADay = 86400; ///< of civil time, without leap seconds

} // namespace orvane
