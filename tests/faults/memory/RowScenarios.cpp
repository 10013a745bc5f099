// Rows that the facade writes, updates and reads.
#include "Scenario.h"
#include "support/Cells.h"
#include "support/SoakMode.h"

namespace Morvik::sql::tests {

namespace {

const std::string Table = "t";
const std::string Condition = "WHERE id > 1";
const std::string NoRow = "WHERE 0";
const std::string Query = "SELECT id, name, weight, picture FROM t ORDER BY name, id";
const std::string Conversions =
    "SELECT substr(name, 2), zeroblob(30), CAST(name AS BLOB), CAST(picture AS TEXT), upper(name) FROM t";
const std::string Failing = "SELECT name FROM t UNION ALL SELECT abs(-9223372036854775807 - 1)";

void ArrangeRows(Subject& subject)
{
    OpenFacade(subject);
    subject.write.columns = {"name", "weight", "picture"};
    for (int row = 0; row < Rounds(3, 100); ++row) {
        subject.write.rows.push_back(
            {{TextCell(LongText + std::to_string(row)), RealCell(0.1 + row), BlobCell("bytes of the picture")}});
    }
}

// Doubling the quotes needs a separate allocation.
void ArrangeQuotes(Subject& subject)
{
    OpenWarmFacade(subject);
    subject.write = {{"weight", "name"}, {{{IntegerCell(7), TextCell("O'Brien and O'Hara of \"The Blue Door\"")}}}};
}

void ArrangeInvalidCell(Subject& subject)
{
    OpenWarmFacade(subject);
    subject.write = {{"name", "weight"}, {{{TextCell("a"), InvalidCell(1)}}}};
}

void ArrangeTimes(Subject& subject)
{
    OpenWarmFacade(subject);
    subject.write.columns = {"name", "weight", "picture", "id"};
    subject.write.rows = {
        {{TagCell(DbTableColumnType::DateTimeNow), TagCell(DbTableColumnType::JulianDayNow),
          TagCell(DbTableColumnType::DateTimeNowLocalTime), TagCell(DbTableColumnType::UnixTimeNow)}}};
}

Report Write(Subject& subject)
{
    return ReportOf(subject.facade->WriteTableValues(Table, subject.write), *subject.facade);
}

Report WriteInvalid(Subject& subject)
{
    const bool written = subject.facade->WriteTableValues(Table, subject.write);
    return ReportOf(!written && subject.facade->GetLastError() == 1, *subject.facade);
}

template <const std::string& Selected>
Report Update(Subject& subject)
{
    return ReportOf(subject.facade->UpdateTableValues(Table, subject.write, Selected), *subject.facade);
}

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

std::vector<Scenario> RowScenarios()
{
    const Refusal nearParenthesis{1, "near \")\": syntax error"};
    using S = Scenario;
    return {
        S{"WriteTableValues", ArrangeRows, Write, {40, 2}},
        S{"WriteTextWithQuotes", ArrangeQuotes, Write, {25, 4}}.WithoutNew(nearParenthesis),
        S{"WriteInvalidCell", ArrangeInvalidCell, WriteInvalid, {5, 3}},
        S{"UpdateTableValues", ArrangeRows, Update<Condition>, {40, 2}},
        S{"UpdateTextWithQuotes", ArrangeQuotes, Update<Condition>, {40, 4}}.WithoutNew(nearParenthesis),
        S{"UpdateNoRowWithTimes", ArrangeTimes, Update<NoRow>, {20, 2}},

        S{"ReadTableValues", OpenWarmFacade, ReadTable, {20, 5}}.WithoutSqlite(FailedStep),
        S{"ReadValues", OpenFacade, Read<Query>, {20, 5}}.WithoutSqlite(FailedStep),
        S{"ReadConvertedValues", OpenWarmFacade, Read<Conversions>, {20, 5}}.WithoutSqlite(FailedStep).ConvertsText(),
        S{"ReadValuesFailing", OpenWarmFacade, ReadFailing, {20, 3}},
        S{"ReadNextRow", OpenWarmFacade, Walk<Query>, {20, 5}}.WithoutSqlite(FailedStep),
        S{"ReadNextConvertedRow", OpenWarmFacade, Walk<Conversions>, {20, 5}}.WithoutSqlite(FailedStep).ConvertsText(),
        S{"IterateOverRows", OpenWarmFacade, Iterate, {20, 5}}.WithoutSqlite(FailedStep),
        S{"LeaveQueryOpen", OpenWarmFacade, LeaveQueryOpen, {20, 2}}.WithoutSqlite(FailedStep),
    };
}

} // namespace Morvik::sql::tests
