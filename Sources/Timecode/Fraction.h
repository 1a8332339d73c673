#pragma once

#include <cstdint>
#include <optional>

namespace orvane {

/// An immutable rational number. Equal when the reduced forms are identical, so 2400/100 equals 24/1.
class Fraction {
  public:
    constexpr Fraction(std::int64_t numerator, std::int64_t denominator)
        : numerator_(numerator), denominator_(denominator) {}

    constexpr std::int64_t numerator() const { return numerator_; }
    constexpr std::int64_t denominator() const { return denominator_; }
    constexpr double doubleValue() const {
        return static_cast<double>(numerator_) / static_cast<double>(denominator_);
    }
    /// In lowest terms, with a positive denominator. A denominator of 0 is kept.
    Fraction reduced() const;

    friend bool operator==(const Fraction& a, const Fraction& b);

  private:
    std::int64_t numerator_;
    std::int64_t denominator_;
};

} // namespace orvane
