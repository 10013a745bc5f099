#include <gtest/gtest.h>

#include <cstdlib>

#include "support/FacadeOperations.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

constexpr int OperationsPerSequence = 400;

void RunSequence(std::uint64_t seed)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    const TemporaryDirectory directory;
    FacadeOperations operations(directory.Path());
    FuzzInput choices(seed);

    for (int operation = 0; operation < OperationsPerSequence; ++operation) {
        const std::string difference = operations.RunOne(choices);
        ASSERT_EQ(difference, "") << "at operation " << operation;
    }

    EXPECT_EQ(operations.CompareFiles(), "");
}

class DatabaseApiModelTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(DatabaseApiModelTest, EveryOperationOfALongSequenceAnswersAsTheModel)
{
    for (std::uint64_t sequence = 0; sequence < 25; ++sequence) {
        RunSequence(GetParam() * 1000 + sequence);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, DatabaseApiModelTest, testing::Range<std::uint64_t>(1, 5));

TEST(DatabaseApiModelSeedTest, SequencesOfASeedFromTheEnvironmentAnswerAsTheModel)
{
    const char* const given = std::getenv("TKOSQLLITE_TEST_SEED");
    const std::uint64_t seed = given != nullptr ? std::strtoull(given, nullptr, 10) : 0;

    for (std::uint64_t sequence = 0; sequence < 25; ++sequence) {
        RunSequence(seed + sequence);
    }
}

} // namespace

} // namespace Morvik::sql::tests
