#include "model/WriteStatements.h"

#include <algorithm>
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
void AppendColumnList(SqlBuffer& sql, const std::vector<std::string>& columns)
{
    const auto first = std::ranges::find_if_not(columns, &std::string::empty);
    if (first == columns.end()) {
        return;
    }
    char separator = '(';
    sql.Append(' ');
    for (const std::string& column : std::span(first, columns.end())) {
        sql.Append(separator, column);
        separator = ',';
    }
    sql.Append(')');
}

// The size of the keywords, the table's name and the column list.
std::size_t FrameSize(const std::string& table, const std::vector<std::string>& columns)
{
    std::size_t size = "INSERT INTO  () VALUES"sv.size() + table.size();
    for (const std::string& column : columns) {
        size += column.size() + 1;
    }
    return size;
}

void WriteInvalidCell(std::ostream& stream, const void* value)
{
    const auto& [position, column] = *static_cast<const InvalidCell*>(value);
    stream << "Invalid column value: (row | column)" << position << '|' << column;
}

} // namespace

WriteStatement InsertStatement(const std::string& table, const DbTableDataWrite& data)
{
    std::size_t size = FrameSize(table, data.columns);
    for (const DbTableRowValues& row : data.rows) {
        size += BetweenRows.size() + RowLiteralsSize(row);
    }

    SqlBuffer sql(size);
    std::optional<InvalidCell> invalidCell;
    sql.Append("INSERT INTO "sv);
    sql.Append(table);
    AppendColumnList(sql, data.columns);
    std::string_view opening = " VALUES ("sv;
    for (const DbTableRowValues& row : data.rows) {
        sql.Append(opening);
        if (const std::optional<InvalidCell> invalid = AppendRowLiterals(sql, row)) {
            invalidCell = invalid;
        }
        opening = BetweenRows;
    }
    sql.Append(data.rows.empty() ? " VALUES"sv : ")"sv);
    return {sql.Release(), invalidCell};
}

WriteStatement UpdateStatement(const std::string& table, const DbTableDataWrite& data, const std::string& condition)
{
    const bool hasRow = !data.rows.empty();
    SqlBuffer sql(FrameSize(table, data.columns) + (hasRow ? RowLiteralsSize(data.rows.front()) + 3 : 0) +
                  condition.size());
    std::optional<InvalidCell> invalidCell;
    sql.Append("UPDATE "sv);
    sql.Append(table);
    sql.Append(" SET"sv);
    AppendColumnList(sql, data.columns);
    sql.Append('=');
    if (hasRow) {
        const std::size_t begin = sql.Size();
        sql.Append('(');
        invalidCell = AppendRowLiterals(sql, data.rows.front());
        if (sql.Size() > begin + 1) {
            sql.Append(") "sv);
        } else {
            sql.Truncate(begin); // the row has no cell, or its first cell is invalid
        }
    }
    sql.Append(condition);
    return {sql.Release(), invalidCell};
}

[[gnu::cold]] std::string InvalidCellMessage(const InvalidCell& cell)
{
    SqlBuffer message(0);
    AppendStreamed(message, WriteInvalidCell, &cell);
    return message.Release();
}

} // namespace Morvik::sql
