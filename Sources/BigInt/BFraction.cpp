#include "BigInt/BFraction.h"

#include <cassert>
#include <cmath>

namespace orvane {

namespace {

constexpr int mantissaBits = 53;

} // namespace

BFraction::BFraction(BInt numerator, BInt denominator)
    : numerator_(std::move(numerator)), denominator_(std::move(denominator)) {
    assert(!denominator_.isZero());
    normalize();
}

BFraction::BFraction(double value) : denominator_(1) {
    if (!std::isfinite(value)) return;
    int exponent = 0;
    const double mantissa = std::frexp(value, &exponent);
    numerator_ = BInt(static_cast<std::int64_t>(std::ldexp(mantissa, mantissaBits)));
    exponent -= mantissaBits;
    if (exponent >= 0)
        numerator_ = numerator_.shiftedLeft(static_cast<std::size_t>(exponent));
    else
        denominator_ = BInt(1).shiftedLeft(static_cast<std::size_t>(-exponent));
    normalize();
}

const BFraction& BFraction::zero() {
    static const BFraction value;
    return value;
}

const BFraction& BFraction::one() {
    static const BFraction value(1, 1);
    return value;
}

void BFraction::normalize() {
    if (denominator_.isNegative()) {
        numerator_ = -numerator_;
        denominator_ = -denominator_;
    }
    const BInt divisor = BInt::greatestCommonDivisor(numerator_, denominator_);
    if (divisor == BInt(1)) return;
    numerator_ = numerator_.quotientAndRemainder(divisor).first;
    denominator_ = denominator_.quotientAndRemainder(divisor).first;
}

BFraction operator+(const BFraction& a, const BFraction& b) {
    if (a.denominator_ == b.denominator_) return {a.numerator_ + b.numerator_, a.denominator_};
    return {a.numerator_ * b.denominator_ + b.numerator_ * a.denominator_, a.denominator_ * b.denominator_};
}

BFraction operator-(const BFraction& a, const BFraction& b) { return a + -b; }

BFraction operator*(const BFraction& a, const BFraction& b) {
    return {a.numerator_ * b.numerator_, a.denominator_ * b.denominator_};
}

BFraction operator/(const BFraction& a, const BFraction& b) {
    return {a.numerator_ * b.denominator_, a.denominator_ * b.numerator_};
}

BFraction BFraction::operator-() const {
    BFraction result(*this);
    result.numerator_ = -result.numerator_;
    return result;
}

BFraction BFraction::abs() const { return numerator_.isNegative() ? -*this : *this; }

BFraction BFraction::invert() const { return {denominator_, numerator_}; }

double BFraction::asDouble() const {
    if (numerator_.bitWidth() <= mantissaBits && denominator_.bitWidth() <= mantissaBits) {
        std::int64_t n = 0, d = 1;
        numerator_.fits(n);
        denominator_.fits(d);
        return static_cast<double>(n) / static_cast<double>(d); // both exact, so one correct rounding
    }
    // A quotient of 62 or 63 bits, with the remainder kept as its lowest bit, so that the only rounding is
    // that to 53 bits.
    constexpr int quotientBits = 62;
    const int shift =
        quotientBits - static_cast<int>(numerator_.bitWidth()) + static_cast<int>(denominator_.bitWidth());
    const BInt n =
        shift > 0 ? numerator_.abs().shiftedLeft(static_cast<std::size_t>(shift)) : numerator_.abs();
    const BInt d = shift < 0 ? denominator_.shiftedLeft(static_cast<std::size_t>(-shift)) : denominator_;
    const auto [quotient, remainder] = n.quotientAndRemainder(d);
    std::int64_t bits = 0;
    quotient.fits(bits);
    if (!remainder.isZero()) bits |= 1;
    const double magnitude = std::ldexp(static_cast<double>(bits), -shift);
    return numerator_.isNegative() ? -magnitude : magnitude;
}

std::strong_ordering operator<=>(const BFraction& a, const BFraction& b) {
    if (a.denominator_ == b.denominator_) return a.numerator_ <=> b.numerator_;
    return a.numerator_ * b.denominator_ <=> b.numerator_ * a.denominator_;
}

} // namespace orvane
