#include <sql/SqlCommand.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>

#include "support/SqliteCallRecorder.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using testing::IsEmpty;

// When a row is available to the column reads, and when they return their defaults.
class SqlCommandRowTest : public WithOpenDatabase {
protected:
    void StepTo(const std::string& sql)
    {
        ASSERT_TRUE(command.Prepare(sql));
        ASSERT_TRUE(command.Step());
        ASSERT_TRUE(command.HasRowData());
    }

    // Every column read returns its default without calling SQLite.
    void ExpectNoRow() const
    {
        const SqliteCallRecorder sqlite;

        EXPECT_EQ(command.ColumnCount(), 0);
        EXPECT_FALSE(command.ColumnIsNull(0));
        EXPECT_EQ(command.ColumnInt(0), 0);
        EXPECT_EQ(command.ColumnInt64(0), 0);
        EXPECT_EQ(command.ColumnDouble(0), 0.0);
        EXPECT_EQ(command.ColumnText(0), "");
        EXPECT_EQ(command.ColumnBlob(0).data(), nullptr);
        EXPECT_EQ(command.ColumnBlob(0).size(), 0U);
        EXPECT_THAT(sqlite.Calls(), IsEmpty());
    }

    SqlCommand command{database};
};

// The row holds the values 12 and NULL: both differ from the defaults of the reads.
TEST_F(SqlCommandRowTest, NoRowIsAvailableBeforeTheFirstStep)
{
    ExpectNoRow();
    command.Prepare("SELECT 12, NULL");
    ExpectNoRow();
}

TEST_F(SqlCommandRowTest, NoRowIsAvailableAtTheEnd)
{
    StepTo("SELECT 12");

    command.Step();

    ExpectNoRow();
}

TEST_F(SqlCommandRowTest, NoRowIsAvailableAfterReset)
{
    StepTo("SELECT 12");

    command.Reset();

    ExpectNoRow();
    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnInt(0), 12);
}

TEST_F(SqlCommandRowTest, NoRowIsAvailableAfterABind)
{
    StepTo("SELECT 12, ?");

    command.BindInteger(1, 1);

    ExpectNoRow();
}

TEST_F(SqlCommandRowTest, NoRowIsAvailableAfterClearBindings)
{
    StepTo("SELECT 12 UNION ALL SELECT 13");

    command.ClearBindings();

    ExpectNoRow();
    EXPECT_TRUE(command.Step());
    EXPECT_EQ(command.ColumnInt(0), 13);
}

TEST_F(SqlCommandRowTest, NoRowIsAvailableAfterFinalize)
{
    StepTo("SELECT 12");

    command.Finalize();

    ExpectNoRow();
}

TEST_F(SqlCommandRowTest, NoRowIsAvailableAfterExecute)
{
    StepTo("SELECT 12");

    command.Execute("SELECT 1");

    ExpectNoRow();
}

TEST_F(SqlCommandRowTest, NoRowIsAvailableWhenFinalizeAnswersARow)
{
    StepTo("SELECT 12");
    {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_finalize", SQLITE_ROW, true);
        command.Finalize();
        EXPECT_FALSE(sqlite.Pending());
    }

    EXPECT_TRUE(command.HasRowData());
    ExpectNoRow();
}

} // namespace

} // namespace Morvik::sql::tests
