#include "model/ValueLiteral.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <locale>
#include <new>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "model/LiteralOf.h"
#include "model/SqlBuffer.h"
#include "support/NumberLocales.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;

using Alternatives = decltype(DbTableColumnValue::value);

const Alternatives Values[] = {Alternatives(7), Alternatives(2.5), Alternatives("text"s),
                               Alternatives(std::vector<char>{'b', 'y'})};
const char* const ValueNames[] = {"Int", "Double", "String", "Bytes"};

std::string NameOfTag(std::int32_t tag)
{
    const std::int64_t wide = tag;
    return wide < 0 ? "Minus" + std::to_string(-wide) : std::to_string(wide);
}

std::string NameOfPair(const testing::TestParamInfo<std::tuple<std::int32_t, std::size_t>>& pair)
{
    return "Tag" + NameOfTag(std::get<0>(pair.param)) + "With" + ValueNames[std::get<1>(pair.param)];
}

DbTableColumnValue CellOf(const std::tuple<std::int32_t, std::size_t>& pair)
{
    return {static_cast<DbTableColumnType>(std::get<0>(pair)), 0, Values[std::get<1>(pair)]};
}

// The alternative that belongs to a tag with data.
std::size_t AlternativeOf(std::int32_t tag)
{
    return tag == 0 ? 0 : static_cast<std::size_t>(tag - 1);
}

class TagAndValueTest : public testing::TestWithParam<std::tuple<std::int32_t, std::size_t>> {};

TEST_P(TagAndValueTest, MustBelongTogether)
{
    const std::string literals[] = {"7", "2.5", "\"text\"", "\"by\""};
    const auto [tag, value] = GetParam();

    const std::optional<std::string> literal = LiteralOf(CellOf(GetParam()));

    if (AlternativeOf(tag) == value) {
        EXPECT_EQ(literal, literals[value]);
    } else {
        EXPECT_EQ(literal, std::nullopt);
    }
}

INSTANTIATE_TEST_SUITE_P(TagsWithData, TagAndValueTest,
                         testing::Combine(testing::Range(std::int32_t{0}, std::int32_t{5}),
                                          testing::Range(std::size_t{0}, std::size_t{4})),
                         NameOfPair);

class TagWithoutTextTest : public testing::TestWithParam<std::tuple<std::int32_t, std::size_t>> {};

TEST_P(TagWithoutTextTest, HasNoLiteralWhateverValueTheCellHolds)
{
    EXPECT_EQ(LiteralOf(CellOf(GetParam())), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(NullAndUnknown, TagWithoutTextTest,
                         testing::Combine(testing::Values(5, 10, 11, 12, 256, -1, -5,
                                                          std::numeric_limits<std::int32_t>::max(),
                                                          std::numeric_limits<std::int32_t>::min()),
                                          testing::Range(std::size_t{0}, std::size_t{4})),
                         NameOfPair);

TEST(InvalidCellTest, CellReadFromNullCannotBeWrittenBack)
{
    EXPECT_EQ(LiteralOf({DbTableColumnType::None, 2, std::string()}), std::nullopt);
}

TEST(InvalidCellTest, NumberThatTheLocaleDoesNotWriteHasNoLiteral)
{
    for (const bool throws : {false, true}) {
        const ScopedGlobalLocale locale(std::locale(std::locale::classic(), new FixedNumbers("", throws)));

        EXPECT_EQ(LiteralOf({DbTableColumnType::Integer, 0, 42}), std::nullopt);
        EXPECT_EQ(LiteralOf({DbTableColumnType::None, 0, 42}), std::nullopt);
        EXPECT_EQ(LiteralOf({DbTableColumnType::Real, 0, 0.5}), std::nullopt);
        EXPECT_EQ(LiteralOf({DbTableColumnType::Text, 0, "42"s}), "\"42\"");
    }
}

TEST(InvalidCellTest, TextThatAFacetWroteBeforeItThrewIsTheLiteral)
{
    const ScopedGlobalLocale locale(std::locale(std::locale::classic(), new FixedNumbers("12", true)));

    EXPECT_EQ(LiteralOf({DbTableColumnType::Integer, 0, 42}), "12");
}

TEST(InvalidCellTest, TextWhoseQuotesCannotBeDoubledForLackOfMemoryHasNoLiteral)
{
    const DbTableColumnValue cell{DbTableColumnType::Text, 0, "it's \"here\" " + std::string(100, '\'')};
    const std::string literal = LiteralOf(cell).value();
    int failures = 0;

    for (bool fired = true; fired; ++failures) {
        SqlBuffer sql(literal.size()); // so that only the allocations for the doubled quotes can fail
        bool written = false;
        {
            const OomInjector failing(failures);
            written = ColumnValueAsString(cell, sql);
            fired = failing.Fired();
        }
        EXPECT_EQ(written, !fired) << "after " << failures << " allocations";
        EXPECT_EQ(sql.Release(), fired ? "" : literal);
    }

    EXPECT_GT(failures, 1) << "no allocation failed";
}

TEST(InvalidCellTest, StatementThatCannotGrowForLackOfMemoryIsNotTakenForAnInvalidCell)
{
    const DbTableColumnValue cells[] = {{DbTableColumnType::Text, 0, std::string(100, 'x')},
                                        {DbTableColumnType::Blob, 0, std::vector<char>(100, 'x')},
                                        {DbTableColumnType::DateTimeNowLocalTime}};
    for (const DbTableColumnValue& cell : cells) {
        SqlBuffer sql(0);
        const OomInjector failing(0);

        EXPECT_THROW(ColumnValueAsString(cell, sql), std::bad_alloc);
        EXPECT_TRUE(failing.Fired());
    }
}

TEST(InvalidCellTest, NumberIsNeverCutShortForLackOfMemory)
{
    const ScopedGlobalLocale locale;
    const DbTableColumnValue cell{DbTableColumnType::Integer, 0, -1234567};
    int failures = 0;

    for (bool fired = true; fired; ++failures) {
        SqlBuffer sql(0);
        bool thrown = false;
        {
            const OomInjector failing(failures);
            try {
                EXPECT_TRUE(ColumnValueAsString(cell, sql));
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            fired = failing.Fired();
        }
        EXPECT_EQ(thrown, fired);
        EXPECT_EQ(sql.Release(), fired ? "" : "-1.234.567");
    }

    EXPECT_GT(failures, 1) << "no allocation failed";
}

} // namespace

} // namespace Morvik::sql::tests
