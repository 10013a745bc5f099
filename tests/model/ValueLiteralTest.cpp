#include "model/ValueLiteral.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <new>

#include <gtest/gtest.h>

#include "model/LiteralOf.h"
#include "support/NumberLocales.h"
#include "support/OomInjector.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using Bytes = std::vector<char>;

using enum DbTableColumnType;

const decltype(DbTableColumnValue::value) Values[] = {7, 2.5, "text"s, Bytes{'b', 'y'}};

TEST(ValueLiteralTest, IntegerIsWrittenInDecimal)
{
    using Limits = std::numeric_limits<int>;

    EXPECT_EQ(LiteralOf({}), "0");
    EXPECT_EQ(LiteralOf({Integer, 77, 5}), "5") << "the column is not read";
    for (const DbTableColumnType tag : {Integer, None}) {
        EXPECT_EQ(LiteralOf({tag, 0, 42}), "42");
        EXPECT_EQ(LiteralOf({tag, 0, 0}), "0");
        EXPECT_EQ(LiteralOf({tag, 0, -7}), "-7");
        EXPECT_EQ(LiteralOf({tag, 0, Limits::max()}), "2147483647");
        EXPECT_EQ(LiteralOf({tag, 0, Limits::min()}), "-2147483648");
    }
}

TEST(ValueLiteralTest, RealIsWrittenWithSixSignificantDigits)
{
    using Limits = std::numeric_limits<double>;
    const std::pair<double, const char*> literals[] = {
        {3.14159265, "3.14159"},
        {100.0, "100"},
        {1234567.0, "1.23457e+06"},
        {0.00001, "1e-05"},
        {0.0001, "0.0001"},
        {0.1, "0.1"},
        {123456.0, "123456"},
        {-0.0, "-0"},
        {-2.5, "-2.5"},
        {Limits::infinity(), "inf"},
        {-Limits::infinity(), "-inf"},
        {std::copysign(Limits::quiet_NaN(), 1.0), "nan"},
        {std::copysign(Limits::quiet_NaN(), -1.0), "-nan"},
    };
    for (const auto& [number, literal] : literals) {
        EXPECT_EQ(LiteralOf({Real, 0, number}), literal);
    }
}

TEST(ValueLiteralTest, TextIsQuotedWithEveryQuoteDoubled)
{
    const std::pair<std::string, std::string> literals[] = {
        {"door", "\"door\""},         {"", "\"\""},       {"O'Brien", "\"O''Brien\""},
        {"\"hi\"", "\"\"\"hi\"\"\""}, {"''", "\"''''\""}, {"'\"'\"", "\"''\"\"''\"\"\""},
        {"a\0b"s, "\"a\0b\""s},
    };
    for (const auto& [text, literal] : literals) {
        EXPECT_EQ(LiteralOf({Text, 0, text}), literal);
    }
}

TEST(ValueLiteralTest, BlobIsQuotedWithItsBytesUnchanged)
{
    for (const std::string& bytes : {"AB"s, ""s, "\0a\0"s, "'\"'"s, "\xFF\x80"s}) {
        EXPECT_EQ(LiteralOf({Blob, 0, Bytes(bytes.begin(), bytes.end())}), "\"" + bytes + "\"");
    }
}

TEST(ValueLiteralTest, NumbersFollowTheCurrentProcessWideLocale)
{
    EXPECT_EQ(LiteralOf({Real, 0, 0.5}), "0.5");
    {
        const ScopedGlobalLocale locale;
        EXPECT_EQ(LiteralOf({Real, 0, 0.5}), "0,5");
        EXPECT_EQ(LiteralOf({Real, 0, 1234567.0}), "1,23457e+06");
        EXPECT_EQ(LiteralOf({Real, 0, 123456.0}), "123.456");
        EXPECT_EQ(LiteralOf({Integer, 0, -1234567}), "-1.234.567");
        EXPECT_EQ(LiteralOf({None, 0, 1000}), "1.000");
        EXPECT_EQ(LiteralOf({Text, 0, "0.5"s}), "\"0.5\"");
    }
    EXPECT_EQ(LiteralOf({Real, 0, 0.5}), "0.5");
}

TEST(ValueLiteralTest, TimeTagIsASqlFunctionCallForAnyValue)
{
    const struct {
        DbTableColumnType type;
        std::string literal;
        const char* storageClass;
    } cases[] = {{DateTimeNow, "datetime('now')", "'text'"},
                 {DateTimeNowLocalTime, "datetime('now','localtime')", "'text'"},
                 {UnixTimeNow, "strftime('%s', 'now')", "'text'"},
                 {JulianDayNow, "julianday('now')", "'real'"}};
    for (const auto& [type, literal, storageClass] : cases) {
        for (const auto& value : Values) {
            EXPECT_EQ(LiteralOf({type, 0, value}), literal);
        }
        EXPECT_GE(ColumnValueSize({type}), literal.size());
        EXPECT_EQ(RawSqlite(":memory:").Value("SELECT typeof(" + literal + ")"), storageClass);
    }
}

// The expected size decides how much memory a statement takes, so the test compares it exactly.
TEST(ValueLiteralTest, ExpectedSizeHasOneDoubledQuotePer64Bytes)
{
    const std::pair<DbTableColumnValue, std::size_t> sizes[] = {
        {{Text, 0, std::string()}, 2},
        {{Text, 0, std::string(63, 'x')}, 65},
        {{Text, 0, std::string(64, 'x')}, 67},
        {{Text, 0, std::string(128, 'x')}, 132},
        {{Blob, 0, Bytes(128, 'x')}, 130},
        {{Integer, 0, -9}, 3},
        {{Real, 0, -0.5}, 9},
        {{DateTimeNow}, std::string("datetime('now')").size()},
        {{UnixTimeNow}, std::string("strftime('%s', 'now')").size()},
    };
    for (const auto& [cell, size] : sizes) {
        EXPECT_EQ(ColumnValueSize(cell), size);
    }
}

TEST(InvalidCellTest, TagAndValueMustBelongTogether)
{
    const std::string literals[] = {"7", "2.5", "\"text\"", "\"by\""};
    for (std::size_t tag = 0; tag < 5; ++tag) {
        const std::size_t belonging = tag == 0 ? 0 : tag - 1;
        for (std::size_t held = 0; held < std::size(Values); ++held) {
            const std::optional<std::string> literal =
                LiteralOf({static_cast<DbTableColumnType>(tag), 0, Values[held]});

            EXPECT_EQ(literal, held == belonging ? std::optional(literals[held]) : std::nullopt)
                << "tag " << tag << " with alternative " << held;
        }
    }
}

TEST(InvalidCellTest, NullAndUnknownTagsHaveNoLiteral)
{
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t tag : {5, 10, 11, 12, 256, -1, -5, Limits::max(), Limits::min()}) {
        for (const auto& value : Values) {
            EXPECT_EQ(LiteralOf({static_cast<DbTableColumnType>(tag), 0, value}), std::nullopt) << tag;
        }
    }
}

// Every allocation of a literal fails in turn. If only the quotes cannot be doubled, the cell is invalid.
TEST(InvalidCellTest, NothingIsWrittenWithoutMemory)
{
    const struct {
        const char* name;
        DbTableColumnValue cell;
        std::size_t space; // reserved in `sql`
        bool throws;
    } cases[] = {{"text", {Text, 0, std::string(100, 'x')}, 0, true},
                 {"bytes", {Blob, 0, Bytes(100, 'x')}, 0, true},
                 {"time", {DateTimeNowLocalTime}, 0, true},
                 {"number with digit groups", {Integer, 0, -1234567}, 0, true},
                 {"quotes", {Text, 0, "it's \"here\" " + std::string(100, '\'')}, 300, false}};
    const ScopedGlobalLocale locale;
    for (const auto& [name, cell, space, throws] : cases) {
        SCOPED_TRACE(name);
        int failures = 0;
        for (bool fired = true; fired; ++failures) {
            SqlBuffer sql(space);
            bool written = false;
            bool thrown = false;
            {
                const OomInjector failing(failures);
                try {
                    written = ColumnValueAsString(cell, sql);
                } catch (const std::bad_alloc&) {
                    thrown = true;
                }
                fired = failing.Fired();
            }
            EXPECT_EQ(written, !fired) << "after " << failures << " allocations";
            EXPECT_EQ(thrown, fired && throws) << "after " << failures << " allocations";
            EXPECT_EQ(sql.Text(), fired ? "" : LiteralOf(cell));
        }
        EXPECT_GT(failures, 1) << "no allocation failed";
    }
}

} // namespace

} // namespace Morvik::sql::tests
