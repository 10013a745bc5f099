#include "model/WriteStatements.h"

#include <cstddef>
#include <ostream>
#include <span>
#include <string_view>

#include "model/SqlBuffer.h"
#include "model/StreamText.h"
#include "model/ValueLiteral.h"

namespace Morvik::sql {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view BetweenRows = ") ,(";

// Empty names before the first non-empty one are left out; a later empty name leaves nothing between its commas.
[[gnu::noinline]] void AppendColumnList(SqlBuffer& sql, const std::vector<std::string>& columns)
{
    auto column = columns.begin();
    while (column != columns.end() && column->empty()) {
        ++column;
    }
    if (column == columns.end()) {
        return;
    }
    sql.Append(' ');
    char separator = '(';
    for (; column != columns.end(); ++column) {
        sql.Append(separator, *column);
        separator = ',';
    }
    sql.Append(')');
}

// The size of the keywords, the table's name and the column list; at most a few bytes too large.
std::size_t BeginningSize(const std::string& table, const std::vector<std::string>& columns)
{
    std::size_t size = "INSERT INTO  () VALUES"sv.size() + table.size();
    for (const std::string& column : columns) {
        size += column.size() + 1;
    }
    return size;
}

std::size_t RowsSize(const std::vector<DbTableRowValues>& rows)
{
    std::size_t size = 0;
    for (const DbTableRowValues& row : rows) {
        size += BetweenRows.size() + RowLiteralsSize(row);
    }
    return size;
}

void WriteInvalidCell(std::ostream& stream, const void* value)
{
    const auto& [position, column] = *static_cast<const InvalidCell*>(value);
    stream << "Invalid column value: (row | column)" << position << '|' << column;
}

} // namespace

void WriteStatement::AppendRow(const DbTableRowValues& row)
{
    if (const DbTableColumnValue* const cell = AppendRowLiterals(sql, row)) {
        invalidCell = {static_cast<int>(cell - row.cells.data()), cell->column};
    }
}

InsertStatement::InsertStatement(const std::string& table, const DbTableDataWrite& data)
    : WriteStatement(BeginningSize(table, data.columns) + RowsSize(data.rows))
{
    sql.Append("INSERT INTO "sv);
    sql.Append(table);
    AppendColumnList(sql, data.columns);
    if (data.rows.empty()) {
        sql.Append(" VALUES"sv);
        return;
    }
    sql.Append(" VALUES ("sv);
    const std::span rows(data.rows);
    for (const DbTableRowValues& row : rows) {
        if (&row != rows.data()) {
            sql.Append(BetweenRows);
        }
        AppendRow(row);
    }
    sql.Append(')');
}

UpdateStatement::UpdateStatement(const std::string& table, const DbTableDataWrite& data, const std::string& condition)
    : WriteStatement(BeginningSize(table, data.columns) + condition.size() +
                     (data.rows.empty() ? 0 : "() "sv.size() + RowLiteralsSize(data.rows.front())))
{
    sql.Append("UPDATE "sv);
    sql.Append(table);
    sql.Append(" SET"sv);
    AppendColumnList(sql, data.columns);
    sql.Append('=');
    if (!data.rows.empty()) {
        const std::size_t begin = sql.Size();
        sql.Append('(');
        AppendRow(data.rows.front());
        if (sql.Size() > begin + 1) {
            sql.Append(") "sv);
        } else {
            sql.Truncate(begin); // the row has no cell, or its first cell is invalid
        }
    }
    sql.Append(condition);
}

[[gnu::cold]] void AppendInvalidCellMessage(SqlBuffer& message, const InvalidCell& cell)
{
    AppendStreamed(message, WriteInvalidCell, &cell);
}

} // namespace Morvik::sql
