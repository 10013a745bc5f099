#include <string>

#include "api/FacadeTest.h"
#include "support/DoubleQuotedTexts.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::StartsWith;

// Text and blob cells are written between double quotation marks. A SQLite that was built with SQLITE_DQS=0, as its
// developers recommend, rejects them. An application can enable them for every connection that it opens.

class DatabaseApiDoubleQuotedTextsTest : public testing::Test {
protected:
    /// Opens a database with one row.
    void Open()
    {
        ASSERT_TRUE(database.OpenDatabase(":memory:", false));
        ASSERT_TRUE(database.Execute("CREATE TABLE room (name TEXT, n INTEGER); INSERT INTO room VALUES ('hall', 1)"));
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

    const DoubleQuotedTexts rejected{false};
    DatabaseApi database;
};

TEST_F(DatabaseApiDoubleQuotedTextsTest, RejectedTextsAreAnUnknownColumnAndChangeNothing)
{
    Open();

    EXPECT_FALSE(Write(TextCell("kitchen")));
    EXPECT_THAT(database, UnknownColumn("kitchen"));
    EXPECT_FALSE(Write(TextCell("")));
    EXPECT_THAT(database, UnknownColumn(""));
    EXPECT_FALSE(Write(BlobCell("ab")));
    EXPECT_THAT(database, UnknownColumn("ab"));
    EXPECT_FALSE(Update(TextCell("kitchen")));
    EXPECT_THAT(database, UnknownColumn("kitchen"));

    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(hall)", "1:Integer int(1)")));
}

TEST_F(DatabaseApiDoubleQuotedTextsTest, NumbersAndBoundTextsDoNotNeedThem)
{
    Open();

    EXPECT_TRUE(database.UpdateTableValues("room", {{"n"}, {{{IntegerCell(2)}}}}, ""));
    SqlCommand update = database.PrepareStatement("UPDATE room SET name = ?");
    EXPECT_TRUE(update.BindText(1, "kitchen") && update.Step());

    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(kitchen)", "1:Integer int(2)")));
}

TEST_F(DatabaseApiDoubleQuotedTextsTest, ApplicationCanSwitchThemOn)
{
    const DoubleQuotedTexts accepted(true);
    Open();

    EXPECT_TRUE(Update(TextCell("kitchen")));
    EXPECT_TRUE(Write(TextCell("attic")));

    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(kitchen)", "1:Integer int(1)"),
                                      ElementsAre("0:Text string(attic)", "1:None string()")));
}

} // namespace

} // namespace Morvik::sql::tests
