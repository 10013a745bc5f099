#include "model/ValueLiteral.h"

#include <cstdint>
#include <limits>
#include <new>

#include <gtest/gtest.h>

#include "model/LiteralOf.h"
#include "support/NumberLocales.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;

const decltype(DbTableColumnValue::value) Values[] = {7, 2.5, "text"s, std::vector<char>{'b', 'y'}};

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

TEST(InvalidCellTest, StatementThatCannotGrowIsOutOfMemory)
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

enum class WithoutMemory { IsInvalid, Throws };

// Makes every allocation of a rendering fail in turn. Checks that nothing is appended when an allocation fails.
void ExpectNothingWithoutMemory(const DbTableColumnValue& cell, std::size_t space, const std::string& literal,
                                WithoutMemory expected)
{
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
        EXPECT_EQ(thrown, fired && expected == WithoutMemory::Throws) << "after " << failures << " allocations";
        EXPECT_EQ(sql.Text(), fired ? "" : literal);
    }
    EXPECT_GT(failures, 1) << "no allocation failed";
}

TEST(InvalidCellTest, TextWhoseQuotesCannotBeDoubledHasNoLiteral)
{
    const DbTableColumnValue cell{DbTableColumnType::Text, 0, "it's \"here\" " + std::string(100, '\'')};
    const std::string literal = LiteralOf(cell).value();

    // The statement has the space, so that only the allocations for the doubled quotes can fail.
    ExpectNothingWithoutMemory(cell, literal.size(), literal, WithoutMemory::IsInvalid);
}

TEST(InvalidCellTest, NumberIsNeverCutShort)
{
    const ScopedGlobalLocale locale;

    ExpectNothingWithoutMemory({DbTableColumnType::Integer, 0, -1234567}, 0, "-1.234.567", WithoutMemory::Throws);
}

} // namespace

} // namespace Morvik::sql::tests
