#include <string>
#include <utility>

#include "api/FacadeTest.h"
#include "support/DoubleQuotedTexts.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

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

    bool Update(const std::string& column, const DbTableColumnValue& cell)
    {
        return database.UpdateTableValues("room", {{column}, {{{cell}}}}, "");
    }

    std::vector<std::vector<std::string>> Stored()
    {
        DbTableData data;
        EXPECT_TRUE(database.ReadTableValues("room", data));
        return CellTexts(data);
    }

    const DoubleQuotedTexts rejected{false};
    DatabaseApi database;
};

TEST_F(DatabaseApiDoubleQuotedTextsTest, RejectedTextGivesAnErrorAndChangesNothing)
{
    Open();
    for (const auto& [name, cell] :
         {std::pair("kitchen", TextCell("kitchen")), std::pair("", TextCell("")), std::pair("ab", BlobCell("ab"))}) {
        const RawFailure unknown = FailureOfExec(RawSqlite(":memory:").Handle(), std::string("SELECT \"") + name + '"');

        EXPECT_FALSE(Write(cell));
        EXPECT_THAT(database, HasErrorOf(unknown));
        EXPECT_FALSE(Update("name", cell));
        EXPECT_THAT(database, HasErrorOf(unknown));
        EXPECT_THAT(unknown.message, testing::StartsWith("no such column: "));
    }

    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(hall)", "1:Integer int(1)")));
}

TEST_F(DatabaseApiDoubleQuotedTextsTest, NumbersAndBoundTextsNeedNoDoubleQuotes)
{
    Open();

    EXPECT_TRUE(Update("n", IntegerCell(2)));
    SqlCommand update = database.PrepareStatement("UPDATE room SET name = ?");
    EXPECT_TRUE(update.BindText(1, "kitchen") && update.Step());

    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(kitchen)", "1:Integer int(2)")));
}

TEST_F(DatabaseApiDoubleQuotedTextsTest, ApplicationCanEnableDoubleQuotedTexts)
{
    const DoubleQuotedTexts accepted(true);
    Open();

    EXPECT_TRUE(Update("name", TextCell("kitchen")));
    EXPECT_TRUE(Write(TextCell("attic")));

    EXPECT_THAT(Stored(), ElementsAre(ElementsAre("0:Text string(kitchen)", "1:Integer int(1)"),
                                      ElementsAre("0:Text string(attic)", "1:None string()")));
}

} // namespace

} // namespace Morvik::sql::tests
