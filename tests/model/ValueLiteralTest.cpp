#include "model/ValueLiteral.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "model/LiteralOf.h"
#include "support/NumberLocales.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;

constexpr DbTableColumnType None = DbTableColumnType::None;
constexpr DbTableColumnType Integer = DbTableColumnType::Integer;
constexpr DbTableColumnType Real = DbTableColumnType::Real;
constexpr DbTableColumnType Text = DbTableColumnType::Text;
constexpr DbTableColumnType Blob = DbTableColumnType::Blob;

struct LiteralCase {
    const char* name;
    DbTableColumnValue cell;
    std::string literal;

    friend void PrintTo(const LiteralCase& literalCase, std::ostream* stream) { *stream << literalCase.name; }
};

class ValueLiteralCaseTest : public testing::TestWithParam<LiteralCase> {};

TEST_P(ValueLiteralCaseTest, IsTheTextOfTheCell)
{
    EXPECT_EQ(LiteralOf(GetParam().cell), GetParam().literal);
}

constexpr auto NameOfCase = [](const auto& literalCase) { return literalCase.param.name; };

const LiteralCase IntegerLiterals[] = {
    {"FortyTwo", {Integer, 0, 42}, "42"},
    {"Zero", {Integer, 0, 0}, "0"},
    {"Negative", {Integer, 0, -7}, "-7"},
    {"UntypedNegative", {None, 0, -7}, "-7"},
    {"UntypedDefault", {}, "0"},
    {"Largest", {Integer, 0, std::numeric_limits<int>::max()}, "2147483647"},
    {"Smallest", {Integer, 0, std::numeric_limits<int>::min()}, "-2147483648"},
    {"UntypedSmallest", {None, 0, std::numeric_limits<int>::min()}, "-2147483648"},
    {"ColumnIsNotRead", {Integer, 77, 5}, "5"},
};

const LiteralCase RealLiterals[] = {
    {"SixDigits", {Real, 0, 3.14159265}, "3.14159"},
    {"WholeNumberHasNoPoint", {Real, 0, 100.0}, "100"},
    {"Million", {Real, 0, 1234567.0}, "1.23457e+06"},
    {"HundredThousandths", {Real, 0, 0.00001}, "1e-05"},
    {"TenThousandths", {Real, 0, 0.0001}, "0.0001"},
    {"Tenth", {Real, 0, 0.1}, "0.1"},
    {"SixDigitsBeforeThePoint", {Real, 0, 123456.0}, "123456"},
    {"RoundedUpToSevenDigits", {Real, 0, 999999.5}, "1e+06"},
    {"RoundedDownToSixDigits", {Real, 0, 999999.4}, "999999"},
    {"BeyondTheIntegersOfADouble", {Real, 0, 9007199254740993.0}, "9.0072e+15"},
    {"NegativeZero", {Real, 0, -0.0}, "-0"},
    {"Negative", {Real, 0, -2.5}, "-2.5"},
    {"Largest", {Real, 0, std::numeric_limits<double>::max()}, "1.79769e+308"},
    {"Lowest", {Real, 0, std::numeric_limits<double>::lowest()}, "-1.79769e+308"},
    {"SmallestNormal", {Real, 0, std::numeric_limits<double>::min()}, "2.22507e-308"},
    {"SmallestDenormal", {Real, 0, std::numeric_limits<double>::denorm_min()}, "4.94066e-324"},
    {"Infinity", {Real, 0, std::numeric_limits<double>::infinity()}, "inf"},
    {"NegativeInfinity", {Real, 0, -std::numeric_limits<double>::infinity()}, "-inf"},
    {"NotANumber", {Real, 0, std::copysign(std::numeric_limits<double>::quiet_NaN(), 1.0)}, "nan"},
    {"NegativeNotANumber", {Real, 0, std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0)}, "-nan"},
};

const LiteralCase Texts[] = {
    {"Plain", {Text, 0, "door"s}, "\"door\""},
    {"Empty", {Text, 0, ""s}, "\"\""},
    {"Apostrophe", {Text, 0, "O'Brien"s}, "\"O''Brien\""},
    {"DoubleQuotationMarks", {Text, 0, "\"hi\""s}, "\"\"\"hi\"\"\""},
    {"OnlyApostrophes", {Text, 0, "''"s}, "\"''''\""},
    {"OneDoubleQuotationMark", {Text, 0, "\""s}, "\"\"\"\""},
    {"BothQuotes", {Text, 0, "'\"'\""s}, "\"''\"\"''\"\"\""},
    {"QuotesAtBothEnds", {Text, 0, "'a\"b'"s}, "\"''a\"\"b''\""},
    {"ZeroByte", {Text, 0, "a\0b"s}, "\"a\0b\""s},
    {"QuotesAroundAZeroByte", {Text, 0, "'\0\""s}, "\"''\0\"\"\""s},
    {"NoUtf8", {Text, 0, "\xFF\xC3'\x80"s}, "\"\xFF\xC3''\x80\""},
    {"BackslashesAndLines", {Text, 0, "\\n\n\t%s;--"s}, "\"\\n\n\t%s;--\""},
    {"LooksLikeALiteral", {Text, 0, "42"s}, "\"42\""},
};

const LiteralCase Blobs[] = {
    {"TwoBytes", {Blob, 0, std::vector<char>{0x41, 0x42}}, "\"AB\""},
    {"Empty", {Blob, 0, std::vector<char>{}}, "\"\""},
    {"ZeroBytes", {Blob, 0, std::vector<char>{'\0', 'a', '\0'}}, "\"\0a\0\""s},
    {"QuotesAreNotDoubled", {Blob, 0, std::vector<char>{'\'', '"', '\''}}, "\"'\"'\""},
    {"HighBytes", {Blob, 0, std::vector<char>{'\xFF', '\x80'}}, "\"\xFF\x80\""},
};

INSTANTIATE_TEST_SUITE_P(Integer, ValueLiteralCaseTest, testing::ValuesIn(IntegerLiterals), NameOfCase);
INSTANTIATE_TEST_SUITE_P(Real, ValueLiteralCaseTest, testing::ValuesIn(RealLiterals), NameOfCase);
INSTANTIATE_TEST_SUITE_P(Text, ValueLiteralCaseTest, testing::ValuesIn(Texts), NameOfCase);
INSTANTIATE_TEST_SUITE_P(Blob, ValueLiteralCaseTest, testing::ValuesIn(Blobs), NameOfCase);

std::string AllBytes()
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

TEST(ValueLiteralTest, TextOfAllBytesChangesOnlyTheQuotes)
{
    std::string expected = "\"";
    for (const char byte : AllBytes()) {
        expected += byte;
        if (byte == '\'' || byte == '"') {
            expected += byte;
        }
    }
    expected += '"';

    EXPECT_EQ(LiteralOf({Text, 0, AllBytes()}), expected);
}

TEST(ValueLiteralTest, BlobOfAllBytesIsTwoBytesLongerAndUnchanged)
{
    const std::string bytes = AllBytes();

    EXPECT_EQ(LiteralOf({Blob, 0, std::vector<char>(bytes.begin(), bytes.end())}), "\"" + bytes + "\"");
}

TEST(ValueLiteralTest, LongTextIsDoubledThroughout)
{
    std::string text;
    std::string expected = "\"";
    for (int part = 0; part < 1000; ++part) {
        text += "it's \"here\" ";
        expected += "it''s \"\"here\"\" ";
    }

    EXPECT_EQ(LiteralOf({Text, 0, text}), expected + "\"");
}

TEST(ValueLiteralTest, RenderingLeavesTheCellAsItWas)
{
    const DbTableColumnValue cell{Text, 3, "O'Brien \"x\""s};

    LiteralOf(cell);

    EXPECT_EQ(cell.type, Text);
    EXPECT_EQ(cell.column, 3U);
    EXPECT_EQ(std::get<std::string>(cell.value), "O'Brien \"x\"");
}

TEST(ValueLiteralTest, NumbersFollowTheProcessWideLocale)
{
    const ScopedGlobalLocale locale;

    EXPECT_EQ(LiteralOf({Real, 0, 0.5}), "0,5");
    EXPECT_EQ(LiteralOf({Real, 0, 1234567.0}), "1,23457e+06");
    EXPECT_EQ(LiteralOf({Real, 0, 123456.0}), "123.456");
    EXPECT_EQ(LiteralOf({Integer, 0, -1234567}), "-1.234.567");
    EXPECT_EQ(LiteralOf({None, 0, 1000}), "1.000");
    EXPECT_EQ(LiteralOf({Text, 0, "0.5"s}), "\"0.5\"");
}

TEST(ValueLiteralTest, NumbersFollowTheLocaleOfTheMoment)
{
    const DbTableColumnValue cell{Real, 0, 0.5};

    EXPECT_EQ(LiteralOf(cell), "0.5");
    {
        const ScopedGlobalLocale locale;
        EXPECT_EQ(LiteralOf(cell), "0,5");
    }
    EXPECT_EQ(LiteralOf(cell), "0.5");
}

struct TimeCase {
    const char* name;
    DbTableColumnType type;
    const char* literal;
    const char* storageClass;

    friend void PrintTo(const TimeCase& timeCase, std::ostream* stream) { *stream << timeCase.name; }
};

class ValueLiteralTimeTest : public testing::TestWithParam<TimeCase> {};

TEST_P(ValueLiteralTimeTest, IsACallOfSqliteWhateverValueTheCellHolds)
{
    for (const auto& value :
         {decltype(DbTableColumnValue::value)(1), decltype(DbTableColumnValue::value)(1.5),
          decltype(DbTableColumnValue::value)("x"s), decltype(DbTableColumnValue::value)(std::vector<char>{'x'})}) {
        EXPECT_EQ(LiteralOf({GetParam().type, 0, value}), GetParam().literal);
    }
}

TEST_P(ValueLiteralTimeTest, IsHeldByTheExpectedSize)
{
    EXPECT_GE(ColumnValueSize({GetParam().type}), std::string(GetParam().literal).size());
}

TEST_P(ValueLiteralTimeTest, IsComputedBySqlite)
{
    const std::optional<std::string> literal = LiteralOf({GetParam().type});
    ASSERT_TRUE(literal.has_value());

    RawSqlite plain(":memory:");

    EXPECT_EQ(plain.Value("SELECT typeof(" + *literal + ")"), GetParam().storageClass);
}

INSTANTIATE_TEST_SUITE_P(
    Tags, ValueLiteralTimeTest,
    testing::Values(TimeCase{"DateTimeNow", DbTableColumnType::DateTimeNow, "datetime('now')", "'text'"},
                    TimeCase{"DateTimeNowLocalTime", DbTableColumnType::DateTimeNowLocalTime,
                             "datetime('now','localtime')", "'text'"},
                    TimeCase{"UnixTimeNow", DbTableColumnType::UnixTimeNow, "strftime('%s', 'now')", "'text'"},
                    TimeCase{"JulianDayNow", DbTableColumnType::JulianDayNow, "julianday('now')", "'real'"}),
    NameOfCase);

} // namespace

} // namespace Morvik::sql::tests
