#include <algorithm>
#include <cstddef>
#include <span>

#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"
#include "model/Concatenated.h"
#include "model/JoinedList.h"
#include "model/NumberText.h"
#include "model/ValueLiteral.h"

namespace Morvik::sql {

namespace {

constexpr std::string_view NextRow = " ,(";

// Empty names before the first non-empty one leave no trace; later ones leave an empty place in the list.
void AppendColumnList(std::string& sql, const std::vector<std::string>& columns)
{
    const auto first = std::ranges::find_if_not(columns, &std::string::empty);
    if (first == columns.end()) {
        return;
    }
    sql += " (";
    AppendJoined(sql, std::span(first, columns.end()));
    sql += ')';
}

// Behind each cell and row, a comma or parenthesis. Reserving the whole text keeps the peak of memory at one text.
std::size_t InsertSize(const std::string& name, const DbTableDataWrite& data)
{
    std::size_t size = std::string_view("INSERT INTO  () VALUES ()").size() + name.size();
    for (const std::string& column : data.columns) {
        size += column.size() + 1;
    }
    for (const DbTableRowValues& row : data.rows) {
        size += NextRow.size() + 1;
        for (const DbTableColumnValue& cell : row.cells) {
            size += ColumnValueSize(cell) + 1;
        }
    }
    return size;
}

std::string InvalidCellMessage(int position, std::uint32_t column)
{
    std::string message = "Invalid column value: (row | column)";
    AppendNumber(message, position);
    message += '|';
    AppendNumber(message, column);
    return message;
}

} // namespace

// An invalid cell ends its row after the comma before it. The statement is run all the same and SQLite rejects it, so
// that callers get SQLite's record; the one set here stays only if the statement should succeed.
bool DatabaseApi::Impl::AppendCells(std::string& sql, const DbTableRowValues& row)
{
    int position = 0;
    for (const DbTableColumnValue& cell : row.cells) {
        if (position != 0) {
            sql += ',';
        }
        if (!ColumnValueAsString(cell, sql)) {
            return Fail(MissingValue, InvalidCellMessage(position, cell.column));
        }
        ++position;
    }
    return true;
}

bool DatabaseApi::Impl::Write(const std::string& name, const DbTableDataWrite& data)
{
    ResetCode();
    if (name.empty()) {
        return Fail(MissingValue, "Missing table name.");
    }
    std::string sql;
    sql.reserve(InsertSize(name, data));
    sql += "INSERT INTO ";
    sql += name;
    AppendColumnList(sql, data.columns);
    sql += " VALUES";
    std::string_view opening = " (";
    for (const DbTableRowValues& row : data.rows) {
        sql += opening;
        AppendCells(sql, row);
        sql += ')';
        opening = NextRow;
    }
    RunCommand(sql);
    return Succeeded();
}

bool DatabaseApi::Impl::Update(const std::string& name, const DbTableDataWrite& data, const std::string& condition)
{
    ResetCode();
    if (name.empty()) {
        return Fail(MissingValue, "Missing table name.");
    }
    if (data.columns.empty()) {
        return Fail(MissingValue, "Missing column names.");
    }
    std::string sql = Concatenated({"UPDATE ", name, " SET"});
    AppendColumnList(sql, data.columns);
    sql += '=';
    if (!data.rows.empty()) {
        const std::size_t opening = sql.size();
        sql += '(';
        AppendCells(sql, data.rows.front());
        if (sql.size() > opening + 1) {
            sql += ") ";
        } else {
            sql.resize(opening); // no cell, or the first one is invalid
        }
    }
    sql += condition;
    RunCommand(sql);
    return Succeeded();
}

bool DatabaseApi::WriteTableValues(const std::string& table, const DbTableDataWrite& data)
{
    return m_impl->Write(table, data);
}

bool DatabaseApi::UpdateTableValues(const std::string& table, const DbTableDataWrite& data,
                                    const std::string& condition)
{
    return m_impl->Update(table, data, condition);
}

} // namespace Morvik::sql
