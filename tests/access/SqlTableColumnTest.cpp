#include <sql/SqlTable.h>

#include <stdexcept>

#include "support/AbandonedConnection.h"
#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::ThrowsMessage;

using SqlTableColumnTest = OpenConnection;

TEST_F(SqlTableColumnTest, EveryReadMakesItsCallsAndLeavesTheError)
{
    ReadRow("SELECT 'abc', 5000000000, 9007199254740993, 'text', x'01', 15");
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(table.Columns(), 6);
    EXPECT_EQ(table.GetLength(0), 3);
    EXPECT_EQ(table.GetInteger(1), 705032704) << "the low 32 bits";
    EXPECT_EQ(table.GetInt64(2), 9007199254740993);
    EXPECT_EQ(table.GetText(3), "text");
    EXPECT_NE(table.GetBlob(4), nullptr);
    EXPECT_NE(table.GetValue(5).ValueInstance(), nullptr);

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_column_count()", "sqlite3_column_bytes(0)", "sqlite3_column_int(1)",
                            "sqlite3_column_int64(2)", "sqlite3_column_type(3)", "sqlite3_column_text(3)",
                            "sqlite3_column_blob(4)", "sqlite3_column_value(5)"));
    EXPECT_THAT(table, HasError(SQLITE_ROW, ""));
}

// GetText() reads the type first, so that a value is not treated as NULL when its conversion runs out of memory.
TEST_F(SqlTableColumnTest, TextOfNullIsALogicError)
{
    SqlDatabase closed;
    EXPECT_THROW(SqlTable(closed).GetText(0), std::logic_error);

    ReadRow("SELECT NULL");
    const auto getText = [&] { table.GetText(0); };
    EXPECT_THAT(CallsDuring([&] { EXPECT_THAT(getText, ThrowsMessage<std::logic_error>("SQL NULL has no text.")); }),
                ElementsAre("sqlite3_column_type(0)"));
    EXPECT_THAT(table, HasError(SQLITE_ROW, ""));

    const AbandonedConnection abandoned(database);
    EXPECT_THROW(table.GetText(0), std::logic_error);
}

TEST_F(SqlTableColumnTest, IndexAndCursorAreNotChecked)
{
    const SqliteCallRecorder sqlite;
    EXPECT_EQ(table.GetInteger(0), 0);
    EXPECT_EQ(table.GetLength(0), 0);
    EXPECT_EQ(table.GetBlob(0), nullptr);
    EXPECT_EQ(table["id"].ValueInstance(), nullptr);
    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_column_int(0)", "sqlite3_column_bytes(0)",
                                            "sqlite3_column_blob(0)", "sqlite3_column_count()"));
    EXPECT_THAT(table, HasError(0, ""));

    ReadRow("SELECT 1");
    EXPECT_EQ(table.GetInteger(7), 0);
    EXPECT_EQ(table.GetInt64(-1), 0);
    EXPECT_THAT(sqlite.CallsOf("sqlite3_column_int64"), ElementsAre("sqlite3_column_int64(-1)"));
    EXPECT_THAT(table, HasError(SQLITE_ROW, ""));
}

TEST_F(SqlTableColumnTest, ValueWrapsTheColumnOfTheStatement)
{
    ReadRow("SELECT 10, 11");

    EXPECT_EQ(table.GetValue(1).ValueInstance(), sqlite3_column_value(sqlite3_next_stmt(Handle(), nullptr), 1));
    EXPECT_EQ(table[1].ValueInstance(), table.GetValue(1).ValueInstance());
    EXPECT_EQ(table[0].GetValue<int>(), 10);
    EXPECT_EQ(table[1].GetValue<int>(), 11);
}

TEST_F(SqlTableColumnTest, NameIsLookedUpColumnByColumn)
{
    ReadRow("SELECT 10 AS id, 11 AS name, 12 AS size");
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(table["name"].GetValue<int>(), 11);

    EXPECT_THAT(sqlite.Calls(),
                ElementsAre("sqlite3_column_count()", "sqlite3_column_name(0)", "sqlite3_column_name(1)",
                            "sqlite3_column_value(1)", "sqlite3_value_int()"));
    EXPECT_THAT(table, HasError(SQLITE_ROW, ""));
}

TEST_F(SqlTableColumnTest, NameMatchesOnlyEqualBytes)
{
    ReadRow("SELECT 10 AS id, 11 AS ' id', 12 AS '', 13 AS \"\xC3\xA4\"");

    EXPECT_EQ(table["id"].GetValue<int>(), 10);
    EXPECT_EQ(table[" id"].GetValue<int>(), 11);
    EXPECT_EQ(table[""].GetValue<int>(), 12);
    EXPECT_EQ(table["\xC3\xA4"].GetValue<int>(), 13);
    for (const std::string& name : {"ID"s, "Id"s, "i"s, "idx"s, "id "s, "id\0"s, "\0"s, "\xC3\x84"s}) {
        EXPECT_EQ(table[name].ValueInstance(), nullptr) << name;
    }
    EXPECT_THAT(table, HasError(SQLITE_ROW, ""));
}

TEST_F(SqlTableColumnTest, FirstColumnWithTheNameWins)
{
    ReadRow("SELECT 10 AS other, 11 AS id, 12 AS id");
    EXPECT_EQ(table["id"].GetValue<int>(), 11);

    const ReplacedResult replaced("sqlite3_column_name", 0, false, 1);
    EXPECT_EQ(table["id"].GetValue<int>(), 12);
}

} // namespace

} // namespace Morvik::sql::tests
