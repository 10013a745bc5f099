// Rows that the facade writes, updates and reads.
#include <variant>

#include "Scenario.h"
#include "support/Cells.h"
#include "support/SoakMode.h"

namespace Morvik::sql::tests {

namespace {

const std::string Query = "SELECT id, name, weight, picture FROM t ORDER BY name, id";
const std::string Conversions =
    "SELECT substr(name, 2), zeroblob(30), CAST(name AS BLOB), CAST(picture AS TEXT), upper(name) FROM t";
const std::string Failing = "SELECT name FROM t UNION ALL " + Overflow;

void ArrangeRows(Subject& subject)
{
    OpenFacade(subject);
    subject.write.columns = {"name", "weight", "picture"};
    for (int row = 0; row < Rounds(3, 100); ++row) {
        subject.write.rows.push_back(
            {{TextCell(AllocatedText + std::to_string(row)), RealCell(0.1 + row), BlobCell("bytes of the picture")}});
    }
}

// Doubling the quotes needs a separate allocation.
void ArrangeQuotes(Subject& subject)
{
    Warm<OpenFacade>(subject);
    subject.write = {{"weight", "name"}, {{{IntegerCell(7), TextCell("O'Brien and O'Hara of \"The Blue Door\"")}}}};
}

void ArrangeInvalidCell(Subject& subject)
{
    Warm<OpenFacade>(subject);
    subject.write = {{"name", "weight"}, {{{TextCell("a"), InvalidCell(1)}}}};
}

void ArrangeTimes(Subject& subject)
{
    using enum DbTableColumnType;
    Warm<OpenFacade>(subject);
    subject.write = {
        {"name", "weight", "picture", "id"},
        {{{TagCell(DateTimeNow), TagCell(JulianDayNow), TagCell(DateTimeNowLocalTime), TagCell(UnixTimeNow)}}}};
}

bool Write(Subject& subject, DatabaseApi& facade)
{
    return facade.WriteTableValues("t", subject.write);
}

auto Update(const std::string& condition)
{
    return
        [=](Subject& subject, DatabaseApi& facade) { return facade.UpdateTableValues("t", subject.write, condition); };
}

auto Read(const std::string& sql)
{
    return [=](Subject& subject, DatabaseApi& facade) { return facade.ReadValues(sql, subject.data); };
}

// Reads the row in place, because copying its cells is not safe when memory fails (see DbTableColumnValue).
void Note(Subject& subject, const DbTableRowValues& row)
{
    for (const DbTableColumnValue& cell : row.cells) {
        std::visit([&](const auto& value) { subject.Note(value); }, cell.value);
        subject.result += static_cast<int>(cell.type) + static_cast<int>(cell.column);
    }
}

auto Walk(const std::string& sql)
{
    return [=](Subject& subject, DatabaseApi& facade) {
        if (!facade.SqlQueryBegin(sql)) {
            return false;
        }
        while (facade.ReadNextRow(subject.row)) {
            Note(subject, subject.row);
        }
        return facade.Succeeded() && facade.CloseReadTable();
    };
}

} // namespace

void AddRowScenarios(ScenarioList& list)
{
    const AllowedError nearParenthesis{1, "near \")\": syntax error"};
    list.Add("WriteTableValues", ArrangeRows, {40, 1}, Facade, Write);
    list.Add("WriteTextWithQuotes", ArrangeQuotes, {.ofSqlite = 25, .ofNew = 4, .errorsOfNew = {nearParenthesis}},
             Facade, Write);
    list.Add("WriteInvalidCell", ArrangeInvalidCell, {5, 3}, Facade, [](Subject& subject, DatabaseApi& facade) {
        return !Write(subject, facade) && facade.GetLastError() == 1;
    });
    list.Add("UpdateTableValues", ArrangeRows, {40, 1}, Facade, Update("WHERE id > 1"));
    list.Add("UpdateTextWithQuotes", ArrangeQuotes, {.ofSqlite = 40, .ofNew = 4, .errorsOfNew = {nearParenthesis}},
             Facade, Update("WHERE id > 1"));
    list.Add("UpdateNoRowWithTimes", ArrangeTimes, {20, 1}, Facade, Update("WHERE 0"));

    const Allocations reading{.ofSqlite = 20, .ofNew = 5, .errorsOfSqlite = FailedStep};
    Allocations converting = reading;
    converting.errorsOfSqlite.push_back(BadAlloc);
    list.Add("ReadTableValues", Warm<OpenFacade>, reading, Facade,
             [](Subject& subject, DatabaseApi& facade) { return facade.ReadTableValues("t", subject.data); });
    list.Add("ReadValues", OpenFacade, reading, Facade, Read(Query));
    list.Add("ReadConvertedValues", Warm<OpenFacade>, converting, Facade, Read(Conversions));
    // A failed step has the generic code; closing returns the code of the failure.
    list.Add("ReadValuesFailing", Warm<OpenFacade>, {20, 3}, Facade, [](Subject& subject, DatabaseApi& facade) {
        const bool read = facade.ReadValues(Failing, subject.data);
        if (facade.GetLastError() != 1) {
            return read;
        }
        const bool closed = facade.CloseReadTable();
        return !read && !closed && facade.GetLastError() == 1;
    });
    list.Add("ReadNextRow", Warm<OpenFacade>, reading, Facade, Walk(Query));
    list.Add("ReadNextConvertedRow", Warm<OpenFacade>, converting, Facade, Walk(Conversions));
    list.Add("IterateOverRows", Warm<OpenFacade>, reading, Facade, [](Subject& subject, DatabaseApi& facade) {
        if (!facade.SqlQueryBegin(Query)) {
            return false;
        }
        for (const DbTableRowValues& row : facade) {
            Note(subject, row);
        }
        return facade.Succeeded() && facade.CloseReadTable();
    });
    // The query stays open until the next query begins or the facade is destroyed.
    list.Add("LeaveQueryOpen", Warm<OpenFacade>, {.ofSqlite = 20, .ofNew = 2, .errorsOfSqlite = FailedStep}, Facade,
             [](Subject& subject, DatabaseApi& facade) {
                 return facade.SqlQueryBegin(Query) && facade.ReadNextRow(subject.row);
             });
}

} // namespace Morvik::sql::tests
