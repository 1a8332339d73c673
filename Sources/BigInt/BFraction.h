#pragma once

#include "BigInt/BInt.h"

#include <compare>
#include <functional>

namespace orvane {

/// An exact rational number, always in lowest terms with a positive denominator; zero is 0/1.
class BFraction {
  public:
    BFraction() : denominator_(1) {}
    /// A denominator of zero is a bug of the caller.
    BFraction(BInt numerator, BInt denominator);
    /// The exact value of the float. Values that are not finite give zero.
    explicit BFraction(double value);

    static const BFraction& zero();
    static const BFraction& one();

    const BInt& numerator() const { return numerator_; } ///< carries the sign
    const BInt& denominator() const { return denominator_; }

    friend BFraction operator+(const BFraction& a, const BFraction& b);
    friend BFraction operator-(const BFraction& a, const BFraction& b);
    friend BFraction operator*(const BFraction& a, const BFraction& b);
    friend BFraction operator/(const BFraction& a, const BFraction& b);
    BFraction operator-() const;
    BFraction abs() const;
    /// Numerator and denominator swapped; the sign stays on the numerator. Zero has no inverse: a bug of the
    /// caller.
    BFraction invert() const;

    /// The nearest 64-bit float, ties to even; below 2^-1022 one of the two nearest.
    double asDouble() const;

    friend bool operator==(const BFraction&, const BFraction&) = default;
    friend std::strong_ordering operator<=>(const BFraction& a, const BFraction& b);
    std::size_t hash() const { return numerator_.hash() * 31U + denominator_.hash(); }

  private:
    void normalize();

    BInt numerator_;
    BInt denominator_;
};

} // namespace orvane

template <>
struct std::hash<orvane::BFraction> {
    std::size_t operator()(const orvane::BFraction& value) const noexcept { return value.hash(); }
};
