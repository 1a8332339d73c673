#include "BigInt/BInt.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <limits>
#include <numeric>

namespace orvane {

namespace {

using Limbs = std::vector<std::uint64_t>;
__extension__ using Wide = unsigned __int128;

constexpr std::size_t limbBits = 64;

/// Removes high zero limbs; zero keeps one limb.
void trim(Limbs& limbs) {
    while (limbs.size() > 1 && limbs.back() == 0) limbs.pop_back();
}

std::strong_ordering compare(const Limbs& a, const Limbs& b) {
    if (a.size() != b.size()) return a.size() <=> b.size();
    for (std::size_t i = a.size(); i-- > 0;)
        if (a[i] != b[i]) return a[i] <=> b[i];
    return std::strong_ordering::equal;
}

Limbs sum(const Limbs& a, const Limbs& b) {
    Limbs result(std::max(a.size(), b.size()) + 1);
    Wide carry = 0;
    for (std::size_t i = 0; i < result.size(); ++i) {
        carry += (i < a.size() ? a[i] : 0);
        carry += (i < b.size() ? b[i] : 0);
        result[i] = static_cast<std::uint64_t>(carry);
        carry >>= limbBits;
    }
    trim(result);
    return result;
}

/// a - b; a is not below b.
Limbs difference(const Limbs& a, const Limbs& b) {
    Limbs result(a.size());
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const Wide subtrahend = Wide{i < b.size() ? b[i] : 0} + borrow;
        borrow = subtrahend > a[i] ? 1 : 0;
        result[i] = static_cast<std::uint64_t>(a[i] - subtrahend);
    }
    trim(result);
    return result;
}

Limbs product(const Limbs& a, const Limbs& b) {
    Limbs result(a.size() + b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::uint64_t carry = 0;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const Wide value = Wide{a[i]} * b[j] + result[i + j] + carry;
            result[i + j] = static_cast<std::uint64_t>(value);
            carry = static_cast<std::uint64_t>(value >> limbBits);
        }
        result[i + b.size()] = carry;
    }
    trim(result);
    return result;
}

void shiftInBit(Limbs& limbs, bool bit) {
    std::uint64_t carry = bit ? 1 : 0;
    for (auto& limb : limbs) {
        const std::uint64_t next = limb >> (limbBits - 1);
        limb = (limb << 1U) | carry;
        carry = next;
    }
    if (carry != 0) limbs.push_back(carry);
}

/// Long division bit by bit: simple, as speed does not matter here.
std::pair<Limbs, Limbs> divide(const Limbs& dividend, const Limbs& divisor) {
    Limbs quotient(dividend.size());
    Limbs remainder{0};
    for (std::size_t bit = dividend.size() * limbBits; bit-- > 0;) {
        const std::uint64_t mask = std::uint64_t{1} << (bit % limbBits);
        shiftInBit(remainder, (dividend[bit / limbBits] & mask) != 0);
        if (compare(remainder, divisor) < 0) continue;
        remainder = difference(remainder, divisor);
        quotient[bit / limbBits] |= mask;
    }
    trim(quotient);
    return {std::move(quotient), std::move(remainder)};
}

std::uint64_t absoluteValue(std::int64_t value) {
    return value < 0 ? ~static_cast<std::uint64_t>(value) + 1 : static_cast<std::uint64_t>(value);
}

} // namespace

BInt::BInt(std::int64_t value) : low_(absoluteValue(value)), negative_(value < 0) {}

BInt::BInt(const BInt& other)
    : low_(other.low_), high_(other.high_ ? std::make_unique<Limbs>(*other.high_) : nullptr),
      negative_(other.negative_) {}

BInt& BInt::operator=(const BInt& other) {
    if (this != &other) *this = BInt(other);
    return *this;
}

BInt BInt::fromMagnitude(bool negative, Limbs limbs) {
    trim(limbs);
    BInt result;
    result.low_ = limbs.front();
    if (limbs.size() > 1) result.high_ = std::make_unique<Limbs>(limbs.begin() + 1, limbs.end());
    result.negative_ = negative && !result.isZero();
    return result;
}

Limbs BInt::magnitude() const {
    Limbs limbs{low_};
    if (high_) limbs.insert(limbs.end(), high_->begin(), high_->end());
    return limbs;
}

std::size_t BInt::bitWidth() const {
    if (isSmall()) return std::bit_width(low_);
    return high_->size() * limbBits + std::bit_width(high_->back());
}

BInt BInt::operator-() const {
    BInt result(*this);
    result.negative_ = !negative_ && !isZero();
    return result;
}

BInt BInt::abs() const { return negative_ ? -*this : *this; }

BInt operator+(const BInt& a, const BInt& b) {
    if (a.negative_ == b.negative_) {
        std::uint64_t small = 0;
        if (a.isSmall() && b.isSmall() && !__builtin_add_overflow(a.low_, b.low_, &small)) {
            BInt result;
            result.low_ = small;
            result.negative_ = a.negative_;
            return result;
        }
        return BInt::fromMagnitude(a.negative_, sum(a.magnitude(), b.magnitude()));
    }
    if (a.isSmall() && b.isSmall()) {
        BInt result;
        const bool aLarger = a.low_ >= b.low_;
        result.low_ = aLarger ? a.low_ - b.low_ : b.low_ - a.low_;
        result.negative_ = result.low_ != 0 && (aLarger ? a.negative_ : b.negative_);
        return result;
    }
    const Limbs x = a.magnitude(), y = b.magnitude();
    return compare(x, y) >= 0 ? BInt::fromMagnitude(a.negative_, difference(x, y))
                              : BInt::fromMagnitude(b.negative_, difference(y, x));
}

BInt operator*(const BInt& a, const BInt& b) {
    const bool negative = a.negative_ != b.negative_;
    if (a.isSmall() && b.isSmall()) {
        const Wide wide = Wide{a.low_} * b.low_;
        if ((wide >> limbBits) == 0) {
            BInt result;
            result.low_ = static_cast<std::uint64_t>(wide);
            result.negative_ = negative && result.low_ != 0;
            return result;
        }
    }
    return BInt::fromMagnitude(negative, product(a.magnitude(), b.magnitude()));
}

BInt BInt::shiftedLeft(std::size_t bits) const {
    Limbs limbs(bits / limbBits, 0);
    const Limbs own = magnitude();
    limbs.insert(limbs.end(), own.begin(), own.end());
    for (std::size_t i = 0; i < bits % limbBits; ++i) shiftInBit(limbs, false);
    return fromMagnitude(negative_, std::move(limbs));
}

std::pair<BInt, BInt> BInt::quotientAndRemainder(const BInt& divisor) const {
    assert(!divisor.isZero());
    const bool negative = negative_ != divisor.negative_;
    if (isSmall() && divisor.isSmall()) {
        BInt quotient, remainder;
        quotient.low_ = low_ / divisor.low_;
        quotient.negative_ = negative && quotient.low_ != 0;
        remainder.low_ = low_ % divisor.low_;
        remainder.negative_ = negative_ && remainder.low_ != 0;
        return {std::move(quotient), std::move(remainder)};
    }
    auto [quotient, remainder] = divide(magnitude(), divisor.magnitude());
    return {fromMagnitude(negative, std::move(quotient)), fromMagnitude(negative_, std::move(remainder))};
}

BInt BInt::greatestCommonDivisor(BInt a, BInt b) {
    a.negative_ = b.negative_ = false;
    while (!b.isZero()) {
        if (a.isSmall() && b.isSmall()) {
            a.low_ = std::gcd(a.low_, b.low_);
            return a;
        }
        BInt remainder = a.quotientAndRemainder(b).second;
        a = std::move(b);
        b = std::move(remainder);
    }
    return a;
}

std::string BInt::asString(int radix, bool uppercase) const {
    const std::string_view digits =
        uppercase ? "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ" : "0123456789abcdefghijklmnopqrstuvwxyz";
    assert(radix >= 2 && radix <= 36);
    std::string text;
    BInt rest = abs();
    const auto base = static_cast<std::uint64_t>(radix);
    while (!rest.isSmall()) {
        auto [quotient, digit] = rest.quotientAndRemainder(radix);
        text += digits[digit.low_];
        rest = std::move(quotient);
    }
    for (std::uint64_t small = rest.low_; small != 0 || text.empty(); small /= base)
        text += digits[small % base];
    if (negative_) text += '-';
    std::reverse(text.begin(), text.end());
    return text;
}

bool BInt::fits(std::int64_t& value) const {
    constexpr std::uint64_t limit = std::uint64_t{1} << 63U;
    if (!isSmall() || low_ > limit || (low_ == limit && !negative_)) return false;
    value = static_cast<std::int64_t>(negative_ ? ~low_ + 1 : low_);
    return true;
}

bool operator==(const BInt& a, const BInt& b) {
    if (a.low_ != b.low_ || a.negative_ != b.negative_ || a.isSmall() != b.isSmall()) return false;
    return a.isSmall() || *a.high_ == *b.high_;
}

std::strong_ordering operator<=>(const BInt& a, const BInt& b) {
    if (a.negative_ != b.negative_)
        return a.negative_ ? std::strong_ordering::less : std::strong_ordering::greater;
    const auto magnitudes =
        a.isSmall() && b.isSmall() ? a.low_ <=> b.low_ : compare(a.magnitude(), b.magnitude());
    return a.negative_ ? 0 <=> magnitudes : magnitudes;
}

std::size_t BInt::hash() const {
    std::size_t value = std::hash<std::uint64_t>{}(low_) ^ (negative_ ? 0x9E3779B97F4A7C15U : 0U);
    if (high_)
        for (const auto limb : *high_) value = value * 31U + std::hash<std::uint64_t>{}(limb);
    return value;
}

} // namespace orvane
