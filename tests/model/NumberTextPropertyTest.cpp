#include "model/NumberText.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

#include "model/SqlBuffer.h"
#include "support/FuzzInput.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

constexpr int NumbersPerSeed = 50000;

// The text that a default stream writes for a double according to the C++ standard, without the cost of a stream.
std::string Printed(double number)
{
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), "%g", number);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string Printed(std::int32_t number)
{
    return std::to_string(number);
}

template <typename Number>
void ExpectPrinted(Number number)
{
    const std::string printed = Printed(number);
    SqlBuffer text(0);
    AppendNumber(text, number);
    ASSERT_EQ(text.Release(), printed);
    ASSERT_GE(NumberSize(number), printed.size()) << printed;
    ASSERT_LE(NumberSize(number), 13U) << printed;
}

std::int32_t RandomInteger(FuzzInput& choices)
{
    return static_cast<std::int32_t>(choices.Bits()) >> choices.Below(32);
}

// Six or seven digits and half a unit of the last place, or slightly more or less, where rounding decides.
double NextToAHalf(FuzzInput& choices)
{
    const double digits = static_cast<double>(100000 + choices.Below(9900000)) + 0.5;
    double number = digits * std::pow(10.0, static_cast<double>(choices.Below(16)) - 8.0);
    for (std::size_t steps = choices.Below(4); steps > 0; --steps) {
        number = std::nextafter(number, choices.OneIn(2) ? 0.0 : std::numeric_limits<double>::infinity());
    }
    return choices.OneIn(2) ? number : -number;
}

double AnyBits(FuzzInput& choices)
{
    const std::uint64_t upper = choices.Bits();
    return std::bit_cast<double>(upper << 32 | choices.Bits());
}

// A number with few digits, as applications write.
double FewDigits(FuzzInput& choices)
{
    return static_cast<double>(RandomInteger(choices)) / std::pow(10.0, static_cast<double>(choices.Below(10)));
}

// A number just below, equal to or just above a power of ten.
double NextToAPowerOfTen(FuzzInput& choices)
{
    double number = std::pow(10.0, static_cast<double>(choices.Below(18)) - 8.0);
    number *= 1.0 - static_cast<double>(choices.Below(200)) * 1e-8 + 1e-6;
    return choices.OneIn(2) ? number : -number;
}

template <typename Draw>
void ExpectPrintedNumbers(Draw draw)
{
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        FuzzInput choices(seed);
        for (int i = 0; i < NumbersPerSeed; ++i) {
            ASSERT_NO_FATAL_FAILURE(ExpectPrinted(draw(choices)));
        }
    }
}

TEST(NumberTextPropertyTest, IntegersReadAsPrinted)
{
    ExpectPrintedNumbers(RandomInteger);
}

TEST(NumberTextPropertyTest, RealsOfAnyBitsReadAsPrinted)
{
    ExpectPrintedNumbers(AnyBits);
}

TEST(NumberTextPropertyTest, RealsOfFewDigitsReadAsPrinted)
{
    ExpectPrintedNumbers(FewDigits);
}

TEST(NumberTextPropertyTest, RealsNextToAHalfOfTheLastDigitReadAsPrinted)
{
    ExpectPrintedNumbers(NextToAHalf);
}

TEST(NumberTextPropertyTest, RealsNextToAPowerOfTenReadAsPrinted)
{
    ExpectPrintedNumbers(NextToAPowerOfTen);
}

TEST(NumberTextPropertyTest, IntegersNextToAPowerOfTenReadAsPrinted)
{
    for (std::int32_t power = 1; power <= 100000000; power *= 10) {
        for (const std::int32_t integer : {power - 1, power, power * 10 - 1, -power, 1 - power, 1 - power * 10}) {
            ASSERT_NO_FATAL_FAILURE(ExpectPrinted(integer));
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
