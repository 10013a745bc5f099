#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cstddef>
#include <string>
#include <vector>

#include "files/DamageTrials.h"
#include "files/SampleDatabase.h"
#include "support/SoakMode.h"

namespace Morvik::sql::tests {

namespace {

// Changes the bytes of a real database, one at a time. The library must return the same results as raw SQLite.

constexpr std::size_t SmallPage = 1024;
constexpr std::size_t DefaultPage = 4096;

// Patterns that flip all bits of a byte, and each bit alone.
const std::vector<unsigned> AllBits{0xFF};
const std::vector<unsigned> EachPattern{0xFF, 1, 2, 4, 8, 16, 32, 64, 128};

class FlippedByteTest : public testing::Test {
protected:
    /// Tries the sample with the bytes from `begin` to `end` flipped, one at a time, with every pattern. Ends the test
    /// after a few failures.
    void FlipEach(std::size_t begin, std::size_t end, const std::vector<unsigned>& patterns, std::size_t stride = 1)
    {
        for (std::size_t offset = begin; offset < end; offset += stride) {
            for (const unsigned pattern : patterns) {
                std::string damaged = trials.Content();
                damaged.at(offset) = static_cast<char>(static_cast<unsigned char>(damaged.at(offset)) ^ pattern);
                const std::string damage = "byte " + std::to_string(offset) + " ^ " + std::to_string(pattern);
                ASSERT_TRUE(trials.Try(damaged, damage));
            }
        }
    }

    DamageTrials trials{SampleDatabase(SmallPage)};
};

TEST_F(FlippedByteTest, EveryByteOfTheHeaderPageIsAnsweredAsRawSqliteAnswersIt)
{
    FlipEach(0, SmallPage, SoakIsOn() ? EachPattern : AllBits);

    EXPECT_GE(trials.codes[SQLITE_NOTADB], 16) << "the file begins with as many bytes that tell a database";
    EXPECT_GT(trials.codes[SQLITE_CORRUPT], 100);
    EXPECT_GT(trials.codes[SQLITE_ERROR], 20) << "the schema is there too";
    EXPECT_GT(trials.otherContent, 20);
    EXPECT_LT(trials.unnoticed, trials.trials * 3 / 4);
}

TEST_F(FlippedByteTest, BytesOfTheFurtherPagesAreAnsweredAsRawSqliteAnswersThem)
{
    constexpr std::size_t Stride =
        97; // has no common factor with the page size, so that every position in a page is tried
    ASSERT_GT(trials.Content().size(), 30 * SmallPage);

    FlipEach(SmallPage, trials.Content().size(), AllBits, Stride);
    if (SoakIsOn()) {
        FlipEach(SmallPage, 4 * SmallPage, EachPattern);
    }

    EXPECT_GT(trials.codes[SQLITE_CORRUPT], 20);
    EXPECT_GT(trials.otherContent, 50) << "texts and blobs are stored without any check";
}

TEST_F(FlippedByteTest, PagesOfTheDefaultSizeAreNoOther)
{
    DamageTrials defaultTrials(SampleDatabase(DefaultPage));
    const std::size_t stride = SoakIsOn() ? 1 : 211;

    for (std::size_t offset = 0; offset < 4 * DefaultPage; offset += stride) {
        std::string damaged = defaultTrials.Content();
        damaged.at(offset) = static_cast<char>(damaged.at(offset) ^ 0xFF);
        ASSERT_TRUE(defaultTrials.Try(damaged, "byte " + std::to_string(offset)));
    }

    EXPECT_LT(defaultTrials.unnoticed, defaultTrials.trials);
}

} // namespace

} // namespace Morvik::sql::tests
