#include "model/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Morvik::sql::tests {

namespace {

// Numbers of common size are written without the standard library's conversion, which takes several times as long.
bool TakesTheShortcut(double number)
{
    SixDigits found{};
    return FindSixDigits(std::abs(number), found);
}

TEST(NumberTextShortcutTest, ServesNumbersWithoutAnExponentFromOneUp)
{
    for (const double number : {1.0, 1.5, 2.0, 9.0, 12.5, 499999.9, 500000.25, 999999.0, 999999.25}) {
        EXPECT_TRUE(TakesTheShortcut(number)) << number;
        EXPECT_TRUE(TakesTheShortcut(-number)) << -number;
    }
    for (const double power : {10.0, 100.0, 1000.0, 10000.0, 100000.0}) {
        EXPECT_TRUE(TakesTheShortcut(power)) << power;
        EXPECT_TRUE(TakesTheShortcut(std::nextafter(power, 0.0) / 2)) << power;
    }
}

TEST(NumberTextShortcutTest, LeavesTheRestToTheStandardLibrary)
{
    for (const double number : {0.0, 0.5, 0.999, 999999.5, 1000000.0, 1e100, HUGE_VAL, std::nan("")}) {
        EXPECT_FALSE(TakesTheShortcut(number)) << number;
    }
}

TEST(NumberTextShortcutTest, LeavesWhatIsCloseToAHalfOfTheLastDigitToTheStandardLibrary)
{
    for (const double half : {123456.5, 200000.5}) {
        EXPECT_FALSE(TakesTheShortcut(half)) << half;
        for (const double side : {-1.0, 1.0}) {
            EXPECT_FALSE(TakesTheShortcut(half + side * 0.8e-9)) << half;
            EXPECT_TRUE(TakesTheShortcut(half + side * 1.2e-9)) << half;
        }
    }
}

// 9.999999 becomes 10.0000, whose first digit has the next higher exponent.
TEST(NumberTextShortcutTest, LeavesWhatRoundsToThePowerOfTenAboveToTheStandardLibrary)
{
    for (const double number : {9.999999, 99999.99}) {
        EXPECT_FALSE(TakesTheShortcut(number)) << number;
    }
    EXPECT_TRUE(TakesTheShortcut(9.99999));
}

} // namespace

} // namespace Morvik::sql::tests
