#include "OrvaneSyncApp/Controllers/ShuttleSpeed.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane {

namespace {

constexpr std::array<float, 13> shuttleRates{-32, -16, -8, -4, -2, -1, 0, 1, 2, 4, 8, 16, 32};

} // namespace

float ShuttleSpeed::rate() const { return shuttleRates[index_]; }

ShuttleSpeed ShuttleSpeed::after(bool isForward) const {
    ShuttleSpeed next = *this;
    if (isForward)
        next.index_ = index_ < rest ? rest + 1 : std::min(index_ + 1, shuttleRates.size() - 1);
    else
        next.index_ = index_ > rest ? rest - 1 : index_ - std::min<std::size_t>(index_, 1);
    return next;
}

std::string ShuttleSpeed::label() const {
    if (rate() == 0) return "STOP";
    const std::string arrow = rate() > 0 ? "▶" : "◀";
    const int magnitude = static_cast<int>(std::abs(rate()));
    return magnitude == 1 ? arrow : arrow + " " + std::to_string(magnitude) + "×";
}

} // namespace orvane
