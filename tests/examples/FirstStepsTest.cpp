#include <gtest/gtest.h>

#include "examples/ExampleProgram.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

TEST(FirstStepsTest, WritesOneRowAndReadsItBack)
{
    const TemporaryDirectory directory;

    const ChildResult result = RunChild(ExampleCommand("first_steps", {}), {.directory = directory.Path().string()});

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(result.out, "kitchen 21.5\n");
    EXPECT_EQ(AnswerOfSqlite3(directory.File("first-steps/home.db"), "SELECT * FROM room"), "kitchen|21.5");
}

TEST(FirstStepsTest, TellsWhyItFailed)
{
    const ChildResult result = RunChild(ExampleCommand("first_steps", {}), {.directory = "/proc"});

    EXPECT_EQ(result.status, 111);
    EXPECT_EQ(result.err, "Create directory failed: first-steps/home.db\n");
}

TEST(FirstStepsTest, IsTheExampleInTheReadme)
{
    const std::string readme = FileContent(TKOSQLLITE_SOURCE_DIR "/README.md");
    const std::string example = FileContent(TKOSQLLITE_SOURCE_DIR "/examples/first_steps/main.cpp");
    static constexpr std::string_view Opening = "```cpp program\n";

    const std::size_t begin = readme.find(Opening);
    ASSERT_NE(begin, std::string::npos);
    const std::string block = readme.substr(begin, readme.find("```", begin + 3) - begin);

    EXPECT_EQ(block, std::string(Opening) + example);
}

} // namespace

} // namespace Morvik::sql::tests
