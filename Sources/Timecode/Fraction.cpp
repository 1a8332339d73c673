#include "Timecode/Fraction.h"

#include <limits>
#include <numeric>

namespace orvane {

Fraction Fraction::reduced() const {
    constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
    // The magnitude of the lowest value does not fit; no rate comes close to it.
    if (denominator_ == 0 || numerator_ == lowest || denominator_ == lowest) return *this;
    const std::int64_t divisor = std::gcd(numerator_, denominator_) * (denominator_ < 0 ? -1 : 1);
    return {numerator_ / divisor, denominator_ / divisor};
}

bool operator==(const Fraction& a, const Fraction& b) {
    const Fraction x = a.reduced(), y = b.reduced();
    return x.numerator_ == y.numerator_ && x.denominator_ == y.denominator_;
}

} // namespace orvane
