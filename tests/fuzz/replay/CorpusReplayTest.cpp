#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

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

    std::vector<std::filesystem::path> Inputs() const
    {
        std::vector<std::filesystem::path> inputs;
        for (const auto& entry : std::filesystem::directory_iterator(TKOSQLLITE_CORPUS "/" + folder)) {
            inputs.push_back(entry.path());
        }
        std::ranges::sort(inputs);
        return inputs;
    }
};

class CorpusReplayTest : public testing::TestWithParam<Corpus> {};

TEST_P(CorpusReplayTest, EveryInputOfTheCorpusEndsWithoutAFinding)
{
    const std::vector<std::filesystem::path> inputs = GetParam().Inputs();

    for (const std::filesystem::path& input : inputs) {
        std::ifstream file(input, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        ASSERT_TRUE(file) << input;
        std::cout << input.filename()
                  << std::endl; // a finding ends the program, so the last name printed is the failing input
        GetParam().target(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }

    EXPECT_FALSE(inputs.empty()) << GetParam().folder;
}

INSTANTIATE_TEST_SUITE_P(ValueLiterals, CorpusReplayTest, testing::Values(Corpus{"value-literals", value_literals}));
INSTANTIATE_TEST_SUITE_P(SchemaText, CorpusReplayTest, testing::Values(Corpus{"schema-text", schema_text}));
INSTANTIATE_TEST_SUITE_P(Operations, CorpusReplayTest, testing::Values(Corpus{"operations", operations}));
INSTANTIATE_TEST_SUITE_P(DatabaseFiles, CorpusReplayTest, testing::Values(Corpus{"database-files", database_files}));

} // namespace

} // namespace Morvik::sql::tests
