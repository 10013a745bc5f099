#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string Table = "t";
const std::string Query = "SELECT id, name, weight, picture FROM t ORDER BY name, id";
const std::string Conversions =
    "SELECT substr(name, 2), zeroblob(30), CAST(name AS BLOB), CAST(picture AS TEXT), upper(name) FROM t";
const std::string Failing = "SELECT name FROM t UNION ALL SELECT abs(-9223372036854775807 - 1)";

// Reads the row in place, because copying its cells is not safe when memory fails (see DbTableColumnValue).
void Note(Subject& subject, const DbTableRowValues& row)
{
    for (const DbTableColumnValue& cell : row.cells) {
        if (const auto* const integer = std::get_if<int>(&cell.value)) {
            subject.integer += *integer;
        } else if (const auto* const real = std::get_if<double>(&cell.value)) {
            subject.real += *real;
        } else if (const auto* const text = std::get_if<std::string>(&cell.value)) {
            subject.text += *text;
        } else if (const auto* const bytes = std::get_if<std::vector<char>>(&cell.value)) {
            subject.bytes.insert(subject.bytes.end(), bytes->begin(), bytes->end());
        }
        subject.result += static_cast<int>(cell.type) + static_cast<int>(cell.column);
    }
}

Report ReadTable(Subject& subject)
{
    return ReportOf(subject.facade->ReadTableValues(Table, subject.data), *subject.facade);
}

template <const std::string& Sql>
Report Read(Subject& subject)
{
    return ReportOf(subject.facade->ReadValues(Sql, subject.data), *subject.facade);
}

// A failed step has the generic code; closing returns the code of the failure.
Report ReadFailing(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    const bool read = facade.ReadValues(Failing, subject.data);
    if (facade.GetLastError() != 1) {
        return ReportOf(read, facade);
    }
    const bool closed = facade.CloseReadTable();
    return ReportOf(!read && !closed && facade.GetLastError() == 1, facade);
}

template <const std::string& Sql>
Report Walk(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    if (!facade.SqlQueryBegin(Sql)) {
        return ReportOf(false, facade);
    }
    while (facade.ReadNextRow(subject.row)) {
        Note(subject, subject.row);
    }
    return ReportOf(facade.Succeeded() && facade.CloseReadTable(), facade);
}

Report Iterate(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    if (!facade.SqlQueryBegin(Query)) {
        return ReportOf(false, facade);
    }
    for (const DbTableRowValues& row : facade) {
        Note(subject, row);
    }
    return ReportOf(facade.Succeeded() && facade.CloseReadTable(), facade);
}

// The query stays open until the next query begins or the facade is destroyed.
Report LeaveQueryOpen(Subject& subject)
{
    DatabaseApi& facade = *subject.facade;
    return ReportOf(facade.SqlQueryBegin(Query) && facade.ReadNextRow(subject.row), facade);
}

} // namespace

std::vector<Scenario> FacadeReadScenarios()
{
    return {
        {.name = "ReadTableValues",
         .arrange = OpenWarmFacade,
         .act = ReadTable,
         .least = {20, 5},
         .refusalsForSqlite = FailedStep},
        {.name = "ReadValues",
         .arrange = OpenFacade,
         .act = Read<Query>,
         .least = {20, 5},
         .refusalsForSqlite = FailedStep},
        {.name = "ReadConvertedValues",
         .arrange = OpenWarmFacade,
         .act = Read<Conversions>,
         .least = {20, 5},
         .refusalsForSqlite = FailedStep,
         .convertsText = true},
        {.name = "ReadValuesFailing", .arrange = OpenWarmFacade, .act = ReadFailing, .least = {20, 3}},
        {.name = "ReadNextRow",
         .arrange = OpenWarmFacade,
         .act = Walk<Query>,
         .least = {20, 5},
         .refusalsForSqlite = FailedStep},
        {.name = "ReadNextConvertedRow",
         .arrange = OpenWarmFacade,
         .act = Walk<Conversions>,
         .least = {20, 5},
         .refusalsForSqlite = FailedStep,
         .convertsText = true},
        {.name = "IterateOverRows",
         .arrange = OpenWarmFacade,
         .act = Iterate,
         .least = {20, 5},
         .refusalsForSqlite = FailedStep},
        {.name = "LeaveQueryOpen",
         .arrange = OpenWarmFacade,
         .act = LeaveQueryOpen,
         .least = {20, 2},
         .refusalsForSqlite = FailedStep},
    };
}

} // namespace Morvik::sql::tests
