#include "model/NumberText.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "model/SqlBuffer.h"
#include "support/NumberLocales.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

// Compares each number's text with that of one default stream, created in the locale under test. If the text is written
// without a stream, the expected size must be enough for it.
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
        const std::string text = statement.Text();
        const std::size_t size = NumberSize(number);
        const bool fits = !m_plain || (size >= text.size() && size <= LargestSize(text.size()));
        ++m_compared;
        if ((text != m_stream.view() || appended == text.empty() || !fits) && ++m_differing <= Shown) {
            ADD_FAILURE() << std::hexfloat << number << " reads as " << text << " and not as " << m_stream.view()
                          << ", expected size " << size;
        }
    }

    int Compared() const { return m_compared; }

private:
    static constexpr int Shown = 10;

    static std::size_t LargestSize(std::size_t length) { return std::is_integral_v<Number> ? length + 1 : 13; }

    const bool m_plain = SqlBuffer(0).HasPlainNumbers();
    std::ostringstream m_stream;
    int m_compared = 0;
    int m_differing = 0;
};

class RandomReals {
public:
    explicit RandomReals(std::uint64_t seed) : m_random(seed) {}

    // Random bits: every exponent is equally likely, and infinities and NaNs with every payload occur.
    double OfAnyBits() { return std::bit_cast<double>(m_random()); }

    double Denormal() { return std::copysign(std::bit_cast<double>(m_random() >> 12), Sign()); }

    double InfiniteOrNan() { return std::bit_cast<double>(m_random() | 0x7FF0'0000'0000'0000); }

    // Numbers with all significant digits, from far below to far above the range that is written without an exponent.
    double OfEverydaySize() { return Sign() * std::pow(10.0, Between(-8'000'000, 9'000'000) / 1e6); }

    double OfFewDigits() { return Sign() * Between(0, 9'999'999) * PowerOfTen(-12, 12); }

    // The middle between two numbers of six digits, as exactly as a double can represent it, or a double close to it.
    double NearAHalf() { return BesideAHalf(-300, 300); }
    double NearAHalfOfEverydaySize() { return BesideAHalf(-8, 7); }

    double NearAPowerOfTen() { return Beside(Sign() * PowerOfTen(-307, 308)); }

    // Numbers just above and below a power of ten; most of them round to it.
    double RoundedToAPowerOfTen() { return Sign() * PowerOfTen(-8, 9) * (1.0 + Between(-100, 100) * 1e-8); }

    double NearAPowerOfTwo() { return Beside(Sign() * std::ldexp(1.0, Between(-1074, 1023))); }

private:
    int Between(int lowest, int highest)
    {
        const auto count = static_cast<std::uint64_t>(highest - lowest) + 1;
        return lowest + static_cast<int>(m_random() % count);
    }

    double PowerOfTen(int lowest, int highest) { return std::pow(10.0, Between(lowest, highest)); }

    double Sign() { return Between(0, 1) == 0 ? 1.0 : -1.0; }

    double BesideAHalf(int lowestPower, int highestPower)
    {
        return Beside(Sign() * (Between(100'000, 999'999) + 0.5) * PowerOfTen(lowestPower, highestPower));
    }

    // The number, or one that is at most two steps away.
    double Beside(double number)
    {
        const double end = Sign() * std::numeric_limits<double>::infinity();
        for (int steps = Between(0, 2); steps > 0; --steps) {
            number = std::nextafter(number, end);
        }
        return number;
    }

    std::mt19937_64 m_random;
};

class NumberTextDifferentialTest : public testing::TestWithParam<NumberLocale> {
private:
    ScopedGlobalLocale m_locale{GetParam().locale};
};

TEST_P(NumberTextDifferentialTest, RandomRealsEqualStreamText)
{
    constexpr std::array Kinds{&RandomReals::OfAnyBits,       &RandomReals::Denormal,
                               &RandomReals::OfEverydaySize,  &RandomReals::OfFewDigits,
                               &RandomReals::NearAHalf,       &RandomReals::NearAHalfOfEverydaySize,
                               &RandomReals::NearAPowerOfTen, &RandomReals::RoundedToAPowerOfTen,
                               &RandomReals::NearAPowerOfTwo, &RandomReals::InfiniteOrNan};
    const int numbers = GetParam().name == "Classic" ? 1'250'000 : 50'000; // only the classic locale has special code
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        RandomReals reals(seed);
        StreamComparison<double> comparison;

        while (comparison.Compared() < numbers) {
            for (const auto kind : Kinds) {
                comparison.Compare((reals.*kind)());
            }
        }
    }
}

TEST_P(NumberTextDifferentialTest, RealsEqualStreamTextInEveryRoundingMode)
{
    RandomReals reals(TestSeeds().back());
    for (const int rounding : UnusualRoundings) {
        const ScopedRounding rounded(rounding);
        StreamComparison<double> comparison;

        while (comparison.Compared() < 10'000) {
            comparison.Compare(reals.OfEverydaySize());
            comparison.Compare(reals.NearAHalf());
        }
    }
}

TEST_P(NumberTextDifferentialTest, RandomIntegersEqualStreamText)
{
    std::mt19937 random(static_cast<std::mt19937::result_type>(TestSeeds().back()));
    StreamComparison<std::int32_t> comparison;

    while (comparison.Compared() < 100'000) {
        comparison.Compare(static_cast<std::int32_t>(random()) >> random() % 32);
    }
}

// These tests use few numbers, so that they also run under valgrind.
using NumberTextLocaleTest = NumberTextDifferentialTest;

TEST_P(NumberTextLocaleTest, SpecialRealsEqualStreamText)
{
    using Limits = std::numeric_limits<double>;
    StreamComparison<double> comparison;

    const auto compareBothSigns = [&](std::initializer_list<double> reals) {
        for (const double real : reals) {
            comparison.Compare(real);
            comparison.Compare(-real);
        }
    };

    compareBothSigns({Limits::denorm_min(), Limits::min(), Limits::max(), Limits::epsilon(), Limits::infinity(),
                      Limits::quiet_NaN(), 7.0 / 3});
    compareBothSigns({0.0, 0.00001, 0.000099999950, 0.0001, 0.1, 0.5, 0.99999949, 0.9999995, 1.0, 1.0000005, 2.000005,
                      3.14159265, 9.999994999, 9.999995, 12.5, 100.0, 99999.95});
    compareBothSigns({100000.5, 100001.5, 123456.0, 999999.0, 999999.4, 999999.5, 999999.6, 1000000.0, 1234567.0,
                      1234567.5, 9007199254740993.0});
}

TEST_P(NumberTextLocaleTest, IntegersBesideEveryPowerEqualStreamText)
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

constexpr auto NameOfLocale = [](const auto& test) { return test.param.name; };

INSTANTIATE_TEST_SUITE_P(Locales, NumberTextDifferentialTest, testing::ValuesIn(NumberLocales()), NameOfLocale);
INSTANTIATE_TEST_SUITE_P(Locales, NumberTextLocaleTest, testing::ValuesIn(NumberLocales()), NameOfLocale);

} // namespace

} // namespace Morvik::sql::tests
