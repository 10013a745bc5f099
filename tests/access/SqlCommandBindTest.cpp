#include <sql/SqlCommand.h>

#include <sql/SqlDatabase.h>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "support/RawSqlite.h"
#include "support/WithOpenDatabase.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;
using testing::ElementsAreArray;

class SqlCommandBindTest : public WithOpenDatabase {
protected:
    SqlCommandBindTest() { command.Execute("CREATE TABLE t(a)"); }

    // The value in the table after the statement has run with its parameter bound.
    std::string Stored()
    {
        EXPECT_TRUE(command.Step());
        EXPECT_TRUE(command.Finalize());
        return RawSqlite(path).Value("SELECT a FROM t ORDER BY rowid DESC");
    }

    std::string StoredType() { return RawSqlite(path).Value("SELECT typeof(a) FROM t ORDER BY rowid DESC"); }

    SqlCommand command{database};
};

TEST_F(SqlCommandBindTest, IntegersAreStoredExactly)
{
    for (const int value : {0, 1, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        command.Prepare("INSERT INTO t VALUES (?)");

        EXPECT_TRUE(command.BindInteger(1, value));

        EXPECT_EQ(Stored(), std::to_string(value));
        EXPECT_EQ(StoredType(), "'integer'");
    }
}

TEST_F(SqlCommandBindTest, WideIntegersAreStoredExactly)
{
    for (const long long value : {0LL, 1LL << 31, -(1LL << 31) - 1, 1LL << 32, (1LL << 53) + 1,
                                  std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()}) {
        command.Prepare("INSERT INTO t VALUES (?)");

        EXPECT_TRUE(command.BindInt64(1, value));

        EXPECT_EQ(Stored(), std::to_string(value));
        EXPECT_EQ(StoredType(), "'integer'");
    }
}

TEST_F(SqlCommandBindTest, RealsComeBackBitForBit)
{
    using Limits = std::numeric_limits<double>;
    for (const double value : {0.0, -0.0, 0.1, -1.5, 1e300, 9007199254740993.0, Limits::min(), Limits::denorm_min(),
                               Limits::max(), Limits::lowest(), Limits::infinity(), -Limits::infinity()}) {
        command.Prepare("SELECT ?");

        EXPECT_TRUE(command.BindDouble(1, value));

        ASSERT_TRUE(command.Step());
        EXPECT_EQ(command.ColumnDouble(0), value);
        EXPECT_EQ(std::signbit(command.ColumnDouble(0)), std::signbit(value));
        command.Finalize();
    }
}

TEST_F(SqlCommandBindTest, NotANumberIsBoundAsNullBySqlite)
{
    command.Prepare("INSERT INTO t VALUES (?)");

    EXPECT_TRUE(command.BindDouble(1, std::numeric_limits<double>::quiet_NaN()));

    EXPECT_EQ(Stored(), "NULL");
}

TEST_F(SqlCommandBindTest, TextsAreStoredByteForByte)
{
    for (const std::string_view text :
         {""sv, "a"sv, "it's \"quoted\""sv, "a\0b"sv, "\0"sv, "\xC3\xA4"sv, "\xFF\xFE"sv}) {
        command.Prepare("INSERT INTO t VALUES (?)");

        EXPECT_TRUE(command.BindText(1, text));

        ASSERT_TRUE(command.Step());
        command.Finalize();
        command.Prepare("SELECT a, typeof(a) FROM t ORDER BY rowid DESC");
        ASSERT_TRUE(command.Step());
        EXPECT_EQ(command.ColumnText(0), text);
        EXPECT_EQ(command.ColumnText(1), "text");
        command.Finalize();
    }
}

TEST_F(SqlCommandBindTest, BlobsAreStoredByteForByte)
{
    const unsigned char bytes[] = {0x00, 0xFF, 0x27, 0x00, 0x80};
    command.Prepare("INSERT INTO t VALUES (?)");

    EXPECT_TRUE(command.BindBlob(1, bytes));

    EXPECT_EQ(Stored(), "X'00FF270080'");
}

TEST_F(SqlCommandBindTest, DataThatIsEmptyButThereIsStoredEmpty)
{
    const unsigned char byte = 1;

    command.Prepare("INSERT INTO t VALUES (?)");
    EXPECT_TRUE(command.BindText(1, ""));
    EXPECT_EQ(Stored(), "''");

    command.Prepare("INSERT INTO t VALUES (?)");
    EXPECT_TRUE(command.BindBlob(1, {&byte, 0}));
    EXPECT_EQ(Stored(), "X''");
}

TEST_F(SqlCommandBindTest, DataThatIsNotThereIsStoredAsNull)
{
    command.Prepare("INSERT INTO t VALUES (?)");
    EXPECT_TRUE(command.BindText(1, {}));
    EXPECT_EQ(Stored(), "NULL");

    command.Prepare("INSERT INTO t VALUES (?)");
    EXPECT_TRUE(command.BindBlob(1, {}));
    EXPECT_EQ(Stored(), "NULL");
}

TEST_F(SqlCommandBindTest, TextMayBePartOfALongerOne)
{
    command.Prepare("INSERT INTO t VALUES (?)");

    EXPECT_TRUE(command.BindText(1, "abcdef"sv.substr(1, 3)));

    EXPECT_EQ(Stored(), "'bcd'");
}

TEST_F(SqlCommandBindTest, CallersBuffersNeedNotOutliveTheCall)
{
    command.Prepare("SELECT ?, ?");
    {
        std::string text(100, 'a');
        std::vector<unsigned char> bytes(100, 0x61);
        command.BindText(1, text);
        command.BindBlob(2, bytes);
        text.assign(100, 'z');
        bytes.assign(100, 0x7A);
    }

    command.Step();

    EXPECT_EQ(command.ColumnText(0), std::string(100, 'a'));
    EXPECT_THAT(command.ColumnBlob(1), ElementsAreArray(std::vector<unsigned char>(100, 0x61)));
}

TEST_F(SqlCommandBindTest, DataBeyondSqlitesLimitIsRefused)
{
    sqlite3_limit(database.GetNativeDatabaseInstance<sqlite3>(), SQLITE_LIMIT_LENGTH, 100);
    command.Prepare("SELECT ?");

    EXPECT_FALSE(command.BindText(1, std::string(101, 'a')));
    EXPECT_EQ(command.GetLastError(), SQLITE_TOOBIG);
    EXPECT_FALSE(command.BindBlob(1, std::vector<unsigned char>(101)));
    EXPECT_EQ(command.GetLastError(), SQLITE_TOOBIG);
    EXPECT_TRUE(command.BindText(1, std::string(100, 'a')));
}

// SQLite checks only the size here, so the bytes need not exist. If the size were cut to an int, it would be negative,
// and SQLite would bind "abc".
TEST_F(SqlCommandBindTest, DataTooLongForSqlitesIntegerIsRefusedAndNotCut)
{
    const std::size_t size = std::size_t{std::numeric_limits<int>::max()} + 6;
    const char text[] = "abc";
    const unsigned char bytes[] = {1, 2, 3};
    command.Prepare("SELECT ?");

    EXPECT_FALSE(command.BindText(1, {text, size}));
    EXPECT_EQ(command.GetLastError(), SQLITE_TOOBIG);
    EXPECT_FALSE(command.BindBlob(1, {bytes, size}));
    EXPECT_EQ(command.GetLastError(), SQLITE_TOOBIG);
}

TEST_F(SqlCommandBindTest, ClearBindingsSetsEveryParameterToNull)
{
    command.Prepare("SELECT ?, ?");
    command.BindInteger(1, 1);
    command.BindText(2, "a");

    const bool cleared = command.ClearBindings();

    EXPECT_TRUE(cleared);
    EXPECT_TRUE(command.Step());
    EXPECT_TRUE(command.ColumnIsNull(0));
    EXPECT_TRUE(command.ColumnIsNull(1));
}

} // namespace

} // namespace Morvik::sql::tests
