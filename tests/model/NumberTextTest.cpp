#include "model/NumberText.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "model/SqlBuffer.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

using Integers = std::numeric_limits<std::int32_t>;

constexpr std::size_t LongestNumber = 13;

// The expected size decides how much memory a statement takes, so the tests compare it exactly.
TEST(NumberTextTest, SizeOfAnIntegerIsItsDigitsOrOneMore)
{
    using Size = std::pair<std::int32_t, std::size_t>;
    for (const auto& [number, size] :
         {Size(0, 1), Size(1, 1), Size(-1, 2), Size(7, 1), Size(8, 2), Size(-9, 3), Size(1000, 4), Size(1024, 4),
          Size(Integers::max(), 10), Size(Integers::min(), 11)}) {
        EXPECT_EQ(NumberSize(number), size) << number;
    }
}

TEST(NumberTextTest, SizeOfADoubleDependsOnItsExponent)
{
    for (const double number : {0.1, 0.15, 0.5, 1.0, 499999.0, 500000.0, 999999.0}) {
        EXPECT_EQ(NumberSize(number), 8U) << number;
        EXPECT_EQ(NumberSize(-number), 9U) << -number;
    }
    for (const double number : {0.0, 0.09999, 1e6, 1e300, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(NumberSize(number), LongestNumber) << number;
        EXPECT_EQ(NumberSize(-number), LongestNumber) << -number;
    }
}

TEST(NumberTextTest, NumbersFitIntoTheBytesOfTheLongestNumber)
{
    const std::string before(100, 'x');
    const auto expectFits = [&](auto number) {
        SqlBuffer text(before.size() + LongestNumber);
        text.Append(before);
        const OomInjector failing(0, FailureExtent::ForEver);
        AppendNumber(text, number);
        EXPECT_FALSE(failing.Fired()) << number;
    };

    expectFits(Integers::min());
    expectFits(-1.5);
    expectFits(-1.23457e+300);
}

// Numbers of common size are written without the standard library's conversion, which takes several times as long.
bool TakesTheShortcut(double number)
{
    SixDigits found{};
    return FindSixDigits(std::abs(number), found);
}

TEST(NumberTextTest, ShortcutWritesNumbersFromOneUpWithoutAnExponent)
{
    for (const double number : {1.0, 1.5, 2.0, 9.0, 9.99999, 12.5, 499999.9, 500000.25, 999999.0, 999999.25}) {
        EXPECT_TRUE(TakesTheShortcut(number)) << number;
        EXPECT_TRUE(TakesTheShortcut(-number)) << -number;
    }
    for (const double power : {10.0, 100.0, 1000.0, 10000.0, 100000.0}) {
        EXPECT_TRUE(TakesTheShortcut(power)) << power;
        EXPECT_TRUE(TakesTheShortcut(std::nextafter(power, 0.0) / 2)) << power;
    }
}

// Rounding 9.999999 to six digits gives 10.0000, whose exponent is larger by one.
TEST(NumberTextTest, ShortcutIsNotTakenForOtherOrUncertainNumbers)
{
    for (const double number :
         {0.0, 0.5, 0.999, 9.999999, 99999.99, 999999.5, 1000000.0, 1e100, HUGE_VAL, std::nan("")}) {
        EXPECT_FALSE(TakesTheShortcut(number)) << number;
    }
    for (const double half : {123456.5, 200000.5}) {
        EXPECT_FALSE(TakesTheShortcut(half)) << half;
        for (const double side : {-1.0, 1.0}) {
            EXPECT_FALSE(TakesTheShortcut(half + side * 0.8e-9)) << half;
            EXPECT_TRUE(TakesTheShortcut(half + side * 1.2e-9)) << half;
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
