#include "model/NumberText.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <sstream>

#include "model/SqlBuffer.h"
#include "model/ValueLiteral.h"
#include "support/NumberLocales.h"

namespace Morvik::sql::tests {

namespace {

// Compares each number's text with that of one default stream, created in the locale under test.
template <typename Number>
class StreamComparison {
public:
    ~StreamComparison() { EXPECT_EQ(m_differing, 0) << "of " << m_compared << " numbers"; }

    void Compare(Number number)
    {
        m_stream.str({});
        m_stream.clear();
        m_stream << number;
        SqlBuffer statement(0);
        const bool appended = AppendNumber(statement, number);
        const std::string text = statement.Release();
        ++m_compared;
        if ((text != m_stream.view() || appended == text.empty()) && ++m_differing <= Shown) {
            ADD_FAILURE() << std::hexfloat << number << " reads as " << text << " and not as " << m_stream.view();
        }
    }

    int Compared() const { return m_compared; }

private:
    static constexpr int Shown = 10;

    std::ostringstream m_stream;
    int m_compared = 0;
    int m_differing = 0;
};

class RandomReals {
public:
    // Random bits: every exponent is equally likely, and infinities and NaNs with every payload occur.
    double OfAnyBits() { return std::bit_cast<double>(m_random()); }

    double Denormal() { return std::copysign(std::bit_cast<double>(m_random() >> 12), Sign()); }

    double InfiniteOrNan() { return std::bit_cast<double>(m_random() | 0x7FF0'0000'0000'0000); }

    // Numbers with all significant digits, from far below to far above the range that is written without an exponent.
    double OfEverydaySize() { return Sign() * std::pow(10.0, Between(-8'000'000, 9'000'000) / 1e6); }

    double OfFewDigits() { return Sign() * Between(0, 9'999'999) * m_powers[Index(-12, 12)]; }

    // The middle between two texts of six digits, as exactly as a double can represent it, or the double next to it.
    double NearAHalf()
    {
        const double half = Sign() * (Between(100'000, 999'999) + 0.5) * m_powers[Index(-300, 300)];
        return Beside(half);
    }

    double NearAPowerOfTen() { return Beside(Sign() * m_powers[Index(-307, 308)]); }

    double NearAPowerOfTwo() { return Beside(Sign() * std::ldexp(1.0, Between(-1074, 1023))); }

private:
    static constexpr int LowestPower = -307;

    int Between(int lowest, int highest)
    {
        const auto count = static_cast<std::uint64_t>(highest - lowest) + 1;
        return lowest + static_cast<int>(m_random() % count);
    }

    std::size_t Index(int lowest, int highest)
    {
        return static_cast<std::size_t>(Between(lowest, highest) - LowestPower);
    }

    double Sign() { return Between(0, 1) == 0 ? 1.0 : -1.0; }

    double Beside(double number)
    {
        constexpr double Infinity = std::numeric_limits<double>::infinity();
        const std::array<double, 3> numbers{std::nextafter(number, -Infinity), number,
                                            std::nextafter(number, Infinity)};
        return numbers[static_cast<std::size_t>(Between(0, 2))];
    }

    static std::array<double, 616> Powers()
    {
        std::array<double, 616> powers{};
        int exponent = LowestPower;
        for (double& power : powers) {
            power = std::stod("1e" + std::to_string(exponent++));
        }
        return powers;
    }

    std::mt19937_64 m_random{20240229};
    std::array<double, 616> m_powers = Powers();
};

class NumberTextDifferentialTest : public testing::TestWithParam<NumberLocale> {
private:
    ScopedGlobalLocale m_locale{GetParam().locale};
};

TEST_P(NumberTextDifferentialTest, RandomRealsReadAsAStreamWritesThem)
{
    constexpr std::array Kinds{&RandomReals::OfAnyBits,       &RandomReals::Denormal,
                               &RandomReals::OfEverydaySize,  &RandomReals::OfFewDigits,
                               &RandomReals::NearAHalf,       &RandomReals::InfiniteOrNan,
                               &RandomReals::NearAPowerOfTen, &RandomReals::NearAPowerOfTwo};
    const int numbers = GetParam().name == "Classic" ? 1'000'000 : 50'000; // only the classic locale has special code
    RandomReals reals;
    StreamComparison<double> comparison;

    while (comparison.Compared() < numbers) {
        for (const auto kind : Kinds) {
            comparison.Compare((reals.*kind)());
        }
    }
}

TEST_P(NumberTextDifferentialTest, RealsReadAsAStreamWritesThemInEveryRoundingMode)
{
    RandomReals reals;
    for (const int rounding : UnusualRoundings) {
        const ScopedRounding rounded(rounding);
        StreamComparison<double> comparison;

        while (comparison.Compared() < 10'000) {
            comparison.Compare(reals.OfEverydaySize());
            comparison.Compare(reals.NearAHalf());
        }
    }
}

TEST_P(NumberTextDifferentialTest, SpecialRealsReadAsAStreamWritesThem)
{
    using Limits = std::numeric_limits<double>;
    StreamComparison<double> comparison;

    for (const double real : {0.0, Limits::denorm_min(), Limits::min(), Limits::max(), Limits::epsilon(),
                              Limits::infinity(), Limits::quiet_NaN(), 0.0001, 0.00001, 0.000099999950, 99999.95,
                              999999.4, 999999.5, 999999.6, 1000000.0, 9007199254740993.0}) {
        comparison.Compare(real);
        comparison.Compare(std::copysign(real, -1.0));
    }
}

TEST_P(NumberTextDifferentialTest, IntegersBesideEveryPowerReadAsAStreamWritesThem)
{
    StreamComparison<std::int32_t> comparison;

    for (const std::int64_t base : {2, 10}) {
        for (std::int64_t power = 1; power <= std::int64_t{UINT32_MAX} + 1; power *= base) {
            for (std::int64_t number = power - 2; number <= power + 2; ++number) {
                comparison.Compare(static_cast<std::int32_t>(number));
                comparison.Compare(static_cast<std::int32_t>(-number));
            }
        }
    }
}

TEST_P(NumberTextDifferentialTest, RandomIntegersReadAsAStreamWritesThem)
{
    std::mt19937 random(20240229);
    StreamComparison<std::int32_t> comparison;

    while (comparison.Compared() < 100'000) {
        comparison.Compare(static_cast<std::int32_t>(static_cast<std::uint32_t>(random()) >> random() % 32));
        comparison.Compare(-static_cast<std::int32_t>(static_cast<std::uint32_t>(random()) >> (random() % 31 + 1)));
    }
}

TEST_P(NumberTextDifferentialTest, RandomTextsReadAsTheirPlainRendering)
{
    static constexpr std::string_view Quotes = "'\"";
    std::mt19937 random(20240229);

    for (int i = 0; i < 20'000; ++i) {
        std::string text;
        std::string expected = "\"";
        for (std::size_t left = random() % 40; left > 0; --left) {
            const char c = random() % 4 == 0 ? Quotes[random() % 2] : static_cast<char>(random() % 256);
            text += c;
            expected.append(Quotes.find(c) == std::string_view::npos ? 1 : 2, c);
        }
        expected += '"';
        SqlBuffer literal(0);

        const bool rendered = ColumnValueAsString({DbTableColumnType::Text, 0, text}, literal);

        ASSERT_TRUE(rendered);
        ASSERT_EQ(literal.Release(), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Locales, NumberTextDifferentialTest, testing::ValuesIn(NumberLocales()),
                         [](const auto& test) { return test.param.name; });

} // namespace

} // namespace Morvik::sql::tests
