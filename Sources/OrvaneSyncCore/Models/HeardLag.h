#pragma once

#include <optional>

namespace orvane {

/// How a recording lies against the microphone of a camera that heard the same.
struct HeardLag {
    double seconds = 0; ///< to be added to the recording's offset at the head of the clip
    /// What that grows by in each second of the clip: -0.001 where the recording plays 0.1 % too slowly.
    /// Absent where the tail of the clip was not heard.
    std::optional<double> drift = {};
};

} // namespace orvane
