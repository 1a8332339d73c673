#pragma once

#include <cstddef>
#include <string>

namespace orvane {

/// A speed that the keys J and L reach: paused, or 1, 2, 4, 8, 16 or 32 times forwards or backwards.
class ShuttleSpeed {
  public:
    ShuttleSpeed() = default; ///< paused
    static ShuttleSpeed normal() { return ShuttleSpeed().after(true); }

    /// Negative: backwards.
    float rate() const;
    /// The speed after a press: the next one in that direction; from the opposite direction normal speed.
    ShuttleSpeed after(bool isForward) const;
    /// Such as "▶ 2×"; "STOP" when paused.
    std::string label() const;

  private:
    static constexpr std::size_t rest = 6;
    std::size_t index_ = rest; ///< in the list of all speeds, ascending
};

} // namespace orvane
