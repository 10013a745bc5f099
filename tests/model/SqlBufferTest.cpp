#include "model/SqlBuffer.h"

#include <gtest/gtest.h>

#include "support/NumberLocales.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

TEST(SqlBufferTest, HoldsItsPiecesInOrder)
{
    SqlBuffer text(64);

    text.Append("INSERT");
    text.Append(' ');
    text.Append(std::string_view("in\0to", 5));

    EXPECT_EQ(text.Size(), 12U);
    EXPECT_EQ(text.Release(), std::string("INSERT in\0to", 12));
}

TEST(SqlBufferTest, GrowsBeyondItsExpectedSize)
{
    SqlBuffer text(3);
    std::string expected;

    for (int i = 0; i < 1000; ++i) {
        text.Append(static_cast<char>('a' + i % 26));
        text.Append("piece");
        expected += static_cast<char>('a' + i % 26);
        expected += "piece";
    }

    EXPECT_EQ(text.Release(), expected);
}

TEST(SqlBufferTest, GrowingTakesAboutTwiceAtMost)
{
    SqlBuffer text(1000);
    text.Append(std::string(1000, 'x'));

    const LargestAllocation largest;
    text.Append('y');

    EXPECT_GT(largest.Size(), 1000U);
    EXPECT_LE(largest.Size(), 2001U);
}

TEST(SqlBufferTest, KeepsWhatIsWrittenInItsRoom)
{
    SqlBuffer text(0);

    char* const end = text.Reserve(8);
    end[0] = 'x';
    end[1] = 'y';
    text.SetEnd(end + 2);

    EXPECT_EQ(text.Release(), "xy");
}

TEST(SqlBufferTest, TruncationDropsTheEnd)
{
    SqlBuffer text(16);
    text.Append("UPDATE t SET=(");

    text.Truncate(13);
    text.Append("1");

    EXPECT_EQ(text.Release(), "UPDATE t SET=1");
}

TEST(SqlBufferTest, KnowsWhetherNumbersNeedAStream)
{
    EXPECT_TRUE(SqlBuffer(0).HasPlainNumbers());

    const ScopedGlobalLocale locale;

    EXPECT_FALSE(SqlBuffer(0).HasPlainNumbers());
}

} // namespace

} // namespace Morvik::sql::tests
