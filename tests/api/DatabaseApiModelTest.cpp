#include <cstdint>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/FacadeOperations.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

/// Runs 25 sequences of 400 operations, with the seeds from `first` on.
void RunSequences(std::uint64_t first)
{
    for (std::uint64_t seed = first; seed < first + 25; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const TemporaryDirectory directory;
        FacadeOperations operations(directory.Path());
        FuzzInput choices(seed);
        for (int operation = 0; operation < 400; ++operation) {
            ASSERT_EQ(operations.RunOne(choices), "") << "at operation " << operation;
        }
        EXPECT_EQ(operations.CompareFiles(), "");
    }
}

class DatabaseApiModelTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(DatabaseApiModelTest, EveryOperationReturnsWhatTheModelReturns)
{
    RunSequences(GetParam() * 1000);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DatabaseApiModelTest, testing::Range<std::uint64_t>(1, 5));

TEST(DatabaseApiModelSeedTest, SequencesOfTheGivenSeedReturnWhatTheModelReturns)
{
    const char* const given = std::getenv("TKOSQLLITE_TEST_SEED");
    RunSequences(given != nullptr ? std::strtoull(given, nullptr, 10) : 0);
}

} // namespace

} // namespace Morvik::sql::tests
