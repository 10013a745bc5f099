#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <new>
#include <string>
#include <vector>

#include "support/HasError.h"
#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

using testing::IsEmpty;

// A number is read as a text, and SQLite needs memory for the text. When it has none, the value becomes NULL.
class LostConversionTest : public testing::Test {
protected:
    static void SetUpTestSuite() { WrapSqliteAllocator(); }

    LostConversionTest()
    {
        EXPECT_TRUE(connection.Open(":memory:", false));
        EXPECT_TRUE(cursor.Open(query) && cursor.ReadNext());
        EXPECT_TRUE(command.Prepare(query) && command.Step());
    }

    // Reads the text while memory fails, and checks that memory was requested.
    template <typename Read>
    static auto WithoutMemory(const Read& read)
    {
        const OomInjector failing(0, FailureExtent::Once, Memory::OfSqlite);
        auto value = read();
        EXPECT_TRUE(failing.Fired());
        return value;
    }

    const std::string query = "SELECT 4294967296 UNION ALL SELECT 7";
    SqlDatabase connection;
    const SqlTable cursor{connection};
    SqlCommand command{connection};
};

TEST_F(LostConversionTest, TextIsNotReadAsNull)
{
    EXPECT_THROW(WithoutMemory([&] { return cursor.GetText(0); }), std::bad_alloc);

    ASSERT_TRUE(cursor.Open(query) && cursor.ReadNext());
    EXPECT_THROW(WithoutMemory([&] { return cursor[0].GetValue<std::string>(); }), std::bad_alloc);
}

TEST_F(LostConversionTest, TextOfNullIsALogicErrorAfterALostConversion)
{
    ASSERT_TRUE(cursor.Open("SELECT 4294967296, NULL") && cursor.ReadNext());
    EXPECT_THROW(WithoutMemory([&] { return cursor[0].GetValue<std::string>(); }), std::bad_alloc);
    ASSERT_EQ(sqlite3_errcode(connection.GetNativeDatabaseInstance<sqlite3>()), SQLITE_NOMEM);

    EXPECT_THROW(cursor.GetText(1), std::logic_error);
    EXPECT_THROW(cursor[1].GetValue<std::string>(), std::logic_error);

    ASSERT_TRUE(cursor.Open("SELECT NULL") && cursor.ReadNext());
    EXPECT_THROW(cursor.GetText(0), std::logic_error);
}

TEST_F(LostConversionTest, CommandTextIsEmptyAndTheNextStepFails)
{
    EXPECT_EQ(WithoutMemory([&] { return command.ColumnText(0); }), "");

    EXPECT_FALSE(command.Step());
    EXPECT_THAT(command, HasError(SQLITE_NOMEM, "out of memory"));
    EXPECT_FALSE(command.Finalize());
}

TEST_F(LostConversionTest, BytesOfACommandAreEmptyAndFinalizeFails)
{
    EXPECT_THAT(WithoutMemory([&] { return command.ColumnBlob(0); }), IsEmpty());

    EXPECT_FALSE(command.Finalize());
    EXPECT_EQ(command.GetLastError(), SQLITE_NOMEM);
}

TEST_F(LostConversionTest, BytesOfAValueAreEmptyAndCloseFails)
{
    EXPECT_THAT(WithoutMemory([&] { return cursor[0].GetValue<std::vector<char>>(); }), IsEmpty());

    EXPECT_FALSE(cursor.ReadNext());
    EXPECT_EQ(cursor.GetLastError(), SQLITE_ERROR);
    EXPECT_FALSE(cursor.Close());
    EXPECT_THAT(cursor, HasError(SQLITE_NOMEM, "out of memory"));
}

TEST_F(LostConversionTest, LengthIsZeroAndCloseFails)
{
    EXPECT_EQ(WithoutMemory([&] { return cursor.GetLength(0); }), 0);

    EXPECT_FALSE(cursor.Close());
    EXPECT_EQ(cursor.GetLastError(), SQLITE_NOMEM);
}

} // namespace

} // namespace Morvik::sql::tests
