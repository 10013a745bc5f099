#include <sql/SqlCommand.h>
#include <sql/SqlTable.h>

#include <functional>
#include <new>
#include <utility>

#include "support/OpenConnection.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;

// The texts and bytes of a row, read by a command, by a cursor and by the values of the cursor.
class ColumnBytesTest : public OpenConnection {
protected:
    void Read(const std::string& sql)
    {
        command.Finalize();
        StepTo(sql);
        ReadRow(sql);
    }
};

TEST_F(ColumnBytesTest, BytesAreCompleteAndTextOfACursorEndsAtAZeroByte)
{
    using Column = std::pair<const char*, std::string>;
    for (const auto& [sql, bytes] :
         {Column("'it''s'", "it's"), Column("'ab' || char(0) || 'cd'", "ab\0cd"s), Column("char(0)", "\0"s),
          Column("CAST(x'FF80' AS TEXT)", "\xFF\x80"), Column("x'00FF0001'", "\0\xFF\0\x01"s), Column("x'07'", "\x07"),
          Column("zeroblob(3)", "\0\0\0"s), Column("12", "12"), Column("''", ""), Column("x''", "")}) {
        SCOPED_TRACE(sql);
        Read("SELECT " + std::string(sql));
        const std::string textOfCursor = bytes.c_str();
        sqlite3_stmt* const ofTable = sqlite3_next_stmt(Handle(), nullptr); // the newest statement is the first
        sqlite3_stmt* const ofCommand = sqlite3_next_stmt(Handle(), ofTable);

        EXPECT_EQ(command.ColumnText(0), bytes);
        EXPECT_THAT(command.ColumnBlob(0),
                    ElementsAreArray(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
        EXPECT_EQ(command.ColumnBlob(0).data(), sqlite3_column_blob(ofCommand, 0));
        EXPECT_EQ(table.GetText(0), textOfCursor);
        EXPECT_EQ(table.GetLength(0), static_cast<int>(bytes.size()));
        EXPECT_EQ(table.GetBlob(0), sqlite3_column_blob(ofTable, 0));
        EXPECT_EQ(table[0].GetValue<std::string>(), textOfCursor);
        EXPECT_THAT(table[0].GetValue<std::vector<char>>(), ElementsAreArray(bytes));
    }
}

// If the pointer were read before the length, it would point to two bytes for each letter, but the length would be that
// of the text in UTF-8.
TEST_F(ColumnBytesTest, TextOfAUtf16DatabaseIsReadAsUtf8)
{
    ASSERT_TRUE(command.Execute("PRAGMA encoding = 'UTF-16'; CREATE TABLE t(a); INSERT INTO t VALUES ('abc')"));
    Read("SELECT a, a FROM t");

    EXPECT_THAT(command.ColumnBlob(0), ElementsAre('a', 'b', 'c'));
    EXPECT_EQ(command.ColumnText(1), "abc");
    EXPECT_THAT(table[0].GetValue<std::vector<char>>(), ElementsAre('a', 'b', 'c'));
    EXPECT_EQ(table[1].GetValue<std::string>(), "abc");
}

TEST_F(ColumnBytesTest, BytesThatSqliteCannotReturnAreOutOfMemory)
{
    const std::pair<const char*, std::function<void()>> reads[] = {
        {"sqlite3_column_text", [&] { command.ColumnText(0); }},
        {"sqlite3_column_blob", [&] { command.ColumnBlob(0); }},
        {"sqlite3_column_text", [&] { table.GetText(0); }},
        {"sqlite3_value_text", [&] { table[0].GetValue<std::string>(); }},
        {"sqlite3_value_blob", [&] { table[0].GetValue<std::vector<char>>(); }}};
    Read("SELECT 'a'");
    for (const auto& [function, read] : reads) {
        const ReplacedResult replaced(function);

        EXPECT_THROW(read(), std::bad_alloc) << function;
    }
}

} // namespace

} // namespace Morvik::sql::tests
