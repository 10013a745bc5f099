#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cstddef>
#include <string>

#include "files/DamageTrials.h"
#include "files/SampleDatabase.h"
#include "support/FuzzInput.h"
#include "support/SoakMode.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t Page = 1024;

// Files that end too early, as a copy or a power failure leaves them, and files that are too long.
class CutFileTest : public testing::Test {
protected:
    void CutTo(std::size_t size)
    {
        ASSERT_TRUE(trials.Try(trials.Content().substr(0, size), "cut to " + std::to_string(size) + " bytes"));
    }

    DamageTrials trials{SampleDatabase(Page)};
    const std::size_t whole = trials.Content().size();
};

TEST_F(CutFileTest, EveryWholeNumberOfPagesIsAnsweredAsRawSqliteAnswersIt)
{
    for (std::size_t size = 0; size < whole; size += Page) {
        CutTo(size);
    }

    EXPECT_EQ(trials.trials, whole / Page);
    EXPECT_GT(trials.codes[SQLITE_CORRUPT], 20);
}

TEST_F(CutFileTest, EveryFewBytesOfTheHeaderAreAnsweredAsRawSqliteAnswersThem)
{
    for (std::size_t size = 1; size < 2 * Page; size = size * 5 / 4 + 1) {
        CutTo(size);
    }

    EXPECT_GT(trials.codes[SQLITE_NOTADB], 5);
    EXPECT_GT(trials.codes[SQLITE_CORRUPT], 0);
}

TEST_F(CutFileTest, ChosenSizesAreAnsweredAsRawSqliteAnswersThem)
{
    const int sizes = Rounds(100, 1000);
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        FuzzInput choices(seed);
        for (int i = 0; i < sizes; ++i) {
            CutTo(choices.Below(whole));
        }
    }

    EXPECT_GT(trials.codes[SQLITE_CORRUPT], sizes / 2);
}

TEST_F(CutFileTest, BytesBehindTheEndAreAnsweredAsRawSqliteAnswersThem)
{
    for (const std::size_t size : {std::size_t{1}, Page - 1, Page, 10 * Page}) {
        for (const char byte : {'\0', '\x2A'}) {
            ASSERT_TRUE(trials.Try(trials.Content() + std::string(size, byte), std::to_string(size) + " bytes more"));
        }
    }
}

TEST_F(CutFileTest, FileThatIsOneRepeatedByteIsAnsweredAsRawSqliteAnswersIt)
{
    for (const char byte : {'\0', '\x2A', '\xFF'}) {
        ASSERT_TRUE(trials.Try(std::string(3 * Page, byte), "filled with " + std::to_string(byte)));
    }

    EXPECT_EQ(trials.codes[SQLITE_NOTADB], 3);
}

} // namespace

} // namespace Morvik::sql::tests
