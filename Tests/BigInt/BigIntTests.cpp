#include "BigInt/BFraction.h"
#include "Support/RandomSeed.h"
#include "Support/Test.h"

#include <unordered_set>

namespace orvane {
namespace {

constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
constexpr auto highest = std::numeric_limits<std::int64_t>::max();

BInt power(std::int64_t base, int exponent) {
    BInt result(1);
    for (int i = 0; i < exponent; ++i) result = result * BInt(base);
    return result;
}

TEST(BInt, textsAndLimbs) {
    const auto check = [&](const BInt& value, const char* text, std::size_t limbs) {
        EXPECT_EQ(value.asString(), text);
        EXPECT_EQ(value.magnitude().size(), limbs) << text;
        EXPECT_EQ(value.isNegative(), text[0] == '-');
    };
    check(0, "0", 1);
    check(-7, "-7", 1);
    check(lowest, "-9223372036854775808", 1);
    check(highest, "9223372036854775807", 1);
    check(power(2, 64), "18446744073709551616", 2);
    check(power(10, 30), "1000000000000000000000000000000", 2);
    check(-power(2, 64) + BInt(1), "-18446744073709551615", 1);
    check(power(2, 128) - power(2, 128), "0", 1);
    check(BInt::fromMagnitude(true, {0, 0}), "0", 1);
    check(BInt::fromMagnitude(true, {5, 0, 0}), "-5", 1);
    EXPECT_EQ(BInt(-255).asString(16), "-ff");
    EXPECT_EQ(power(2, 70).asString(16, true), "400000000000000000");
    EXPECT_EQ(BInt(1).shiftedLeft(130), power(2, 130));
    std::int64_t fitted = 0;
    EXPECT_TRUE(BInt(lowest).fits(fitted));
    EXPECT_EQ(fitted, lowest);
    EXPECT_FALSE((-BInt(lowest)).fits(fitted));
}

TEST(BInt, truncatingDivision) {
    for (const auto& [n, d, q, r] : {std::array<std::int64_t, 4>{7, 2, 3, 1},
                                     {-7, 2, -3, -1},
                                     {7, -2, -3, 1},
                                     {-7, -2, 3, -1},
                                     {1, 2, 0, 1},
                                     {-1, 2, 0, -1},
                                     {lowest, -1, lowest, 0}}) {
        const auto [quotient, remainder] = BInt(n).quotientAndRemainder(d);
        EXPECT_EQ(quotient, n == lowest ? -BInt(lowest) : BInt(q)) << n << "/" << d;
        EXPECT_EQ(remainder, BInt(r)) << n << "/" << d;
    }
}

/// The laws of arithmetic, for numbers of one to four limbs; a third of the limbs are 0, 1 or the largest
/// value.
TEST(BInt, keepsTheLaws) {
    const auto seed = test::randomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const auto number = [&] {
        std::vector<std::uint64_t> limbs(1 + random() % 4);
        for (auto& limb : limbs) limb = random() % 3 == 0 ? random() % 3 - 1 : random();
        return BInt::fromMagnitude(random() % 2 == 0, limbs);
    };
    for (int i = 0; i < 200; ++i) {
        const BInt a = number(), b = number(), c = number();
        ASSERT_EQ((a + b) - b, a);
        ASSERT_EQ(a * (b + c), a * b + a * c);
        ASSERT_EQ(a < b, (a - b).isNegative());
        ASSERT_EQ(a == b, (a - b).isZero());
        if (b.isZero()) continue;
        const auto [quotient, remainder] = a.quotientAndRemainder(b);
        ASSERT_EQ(quotient * b + remainder, a);
        ASSERT_LT(remainder.abs(), b.abs());
        ASSERT_TRUE(remainder.isZero() || remainder.isNegative() == a.isNegative());
        if (c.isZero()) continue;
        ASSERT_TRUE(BInt::greatestCommonDivisor(a * c, b * c).quotientAndRemainder(c).second.isZero());
    }
}

TEST(BFraction, isAlwaysNormal) {
    const auto check = [&](const BFraction& value, const char* numerator, const char* denominator) {
        EXPECT_EQ(value.numerator().asString(), numerator);
        EXPECT_EQ(value.denominator().asString(), denominator);
    };
    check({2002, 60000}, "1001", "30000");
    check({3, -6}, "-1", "2");
    check({0, -5}, "0", "1");
    check(BFraction(0.1), "3602879701896397", "36028797018963968");
    check(BFraction(-0.75), "-3", "4");
    check(BFraction(0x1p70), "1180591620717411303424", "1");
    check(BFraction(std::nan("")), "0", "1");
    check(BFraction(1, 3) + BFraction(1, 6), "1", "2");
    check(BFraction(1, 3) - BFraction(1, 3), "0", "1");
    check(BFraction(2, 3) * BFraction(3, 2), "1", "1");
    check(BFraction(1, 2) / BFraction(-1, 4), "-2", "1");
    check(BFraction(-2, 3).invert(), "-3", "2");
    check(BFraction(-2, 3).abs(), "2", "3");
    check(BFraction(lowest, 1) * BFraction(1, lowest), "1", "1");
    check(BFraction(1, highest) + BFraction(1, highest - 1), "18446744073709551613",
          "85070591730234615838173535747377725442");
    EXPECT_LT(BFraction(1001, 30000), BFraction(1, 29));
    EXPECT_LT(BFraction(-1, 2), BFraction::zero());
    EXPECT_GE(BFraction::one(), BFraction(2, 2));
    EXPECT_EQ((std::unordered_set<BFraction>{{1, 2}, {2, 4}, {-1, -2}}).size(), 1U);
}

TEST(BFraction, nearestDouble) {
    EXPECT_EQ(BFraction(1, 3).asDouble(), 1.0 / 3);
    EXPECT_EQ(BFraction(BInt(highest), power(10, 40)).asDouble(), 9.223372036854775807e-22);
    EXPECT_EQ(BFraction(-power(10, 40), BInt(3)).asDouble(), -3.3333333333333333333e39);
    EXPECT_EQ(BFraction(BInt((std::int64_t{1} << 53) + 1), BInt(1)).asDouble(), 0x1p53) << "ties to even";
    EXPECT_EQ(BFraction(power(2, 60) + BInt(129), BInt(1)).asDouble(), 0x1p60 + 256) << "just above the tie";
    EXPECT_EQ(BFraction(BInt(3), power(2, 1075)).asDouble(), 0x1p-1073) << "below the normal range";

    const auto seed = test::randomSeed();
    std::mt19937_64 random(seed);
    for (int i = 0; i < 300; ++i) {
        const double value = std::ldexp(static_cast<double>(static_cast<std::int64_t>(random())),
                                        static_cast<int>(random() % 400) - 200);
        ASSERT_EQ(BFraction(value).asDouble(), value) << "seed " << seed;
    }
}

} // namespace
} // namespace orvane
