#include "model/StatementText.h"

#include <gtest/gtest.h>

#include "support/FailingAllocation.h"
#include "support/NumberLocales.h"

namespace Morvik::sql::tests {

namespace {

TEST(StatementTextTest, HoldsItsPiecesInOrder)
{
    StatementText text(64);

    text += "INSERT";
    text += ' ';
    text += std::string_view("in\0to", 5);

    EXPECT_EQ(text.Size(), 12U);
    EXPECT_EQ(text.Take(), std::string("INSERT in\0to", 12));
}

TEST(StatementTextTest, GrowsBeyondItsExpectedSize)
{
    StatementText text(3);
    std::string expected;

    for (int i = 0; i < 1000; ++i) {
        text += static_cast<char>('a' + i % 26);
        text += "piece";
        expected += static_cast<char>('a' + i % 26);
        expected += "piece";
    }

    EXPECT_EQ(text.Take(), expected);
}

TEST(StatementTextTest, GrowingTakesAboutTwiceAtMost)
{
    StatementText text(1000);
    text += std::string(1000, 'x');

    const LargestAllocation largest;
    text += 'y';

    EXPECT_GT(largest.Size(), 1000U);
    EXPECT_LE(largest.Size(), 2001U);
}

TEST(StatementTextTest, KeepsWhatIsWrittenInItsRoom)
{
    StatementText text(0);

    char* const end = text.Room(8);
    end[0] = 'x';
    end[1] = 'y';
    text.AdvanceTo(end + 2);

    EXPECT_EQ(text.Take(), "xy");
}

TEST(StatementTextTest, TruncationDropsTheEnd)
{
    StatementText text(16);
    text += "UPDATE t SET=(";

    text.Truncate(13);
    text += "1";

    EXPECT_EQ(text.Take(), "UPDATE t SET=1");
}

TEST(StatementTextTest, KnowsWhetherNumbersNeedAStream)
{
    EXPECT_TRUE(StatementText(0).HasPlainNumbers());

    const ScopedGlobalLocale locale;

    EXPECT_FALSE(StatementText(0).HasPlainNumbers());
}

} // namespace

} // namespace Morvik::sql::tests
