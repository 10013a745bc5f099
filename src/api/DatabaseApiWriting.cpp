#include <algorithm>
#include <cstddef>
#include <ostream>
#include <span>

#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"
#include "model/JoinedList.h"
#include "model/NumberText.h"
#include "model/StatementText.h"
#include "model/ValueLiteral.h"

namespace Morvik::sql {

namespace {

constexpr std::string_view FirstRow = " (";
constexpr std::string_view NextRow = " ,(";

// Empty names before the first non-empty one leave no trace; later ones leave an empty place in the list.
void AppendColumnList(StatementText& sql, const std::vector<std::string>& columns)
{
    const auto first = std::ranges::find_if_not(columns, &std::string::empty);
    if (first == columns.end()) {
        return;
    }
    sql += " (";
    AppendJoined(sql, std::span(first, columns.end()));
    sql += ')';
}

// What the fixed words, the table's name and the column list take.
std::size_t FrameSize(const std::string& table, const std::vector<std::string>& columns)
{
    std::size_t size = std::string_view("INSERT INTO  () VALUES").size() + table.size();
    for (const std::string& column : columns) {
        size += column.size() + 1;
    }
    return size;
}

std::size_t RowSize(const DbTableRowValues& row)
{
    std::size_t size = NextRow.size() + 1;
    for (const DbTableColumnValue& cell : row.cells) {
        size += ColumnValueSize(cell) + 1;
    }
    return size;
}

struct CellPosition {
    int position;
    std::uint32_t column;
};

[[gnu::cold]] std::string InvalidCellMessage(const CellPosition& cell)
{
    StatementText message(0);
    const StreamInsertion insert = [](std::ostream& stream, const void* value) {
        const auto& [position, column] = *static_cast<const CellPosition*>(value);
        stream << "Invalid column value: (row | column)" << position << '|' << column;
    };
    AppendStreamed(message, insert, &cell);
    return message.Take();
}

} // namespace

// An invalid cell ends its row after the comma before it. The statement is run all the same and SQLite rejects it, so
// that callers get SQLite's record; the one set here stays only if the statement should succeed.
void DatabaseApi::Impl::AppendCells(StatementText& sql, const DbTableRowValues& row)
{
    int position = 0;
    for (const DbTableColumnValue& cell : row.cells) {
        if (position != 0) {
            sql += ',';
        }
        if (!ColumnValueAsString(cell, sql)) {
            Fail(MissingValue, InvalidCellMessage({position, cell.column}));
            return;
        }
        ++position;
    }
}

bool DatabaseApi::Impl::Write(const std::string& name, const DbTableDataWrite& data)
{
    ResetCode();
    if (name.empty()) {
        return Fail(MissingValue, "Missing table name.");
    }
    std::size_t size = FrameSize(name, data.columns);
    for (const DbTableRowValues& row : data.rows) {
        size += RowSize(row);
    }

    StatementText sql(size);
    sql += "INSERT INTO ";
    sql += name;
    AppendColumnList(sql, data.columns);
    sql += " VALUES";
    std::string_view opening = FirstRow;
    for (const DbTableRowValues& row : data.rows) {
        sql += opening;
        AppendCells(sql, row);
        sql += ')';
        opening = NextRow;
    }
    RunCommand(sql.Take());
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
    const bool hasRow = !data.rows.empty();
    StatementText sql(FrameSize(name, data.columns) + (hasRow ? RowSize(data.rows.front()) : 0) + condition.size());
    sql += "UPDATE ";
    sql += name;
    sql += " SET";
    AppendColumnList(sql, data.columns);
    sql += '=';
    if (hasRow) {
        const std::size_t begin = sql.Size();
        sql += '(';
        AppendCells(sql, data.rows.front());
        if (sql.Size() > begin + 1) {
            sql += ") ";
        } else {
            sql.Truncate(begin); // there is no cell, or the first one is invalid
        }
    }
    sql += condition;
    RunCommand(sql.Take());
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
