#include "model/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>
#include <vector>

#include "model/SqlBuffer.h"
#include "support/NumberLocales.h"

namespace Morvik::sql::tests {

namespace {

template <typename Number>
std::string Appended(Number number)
{
    SqlBuffer text(0);
    text.Append('=');
    AppendNumber(text, number);
    return text.Release();
}

template <typename Number>
std::string Streamed(Number number)
{
    std::ostringstream stream;
    stream << '=' << number;
    return stream.str();
}

template <typename Number>
void ExpectStreamedText(const std::vector<Number>& numbers)
{
    for (const Number number : numbers) {
        EXPECT_EQ(Appended(number), Streamed(number));
    }
}

const std::vector<std::int32_t> Integers{0, 1, -1, 9, 10, 999, 1000, -1000, 1234567, INT32_MAX, INT32_MIN};
const std::vector<double> Reals{0.0,
                                1.0,
                                9.999995,
                                9.999994999,
                                99999.95,
                                999999.0,
                                0.99999949,
                                0.9999995,
                                2.000005,
                                1.0000005,
                                12.5,
                                100000.5,
                                100001.5,
                                7.0 / 3,
                                -7.0 / 3,
                                -0.0,
                                0.1,
                                3.14159265,
                                100.0,
                                123456.0,
                                999999.5,
                                999999.4,
                                1234567.0,
                                0.0001,
                                0.00001,
                                9007199254740993.0,
                                std::numeric_limits<double>::max(),
                                std::numeric_limits<double>::lowest(),
                                std::numeric_limits<double>::min(),
                                std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN(),
                                std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0)};

TEST(NumberTextTest, WritesWhatAStreamWritesInTheClassicLocale)
{
    ExpectStreamedText(Integers);
    ExpectStreamedText(Reals);
}

TEST(NumberTextTest, WritesWhatAStreamWritesWithADecimalCommaAndDigitGroups)
{
    const ScopedGlobalLocale locale;

    ExpectStreamedText(Integers);
    ExpectStreamedText(Reals);
    EXPECT_EQ(Appended(std::int32_t{1234567}), "=1.234.567");
    EXPECT_EQ(Appended(0.5), "=0,5");
}

TEST(NumberTextTest, SizesAreNeverTooSmallInTheClassicLocale)
{
    for (const std::int32_t number : Integers) {
        EXPECT_GE(NumberSize(number), Streamed(number).size() - 1) << number;
        EXPECT_LE(NumberSize(number), Streamed(number).size()) << number;
    }
    for (const double number : Reals) {
        EXPECT_GE(NumberSize(number), Streamed(number).size() - 1) << number;
        EXPECT_LE(NumberSize(number), 13U) << number;
    }
}

TEST(NumberTextTest, FollowsTheLocaleOfTheMoment)
{
    EXPECT_EQ(Appended(0.5), "=0.5");
    {
        const ScopedGlobalLocale locale;
        EXPECT_EQ(Appended(0.5), "=0,5");
    }
    EXPECT_EQ(Appended(0.5), "=0.5");
}

TEST(NumberTextTest, FollowsTheRoundingModeOfTheMoment)
{
    EXPECT_EQ(Appended(2.0000001), "=2");
    {
        const ScopedRounding upward(FE_UPWARD);
        EXPECT_EQ(Appended(2.0000001), "=2.00001");
        EXPECT_EQ(Appended(-2.0000009), "=-2");
    }
    EXPECT_EQ(Appended(2.0000001), "=2");
}

} // namespace

} // namespace Morvik::sql::tests
