#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "support/Cells.h"
#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DatabaseApiUpdatingTest : public OpenFacade {
protected:
    DatabaseApiUpdatingTest()
    {
        EXPECT_TRUE(database.Execute("CREATE TABLE person (id UNIQUE, name, age);"
                                     "INSERT INTO person VALUES (3, 'Ann', 30), (4, 'Eve', 40)"));
    }

    std::vector<std::vector<std::string>> Persons() const { return PlainRows("SELECT id, name, age FROM person"); }
};

TEST_F(DatabaseApiUpdatingTest, AssignsAllColumnsOfTheSelectedRowsWithOneStatement)
{
    const SqliteCallRecorder sqlite;

    EXPECT_TRUE(
        database.UpdateTableValues("person", {{"name", "age"}, {{{TextCell("Bob"), IntegerCell(42)}}}}, "WHERE id=3"));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(sqlite.Calls(),
                ElementsAre(R"(sqlite3_exec(handle, UPDATE person SET (name,age)=("Bob",42) WHERE id=3, null, null))"));
    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("3", "'Bob'", "42"), ElementsAre("4", "'Eve'", "40")));
}

TEST_F(DatabaseApiUpdatingTest, WithoutAConditionEveryRowIsChanged)
{
    EXPECT_TRUE(database.UpdateTableValues("person", {{"age"}, {{{IntegerCell(1)}}}}, ""));

    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("3", "'Ann'", "1"), ElementsAre("4", "'Eve'", "1")));
}

TEST_F(DatabaseApiUpdatingTest, SelectingNoRowIsASuccess)
{
    EXPECT_TRUE(database.UpdateTableValues("person", {{"age"}, {{{IntegerCell(1)}}}}, "WHERE id=5"));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("3", "'Ann'", "30"), ElementsAre("4", "'Eve'", "40")));
}

TEST_F(DatabaseApiUpdatingTest, OnlyTheFirstRowIsAssigned)
{
    EXPECT_TRUE(database.UpdateTableValues("person", {{"age"}, {{{IntegerCell(1)}}, {{InvalidCell()}}}}, "WHERE id=3"));

    EXPECT_THAT(database, HasError(0, ""));
    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("3", "'Ann'", "1"), ElementsAre("4", "'Eve'", "40")));
}

TEST_F(DatabaseApiUpdatingTest, TextEqualToAColumnNameAssignsThatColumn)
{
    EXPECT_TRUE(database.UpdateTableValues("person", {{"name"}, {{{TextCell("age")}}}}, "WHERE id=3"));

    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("3", "30", "30"), ElementsAre("4", "'Eve'", "40")));
}

TEST_F(DatabaseApiUpdatingTest, TextIsStoredWithItsApostrophesDoubled)
{
    EXPECT_TRUE(database.UpdateTableValues("person", {{"name"}, {{{TextCell("O'Brien")}}}}, "WHERE id=3"));

    EXPECT_EQ(PlainRows("SELECT hex(name) FROM person WHERE id=3"), PlainRows("SELECT hex('O''''Brien')"));
}

TEST_F(DatabaseApiUpdatingTest, SuccessResetsTheCodeAndKeepsTheMessage)
{
    FailWithMissingCommand();

    EXPECT_TRUE(database.UpdateTableValues("person", {{"age"}, {{{IntegerCell(1)}}}}, ""));

    EXPECT_THAT(database, HasError(0, "Missing command."));
}

TEST_F(DatabaseApiUpdatingTest, MissingNamesAreFoundFirstAndReachNothing)
{
    DatabaseApi closed;
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.UpdateTableValues("", {}, "WHERE id=3"));
    EXPECT_THAT(database, HasError(112, "Missing table name."));

    EXPECT_FALSE(database.UpdateTableValues("person", {{}, {{{InvalidCell()}}}}, "WHERE id=3"));
    EXPECT_THAT(database, HasError(112, "Missing column names."));

    EXPECT_FALSE(closed.UpdateTableValues("person", {}, ""));
    EXPECT_THAT(closed, HasError(112, "Missing column names."));
    EXPECT_THAT(sqlite.Calls(), IsEmpty());
}

TEST_F(DatabaseApiUpdatingTest, ViolatedConstraintTakesOverSqlitesRecordAndChangesNoRow)
{
    const RawFailure plain = PlainRejection("UPDATE person SET (id)=(5)");

    EXPECT_FALSE(database.UpdateTableValues("person", {{"id"}, {{{IntegerCell(5)}}}}, ""));

    EXPECT_EQ(plain.code, SQLITE_CONSTRAINT);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_THAT(Persons(), ElementsAre(ElementsAre("3", "'Ann'", "30"), ElementsAre("4", "'Eve'", "40")));
}

TEST(DatabaseApiClosedTest, UpdateAnswersWhatSqliteAnswersWithoutAConnection)
{
    const RawFailure plain = FailureOfExec(nullptr, "UPDATE t SET (a)=(1) ");
    DatabaseApi database;
    const SqliteCallRecorder sqlite;

    EXPECT_FALSE(database.UpdateTableValues("t", {{"a"}, {{{IntegerCell(1)}}}}, ""));

    EXPECT_EQ(plain.code, SQLITE_MISUSE);
    EXPECT_THAT(database, HasError(plain.code, plain.message));
    EXPECT_THAT(sqlite.Executed(), ElementsAre("UPDATE t SET (a)=(1) "));
}

} // namespace

} // namespace Morvik::sql::tests
