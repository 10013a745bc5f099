#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "model/NumberText.h"
#include "model/SqlBuffer.h"
#include "model/ValueLiteral.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

// The expected size decides how much memory a statement takes, so the tests compare it exactly.

constexpr std::size_t LongestNumber = 13;

std::size_t SizeOf(decltype(DbTableColumnValue::value) value, DbTableColumnType type)
{
    return ColumnValueSize({type, 0, std::move(value)});
}

TEST(ExpectedSizeTest, IntegerTakesItsDigitsOrOneMore)
{
    EXPECT_EQ(NumberSize(0), 1U);
    EXPECT_EQ(NumberSize(1), 1U);
    EXPECT_EQ(NumberSize(-1), 2U);
    EXPECT_EQ(NumberSize(7), 1U);
    EXPECT_EQ(NumberSize(8), 2U);
    EXPECT_EQ(NumberSize(-9), 3U);
    EXPECT_EQ(NumberSize(1000), 4U);
    EXPECT_EQ(NumberSize(1024), 4U);
    EXPECT_EQ(NumberSize(std::numeric_limits<std::int32_t>::max()), 10U);
    EXPECT_EQ(NumberSize(std::numeric_limits<std::int32_t>::min()), 11U);
}

TEST(ExpectedSizeTest, DoubleWithoutAnExponentTakesAPointAndSevenDigits)
{
    for (const double number : {0.1, 0.15, 0.5, 1.0, 499999.0, 500000.0, 999999.0}) {
        EXPECT_EQ(NumberSize(number), 8U) << number;
        EXPECT_EQ(NumberSize(-number), 9U) << -number;
    }
}

TEST(ExpectedSizeTest, OtherDoublesMayTakeAnExponent)
{
    for (const double number : {0.0, 0.09999, 1e6, 1e300, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(NumberSize(number), LongestNumber) << number;
        EXPECT_EQ(NumberSize(-number), LongestNumber) << -number;
    }
}

TEST(ExpectedSizeTest, NumbersFitWhereTheLongestDoes)
{
    const std::string before(100, 'x');
    SqlBuffer integer(before.size() + LongestNumber);
    SqlBuffer small(before.size() + LongestNumber);
    SqlBuffer large(before.size() + LongestNumber);
    for (SqlBuffer* text : {&integer, &small, &large}) {
        text->Append(before);
    }

    const OomInjector failing(0, FailureExtent::ForEver);
    AppendNumber(integer, std::numeric_limits<std::int32_t>::min());
    AppendNumber(small, -1.5);
    AppendNumber(large, -1.23457e+300);

    EXPECT_FALSE(failing.Fired());
}

TEST(ExpectedSizeTest, TextTakesItsBytesQuotesAndOneDoubledQuoteForEvery64)
{
    EXPECT_EQ(SizeOf(std::string(), DbTableColumnType::Text), 2U);
    EXPECT_EQ(SizeOf(std::string(63, 'x'), DbTableColumnType::Text), 65U);
    EXPECT_EQ(SizeOf(std::string(64, 'x'), DbTableColumnType::Text), 67U);
    EXPECT_EQ(SizeOf(std::string(128, 'x'), DbTableColumnType::Text), 132U);
}

TEST(ExpectedSizeTest, BlobTakesItsBytesAndQuotes)
{
    EXPECT_EQ(SizeOf(std::vector<char>(128, 'x'), DbTableColumnType::Blob), 130U);
}

TEST(ExpectedSizeTest, NumberCellTakesItsNumber)
{
    EXPECT_EQ(SizeOf(-9, DbTableColumnType::Integer), 3U);
    EXPECT_EQ(SizeOf(-0.5, DbTableColumnType::Real), 9U);
}

TEST(ExpectedSizeTest, TimeTakesItsFunction)
{
    EXPECT_EQ(SizeOf(0, DbTableColumnType::DateTimeNow), std::string("datetime('now')").size());
    EXPECT_EQ(SizeOf(0, DbTableColumnType::UnixTimeNow), std::string("strftime('%s', 'now')").size());
}

} // namespace

} // namespace Morvik::sql::tests
