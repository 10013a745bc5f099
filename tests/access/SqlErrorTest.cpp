#include <sql/SqlError.h>

#include <gtest/gtest.h>

#include <ostream>
#include <type_traits>

#include "support/HasError.h"

namespace Morvik::sql::tests {

namespace {

static_assert(!std::is_polymorphic_v<SqlError>);

TEST(SqlErrorTest, FreshRecordIsASuccessWithoutAMessage)
{
    const SqlError error;

    EXPECT_THAT(error, HasError(0, ""));
    EXPECT_TRUE(error.Succeeded());
    EXPECT_FALSE(error.Failed());
    EXPECT_FALSE(error.HasRowData());
}

struct CodeCase {
    const char* name;
    int code;
    bool succeeded;
    bool hasRowData;

    friend void PrintTo(const CodeCase& codeCase, std::ostream* stream) { *stream << codeCase.name; }
};

class SqlErrorCodeTest : public testing::TestWithParam<CodeCase> {};

TEST_P(SqlErrorCodeTest, CountsAsSuccessOrFailure)
{
    SqlError error;

    error.SetError(GetParam().code);

    EXPECT_EQ(error.GetLastError(), GetParam().code);
    EXPECT_EQ(error.Succeeded(), GetParam().succeeded);
    EXPECT_EQ(error.Failed(), !GetParam().succeeded);
    EXPECT_EQ(error.HasRowData(), GetParam().hasRowData);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, SqlErrorCodeTest,
    testing::Values(CodeCase{"Ok", 0, true, false}, CodeCase{"Row", 100, true, true},
                    CodeCase{"Done", 101, true, false}, CodeCase{"Error", 1, false, false},
                    CodeCase{"Misuse", 21, false, false}, CodeCase{"BelowRow", 99, false, false},
                    CodeCase{"AboveDone", 102, false, false}, CodeCase{"CaughtException", 110, false, false},
                    CodeCase{"NotOpen", 111, false, false}, CodeCase{"MissingValue", 112, false, false},
                    CodeCase{"NoSuchTable", 113, false, false}, CodeCase{"Negative", -1, false, false}),
    [](const auto& codeCase) { return codeCase.param.name; });

TEST(SqlErrorTest, MessageLeavesTheCodeAndTheNextCodeEmptiesTheMessage)
{
    SqlError error;
    error.SetError(5);

    error.SetErrorMsg("database is locked");
    EXPECT_THAT(error, HasError(5, "database is locked"));

    error.SetError(0);
    EXPECT_THAT(error, HasError(0, ""));
}

TEST(SqlErrorTest, MessageIsTakenWithoutACopy)
{
    SqlError error;
    std::string message(100, 'x');
    const char* const bytes = message.data();

    error.SetErrorMsg(std::move(message));

    EXPECT_EQ(error.GetLastErrorMsg().data(), bytes);
}

} // namespace

} // namespace Morvik::sql::tests
