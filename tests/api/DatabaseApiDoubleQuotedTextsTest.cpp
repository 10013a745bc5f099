#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>

#include <string>

#include "support/Cells.h"
#include "support/DoubleQuotedTexts.h"
#include "support/HasError.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// Text and blob cells are written between double quotation marks. A SQLite that was built with SQLITE_DQS=0, as its
// developers recommend, rejects them. An application can enable them for every connection that it opens.

class DatabaseApiDoubleQuotedTextsTest : public testing::Test {
protected:
    void Open()
    {
        ASSERT_TRUE(database.OpenDatabase(":memory:", false));
        ASSERT_TRUE(database.Execute("CREATE TABLE room (name TEXT, n INTEGER)"));
    }

    bool Write(const DbTableColumnValue& cell) { return database.WriteTableValues("room", {{"name"}, {{{cell}}}}); }

    bool Update(const DbTableColumnValue& cell)
    {
        return database.UpdateTableValues("room", {{"name"}, {{{cell}}}}, "");
    }

    std::vector<std::vector<std::string>> Stored()
    {
        DbTableData data;
        EXPECT_TRUE(database.ReadTableValues("room", data));
        return CellTexts(data);
    }

    // Versions of SQLite word the message differently.
    static auto UnknownColumn(const std::string& name)
    {
        const RawFailure failure = FailureOfExec(RawSqlite(":memory:").Handle(), "SELECT \"" + name + '"');
        EXPECT_THAT(failure.message, StartsWith("no such column: "));
        return HasError(1, failure.message);
    }

    DatabaseApi database;
};

TEST_F(DatabaseApiDoubleQuotedTextsTest, RejectedOnesAreAnUnknownColumn)
{
    const DoubleQuotedTexts rejected(false);
    Open();

    EXPECT_FALSE(Write(TextCell("kitchen")));
    EXPECT_THAT(database, UnknownColumn("kitchen"));
    EXPECT_FALSE(Write(TextCell("")));
    EXPECT_THAT(database, UnknownColumn(""));
    EXPECT_FALSE(Write(BlobCell("ab")));
    EXPECT_THAT(database, UnknownColumn("ab"));

    EXPECT_THAT(Stored(), IsEmpty());
}

TEST_F(DatabaseApiDoubleQuotedTextsTest, RejectedOnesLeaveARowAsItWas)
{
    const DoubleQuotedTexts rejected(false);
    Open();
    ASSERT_TRUE(database.Execute("INSERT INTO room VALUES ('hall', 1)"));

    EXPECT_FALSE(Update(TextCell("kitchen")));

    EXPECT_THAT(database, UnknownColumn("kitchen"));
    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(hall)", "1:Integer int(1)")));
}

TEST_F(DatabaseApiDoubleQuotedTextsTest, NumbersAndBoundTextsDoNotNeedThem)
{
    const DoubleQuotedTexts rejected(false);
    Open();

    EXPECT_TRUE(database.WriteTableValues("room", {{"n"}, {{{IntegerCell(1)}}}}));
    SqlCommand update = database.PrepareStatement("UPDATE room SET name = ?");
    EXPECT_TRUE(update.BindText(1, "kitchen") && update.Step());

    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(kitchen)", "1:Integer int(1)")));
}

TEST_F(DatabaseApiDoubleQuotedTextsTest, AnApplicationCanSwitchThemOn)
{
    const DoubleQuotedTexts rejected(false);
    const DoubleQuotedTexts accepted(true);
    Open();

    EXPECT_TRUE(Write(TextCell("hall")));
    EXPECT_TRUE(Update(TextCell("kitchen")));

    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(kitchen)", "1:None string()")));
}

} // namespace

} // namespace Morvik::sql::tests
