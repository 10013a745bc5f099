#include <sql/SqlError.h>

#include <string>
#include <utility>

#include "support/HasError.h"

namespace Morvik::sql::tests {

namespace {

TEST(SqlErrorTest, StartsWithCodeZeroAndNoMessage)
{
    EXPECT_THAT(SqlError(), HasError(0, ""));
}

TEST(SqlErrorTest, ZeroRowAndDoneAreTheSuccesses)
{
    for (const int code : {0, 1, 21, 99, 100, 101, 102, 110, 111, 112, 113, -1}) {
        SqlError error;
        error.SetError(code);

        EXPECT_EQ(error.GetLastError(), code);
        EXPECT_EQ(error.Succeeded(), code == 0 || code == 100 || code == 101) << code;
        EXPECT_EQ(error.Failed(), !error.Succeeded()) << code;
        EXPECT_EQ(error.HasRowData(), code == 100) << code;
    }
}

TEST(SqlErrorTest, MessageKeepsTheCodeAndCodeEmptiesTheMessage)
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
