#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <set>
#include <string>

#include "support/ChildProcess.h"

// The functions of the fuzz targets; CMakeLists.txt gives each function its name.
extern "C" {
int value_literals(const std::uint8_t* data, std::size_t size);
int schema_text(const std::uint8_t* data, std::size_t size);
int operations(const std::uint8_t* data, std::size_t size);
int database_files(const std::uint8_t* data, std::size_t size);
}

namespace Morvik::sql::tests {

namespace {

struct Corpus {
    std::string folder;
    decltype(value_literals)* target;
};

class CorpusReplayTest : public testing::TestWithParam<Corpus> {};

TEST_P(CorpusReplayTest, EveryInputOfTheCorpusEndsWithoutAFinding)
{
    const std::set<std::filesystem::path> inputs(
        std::filesystem::directory_iterator(TKOSQLLITE_CORPUS "/" + GetParam().folder), {});

    for (const std::filesystem::path& input : inputs) {
        const std::string bytes = FileContent(input);
        // A finding ends the program, so the last name printed is the failing input.
        std::cout << input.filename() << std::endl;
        GetParam().target(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }

    EXPECT_FALSE(inputs.empty()) << GetParam().folder;
    RecordProperty("inputs", static_cast<int>(inputs.size()));
}

INSTANTIATE_TEST_SUITE_P(ValueLiterals, CorpusReplayTest, testing::Values(Corpus{"value-literals", value_literals}));
INSTANTIATE_TEST_SUITE_P(SchemaText, CorpusReplayTest, testing::Values(Corpus{"schema-text", schema_text}));
INSTANTIATE_TEST_SUITE_P(Operations, CorpusReplayTest, testing::Values(Corpus{"operations", operations}));
INSTANTIATE_TEST_SUITE_P(DatabaseFiles, CorpusReplayTest, testing::Values(Corpus{"database-files", database_files}));

} // namespace

} // namespace Morvik::sql::tests
