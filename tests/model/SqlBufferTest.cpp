#include "model/SqlBuffer.h"

#include <locale>
#include <utility>

#include <gtest/gtest.h>

#include "model/NumberText.h"
#include "model/Strings.h"
#include "model/ValueLiteral.h"
#include "support/Cells.h"
#include "support/NumberLocales.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(SqlBufferTest, HasItsPiecesInOrderAndDropsTheTruncatedEnd)
{
    SqlBuffer text(64);

    text.Append("INSERT");
    text.Append(" ");
    text.Append("in\0to("sv);
    EXPECT_EQ(text.Size(), 13U);
    text.Truncate(12);
    text.Append("1");

    EXPECT_EQ(text.Text(), "INSERT in\0to1"s);
}

/// A way to append a piece, and its text.
struct Piece {
    void (*append)(SqlBuffer& text);
    std::string_view text;
};

constexpr Piece Pieces[] = {
    {[](SqlBuffer& text) { text.Append('a'); }, "a"},
    {[](SqlBuffer& text) { text.Append("a piece of twenty by"); }, "a piece of twenty by"},
    {[](SqlBuffer& text) { text.Append(',', "a piece of twenty by"); }, ",a piece of twenty by"},
    {[](SqlBuffer& text) { ColumnValueAsString(TextCell("a piece of twenty by"), text); }, "\"a piece of twenty by\""},
};

TEST(SqlBufferTest, EveryPieceFitsIntoAnyFreeSpace)
{
    for (const auto& [append, expected] : Pieces) {
        for (std::size_t free = 0; free <= expected.size(); ++free) {
            SqlBuffer text(free);
            append(text);
            EXPECT_EQ(text.Text(), expected) << free << " free bytes";
        }
    }
}

TEST(SqlBufferTest, ExpectedSizeIsAllocatedOnce)
{
    for (const auto& [append, expected] : Pieces) {
        SqlBuffer text(20 * expected.size());
        LargestAllocation largest;

        for (int i = 0; i < 20; ++i) {
            append(text);
        }

        EXPECT_LT(largest.Size(), 20 * expected.size()) << expected;
    }
}

TEST(SqlBufferTest, GrowingKeepsTheTextAndAtMostDoublesTheSize)
{
    const std::string full(1000, 'x');
    SqlBuffer text(1000);
    text.Append(full);

    const LargestAllocation largest;
    text.Append("y");

    EXPECT_GT(largest.Size(), 1000U);
    EXPECT_LE(largest.Size(), 2001U);
    EXPECT_EQ(text.Text(), full + "y");
}

TEST(SqlBufferTest, KeepsWhatIsWrittenInItsReservedBytes)
{
    for (const std::size_t expected : {0, 8}) {
        SqlBuffer text(expected);

        text.SetEnd(std::copy_n("xyz", 2, text.Reserve(8)));

        EXPECT_EQ(text.Text(), "xy");
    }
}

TEST(SqlBufferTest, NumbersNeedAStreamIfALocaleWritesThemDifferently)
{
    for (const auto& [name, locale] : NumberLocales()) {
        const ScopedGlobalLocale scoped(locale);
        EXPECT_EQ(SqlBuffer(0).HasPlainNumbers(), name == "Classic") << name;
    }
    const ScopedGlobalLocale otherCollation(std::locale(std::locale::classic(), new std::collate<char>));
    EXPECT_TRUE(SqlBuffer(0).HasPlainNumbers());
}

TEST(SqlBufferTest, NumbersFollowTheLocaleOfItsConstruction)
{
    SqlBuffer text(0);
    const ScopedGlobalLocale locale;

    AppendNumber(text, 1234567);
    AppendNumber(text, -0.5);

    EXPECT_EQ(text.Text(), "1234567-0.5");
}

TEST(StringsTest, PiecesAreConcatenatedInOneAllocationOfTheirSize)
{
    const std::string part(100, 'x');
    std::string text;
    {
        const OomInjector failing(1);
        text = StrCat({part, "", "t\0wo"sv, part});
        EXPECT_FALSE(failing.Fired());
    }

    EXPECT_EQ(text, part + "t\0wo"s + part);
    EXPECT_EQ(text.capacity(), 204U);
    EXPECT_EQ(StrCat({}), "");
}

} // namespace

} // namespace Morvik::sql::tests
