#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/Cells.h"
#include "support/NumberLocales.h"
#include "support/OpenFacade.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

// The text of an update, also if a cell has no SQL text.

struct TextCase {
    const char* name;
    DbTableDataWrite data;
    std::string condition;
    std::string text;
    bool accepted;
};

class DatabaseApiUpdateTextTest : public OpenFacade, public testing::WithParamInterface<TextCase> {};

TEST_P(DatabaseApiUpdateTextTest, IsExecutedAsItStandsAndLeavesSqlitesRecord)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE t (a, b)"));
    const RawFailure plain = FailureOfExec(RawSqlite(path).Handle(), GetParam().text);
    const SqliteCallRecorder sqlite;

    EXPECT_EQ(database.UpdateTableValues("t", GetParam().data, GetParam().condition), GetParam().accepted);

    EXPECT_THAT(sqlite.Executed(), ElementsAre(GetParam().text));
    EXPECT_THAT(database, HasError(plain.code, plain.message));
}

INSTANTIATE_TEST_SUITE_P(
    Requests, DatabaseApiUpdateTextTest,
    testing::Values(
        TextCase{"OneColumn", {{"a"}, {{{IntegerCell(1)}}}}, "WHERE a=2", "UPDATE t SET (a)=(1) WHERE a=2", true},
        TextCase{"NoCondition", {{"a"}, {{{IntegerCell(1)}}}}, "", "UPDATE t SET (a)=(1) ", true},
        TextCase{
            "ConditionAsGiven", {{"a"}, {{{IntegerCell(1)}}}}, " where b ", "UPDATE t SET (a)=(1)  where b ", true},
        TextCase{"LeadingEmptyColumn", {{"", "a"}, {{{IntegerCell(1)}}}}, "", "UPDATE t SET (a)=(1) ", true},
        TextCase{"TwoRows", {{"a"}, {{{IntegerCell(1)}}, {{IntegerCell(2)}}}}, "", "UPDATE t SET (a)=(1) ", true},
        TextCase{"OnlyEmptyColumns", {{"", ""}, {{{IntegerCell(1)}}}}, "", "UPDATE t SET=(1) ", false},
        TextCase{"InnerEmptyColumn", {{"a", "", "b"}, {{{IntegerCell(1)}}}}, "", "UPDATE t SET (a,,b)=(1) ", false},
        TextCase{"TrailingEmptyColumn", {{"a", ""}, {{{IntegerCell(1)}}}}, "", "UPDATE t SET (a,)=(1) ", false},
        TextCase{"NoRows", {{"a"}, {}}, "WHERE a=2", "UPDATE t SET (a)=WHERE a=2", false},
        TextCase{
            "FirstRowWithoutCells", {{"a"}, {{}, {{IntegerCell(1)}}}}, "WHERE 1", "UPDATE t SET (a)=WHERE 1", false},
        TextCase{"NothingAfterTheSign", {{"a"}, {}}, "", "UPDATE t SET (a)=", false},
        TextCase{"TooManyCells", {{"a"}, {{{IntegerCell(1), IntegerCell(2)}}}}, "", "UPDATE t SET (a)=(1,2) ", false},
        TextCase{"TooFewCells", {{"a", "b"}, {{{IntegerCell(1)}}}}, "", "UPDATE t SET (a,b)=(1) ", false},
        TextCase{"InvalidFirstCell",
                 {{"a", "b"}, {{{InvalidCell(), IntegerCell(1)}}}},
                 "WHERE a=2",
                 "UPDATE t SET (a,b)=WHERE a=2",
                 false},
        TextCase{"InvalidLaterCell",
                 {{"a", "b"}, {{{IntegerCell(1), InvalidCell(), IntegerCell(2)}}}},
                 "WHERE a=2",
                 "UPDATE t SET (a,b)=(1,) WHERE a=2",
                 false}),
    [](const auto& textCase) { return textCase.param.name; });

class DatabaseApiInvalidUpdateTest : public OpenFacade {
protected:
    /// Updates while SQLite accepts every text, because only then the facade's error about a cell stays in the record.
    void UpdateAccepted(const std::vector<DbTableRowValues>& rows)
    {
        SqliteCallRecorder sqlite;
        sqlite.ReplaceNextResult("sqlite3_exec", 0, false);
        EXPECT_FALSE(database.UpdateTableValues("t", {{"a"}, rows}, "WHERE a=2"));
        EXPECT_FALSE(sqlite.Pending());
    }
};

TEST_F(DatabaseApiInvalidUpdateTest, FirstInvalidCellOfTheFirstRowIsNamed)
{
    UpdateAccepted({{{IntegerCell(1), InvalidCell(9), InvalidCell(8)}}, {{InvalidCell(7)}}});
    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)1|9"));

    UpdateAccepted({{{InvalidCell()}}});
    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)0|0"));
}

TEST_F(DatabaseApiInvalidUpdateTest, NumbersOfTheMessageFollowTheProcessWideLocale)
{
    DbTableRowValues row;
    row.cells.assign(1000, IntegerCell(1));
    row.cells.push_back(InvalidCell(UINT32_MAX));
    const ScopedGlobalLocale locale;

    UpdateAccepted({row});

    EXPECT_THAT(database, HasError(112, "Invalid column value: (row | column)1.000|4.294.967.295"));
}

TEST_F(DatabaseApiInvalidUpdateTest, NumberThatTheLocaleCannotWriteIsAnInvalidCell)
{
    ASSERT_TRUE(database.Execute("CREATE TABLE t (a); INSERT INTO t VALUES (7)"));
    const DbTableDataWrite data{{"a"}, {{{IntegerCell(1)}}}};
    const std::string prefix = "Invalid column value: (row | column)";
    for (const auto& [throws, message] : {std::pair(false, prefix + "|"), std::pair(true, prefix)}) {
        const ScopedGlobalLocale locale(std::locale(std::locale::classic(), new FixedNumbers("", throws)));

        EXPECT_FALSE(database.UpdateTableValues("t", data, "(a + 1)")) << "the statement is run without the cell";

        EXPECT_THAT(database, HasError(112, message));
    }
    EXPECT_THAT(PlainRows("SELECT a FROM t"), ElementsAre(ElementsAre("9")));
}

} // namespace

} // namespace Morvik::sql::tests
