#include <sql/SqlCommand.h>

#include <functional>

#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SqlCommandColumnTest : public OpenConnection {
protected:
    // Every column read returns its default without calling SQLite. The row, 12 and NULL, has other values.
    void ExpectNoRow() const
    {
        const SqliteCallRecorder sqlite;

        EXPECT_EQ(command.ColumnCount(), 0);
        EXPECT_FALSE(command.ColumnIsNull(1));
        EXPECT_EQ(command.ColumnInt(0), 0);
        EXPECT_EQ(command.ColumnInt64(0), 0);
        EXPECT_EQ(command.ColumnDouble(0), 0.0);
        EXPECT_EQ(command.ColumnText(0), "");
        EXPECT_EQ(command.ColumnBlob(0).data(), nullptr);
        EXPECT_EQ(command.ColumnBlob(0).size(), 0U);
        EXPECT_THAT(sqlite.Calls(), IsEmpty());
    }
};

TEST_F(SqlCommandColumnTest, OnlyAStepMakesARowAvailable)
{
    const struct {
        const char* name;
        std::function<void()> run;
        std::optional<int> next; // the number that the step after the operation reads
    } endings[] = {{"the end", [&] { command.Step(); }, 12},
                   {"Reset", [&] { command.Reset(); }, 12},
                   {"a bind", [&] { command.BindInteger(1, 1); }, std::nullopt},
                   {"ClearBindings", [&] { command.ClearBindings(); }, std::nullopt},
                   {"Execute", [&] { command.Execute("SELECT 1"); }, std::nullopt},
                   {"Finalize", [&] { command.Finalize(); }, std::nullopt}};
    ExpectNoRow();
    for (const auto& [name, run, next] : endings) {
        SCOPED_TRACE(name);
        command.Prepare("SELECT 12, ?");
        ExpectNoRow();
        command.Step();

        run();

        ExpectNoRow();
        EXPECT_EQ(NextInteger(command), next);
        command.Finalize();
    }
}

TEST_F(SqlCommandColumnTest, NoRowIsAvailableWhenFinalizeReturnsARow)
{
    StepTo("SELECT 12, NULL");
    {
        const ReplacedResult replaced("sqlite3_finalize", SQLITE_ROW, true);
        command.Finalize();
    }

    EXPECT_TRUE(command.HasRowData());
    ExpectNoRow();
}

TEST_F(SqlCommandColumnTest, ReadsMakeTheirCallsAndLeaveTheError)
{
    StepTo("SELECT 10, 5000000000, 9007199254740993, 0.1, 'ab', x'0102'");
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(command.ColumnCount(), 6);
    EXPECT_FALSE(command.ColumnIsNull(0));
    EXPECT_EQ(command.ColumnInt(1), 705032704) << "the low 32 bits";
    EXPECT_EQ(command.ColumnInt64(2), 9007199254740993);
    EXPECT_EQ(command.ColumnDouble(3), 0.1);
    EXPECT_EQ(command.ColumnText(4), "ab");
    EXPECT_THAT(command.ColumnBlob(5), ElementsAre(1, 2));

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_column_count()", "sqlite3_column_type(0)", "sqlite3_column_int(1)",
                            "sqlite3_column_int64(2)", "sqlite3_column_double(3)", "sqlite3_column_bytes(4)",
                            "sqlite3_column_text(4)", "sqlite3_column_bytes(5)", "sqlite3_column_blob(5)"));
    EXPECT_THAT(command, HasError(SQLITE_ROW, ""));
}

TEST_F(SqlCommandColumnTest, ColumnIsNullIsTrueOnlyForNull)
{
    StepTo("SELECT NULL, 0, 0.0, '', x''");

    for (int column = 0; column <= 5; ++column) { // SQLite returns NULL for a column that does not exist
        EXPECT_EQ(command.ColumnIsNull(column), column == 0 || column == 5) << column;
    }
}

TEST_F(SqlCommandColumnTest, EmptyValuesAndNullHaveNoBytes)
{
    StepTo("SELECT '', NULL, x'', zeroblob(0)");
    const SqliteCallRecorder sqlite;

    for (int column = 0; column < 4; ++column) {
        EXPECT_EQ(command.ColumnText(column), "") << column;
        EXPECT_EQ(command.ColumnBlob(column).data(), nullptr) << column;
        EXPECT_EQ(command.ColumnBlob(column).size(), 0U) << column;
    }
    EXPECT_THAT(sqlite.CallsOf("sqlite3_column_text"), IsEmpty());
    EXPECT_THAT(sqlite.CallsOf("sqlite3_column_blob"), IsEmpty());
}

} // namespace

} // namespace Morvik::sql::tests
