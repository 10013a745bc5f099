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

TEST(SqlBufferTest, GrowsBeyondItsExpectedSize)
{
    SqlBuffer text(3);
    std::string expected;

    for (int i = 0; i < 1000; ++i) {
        const auto letter = static_cast<char>('a' + i % 26);
        text.Append(letter);
        text.Append("piece");
        expected += letter + "piece"s;
    }

    EXPECT_EQ(text.Text(), expected);
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

TEST(SqlBufferTest, GrowingAtMostDoublesTheSize)
{
    SqlBuffer text(1000);
    text.Append(std::string(1000, 'x'));

    const LargestAllocation largest;
    text.Append("y");

    EXPECT_GT(largest.Size(), 1000U);
    EXPECT_LE(largest.Size(), 2001U);
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
    const auto with = [](auto* facet) { return std::locale(std::locale::classic(), facet); };
    for (const auto& [locale, plain] :
         {std::pair(std::locale::classic(), true), std::pair(with(new std::collate<char>), true),
          std::pair(with(new Punctuation), false), std::pair(with(new WideningToX), false),
          std::pair(with(new FixedNumbers("7", false)), false)}) {
        const ScopedGlobalLocale scoped(locale);

        EXPECT_EQ(SqlBuffer(0).HasPlainNumbers(), plain);
    }
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
