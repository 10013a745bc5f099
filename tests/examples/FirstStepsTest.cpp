#include "examples/ExampleTest.h"

namespace Morvik::sql::tests {

namespace {

class FirstStepsTest : public ExampleTest {
protected:
    FirstStepsTest() : ExampleTest("first_steps") { database = directory.File("first-steps/home.db"); }

    ChildResult RunIn(const std::string& place) const
    {
        return RunChild(CommandLine(program, {}), {.directory = place});
    }
};

TEST_F(FirstStepsTest, WritesOneRowAndReadsItBack)
{
    const ChildResult result = RunIn(directory.Path().string());

    EXPECT_THAT(result, SucceededQuietly());
    EXPECT_EQ(result.out, "kitchen 21.5\n");
    EXPECT_EQ(Answer("SELECT * FROM room"), "kitchen|21.5");
}

TEST_F(FirstStepsTest, PrintsWhyItFailed)
{
    EXPECT_THAT(RunIn("/proc"), FailedWithOneLine(111, "Create directory failed: first-steps/home.db"));
}

TEST_F(FirstStepsTest, IsTheExampleInTheReadme)
{
    const std::string example = FileContent(TKOSQLLITE_SOURCE_DIR "/examples/first_steps/main.cpp");
    EXPECT_THAT(FileContent(TKOSQLLITE_SOURCE_DIR "/README.md"),
                testing::HasSubstr("```cpp program\n" + example + "```\n"));
}

} // namespace

} // namespace Morvik::sql::tests
