#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// An arbitrary-precision signed integer. A magnitude of up to 64 bits, enough for the times of a document in
/// practice, is stored in the object itself; a larger one allocates memory.
class BInt {
  public:
    BInt() = default;
    BInt(std::int64_t value);
    BInt(const BInt& other);
    BInt& operator=(const BInt& other);
    BInt(BInt&&) noexcept = default;
    BInt& operator=(BInt&&) noexcept = default;
    ~BInt() = default;

    /// Lowest limb first, without high zero limbs. A magnitude of zero gives zero.
    static BInt fromMagnitude(bool negative, std::vector<std::uint64_t> limbs);

    bool isNegative() const { return negative_; } ///< zero is not negative
    bool isZero() const { return low_ == 0 && !high_; }
    /// The absolute value: lowest limb first, at least one limb, no high zero limb.
    std::vector<std::uint64_t> magnitude() const;
    std::size_t bitWidth() const;

    BInt operator-() const;
    BInt abs() const;
    friend BInt operator+(const BInt& a, const BInt& b);
    friend BInt operator-(const BInt& a, const BInt& b) { return a + -b; }
    friend BInt operator*(const BInt& a, const BInt& b);
    BInt shiftedLeft(std::size_t bits) const;

    /// Truncating division; the remainder takes the dividend's sign. Dividing by zero is a bug of the caller.
    std::pair<BInt, BInt> quotientAndRemainder(const BInt& divisor) const;
    static BInt greatestCommonDivisor(BInt a, BInt b);

    /// Digits in radix 2 to 36, with "-" before negative values.
    std::string asString(int radix = 10, bool uppercase = false) const;
    /// True, with the value, when it fits a signed 64-bit integer.
    bool fits(std::int64_t& value) const;

    friend bool operator==(const BInt& a, const BInt& b);
    friend std::strong_ordering operator<=>(const BInt& a, const BInt& b);
    std::size_t hash() const;

  private:
    bool isSmall() const { return !high_; }

    std::uint64_t low_ = 0;
    std::unique_ptr<std::vector<std::uint64_t>> high_; ///< limbs above the lowest; null when there are none
    bool negative_ = false;
};

} // namespace orvane

template <>
struct std::hash<orvane::BInt> {
    std::size_t operator()(const orvane::BInt& value) const noexcept { return value.hash(); }
};
