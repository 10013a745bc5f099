#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "fuzz/FuzzTarget.h"

namespace Morvik::sql::tests {

namespace {

std::vector<std::filesystem::path> Corpus()
{
    std::vector<std::filesystem::path> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(TKOSQLLITE_CORPUS)) {
        inputs.push_back(entry.path());
    }
    std::ranges::sort(inputs);
    return inputs;
}

TEST(CorpusReplayTest, EveryInputOfTheCorpusEndsWithoutAFinding)
{
    const std::vector<std::filesystem::path> inputs = Corpus();

    for (const std::filesystem::path& input : inputs) {
        std::ifstream file(input, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        ASSERT_TRUE(file) << input;
        std::cout << input.filename() << std::endl; // a finding ends the program: the last name is its input's
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }

    EXPECT_FALSE(inputs.empty()) << TKOSQLLITE_CORPUS;
}

} // namespace

} // namespace Morvik::sql::tests
