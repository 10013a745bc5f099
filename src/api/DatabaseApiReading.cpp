#include <utility>

#include <sqlite3.h>

#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"

namespace Morvik::sql {

bool DatabaseApi::Impl::OpenCursor(const std::string& sql)
{
    table.Close();
    ResetCode();
    if (!CheckOpen()) {
        return false;
    }
    if (sql.empty()) {
        return Fail(MissingValue, "Missing query SQL statement.");
    }
    if (!table.Open(sql)) {
        CopyRecord(table);
    }
    return Succeeded();
}

bool DatabaseApi::Impl::ReadValues(const std::string& sql, DbTableData& data)
{
    if (!OpenCursor(sql)) {
        return false;
    }
    // A text without a statement leaves the cursor closed, and reads as no rows.
    while (table.IsOpen() && table.ReadNext()) {
        DbTableRowValues row;
        ReadRow(table, row);
        if (!Succeeded()) {
            break;
        }
        data.rows.push_back(std::move(row));
    }
    // The cursor's record replaces a failed conversion's: callers find the code of the last step, 100, in its place.
    CopyRecord(table);
    return Succeeded();
}

void DatabaseApi::Impl::ReadRow(const SqlTable& cursor, DbTableRowValues& row)
{
    row.cells.clear();
    const int columns = cursor.Columns();
    row.cells.reserve(static_cast<std::size_t>(columns));
    for (int column = 0; column < columns; ++column) {
        DbTableColumnValue cell;
        if (!GetColumnData(cursor, cell, static_cast<unsigned int>(column))) {
            return;
        }
        row.cells.push_back(std::move(cell));
    }
}

bool DatabaseApi::Impl::GetColumnData(const SqlTable& cursor, DbTableColumnValue& value, unsigned int column)
{
    value = DbTableColumnValue{DbTableColumnType::None, column, 0};
    SqlValue read = cursor.GetValue(static_cast<int>(column));
    const int storageClass = read.GetValueType();
    if (storageClass < 0) {
        return Fail(MissingValue, "No value exists.");
    }
    switch (storageClass) {
    case SQLITE_INTEGER:
        value.type = DbTableColumnType::Integer;
        value.value = read.GetValue<int>(); // 32 bits, as every cell
        break;
    case SQLITE_FLOAT:
        value.type = DbTableColumnType::Real;
        value.value = read.GetValue<double>();
        break;
    case SQLITE_TEXT:
        value.type = DbTableColumnType::Text;
        value.value = read.GetValue<std::string>();
        break;
    case SQLITE_BLOB:
        value.type = DbTableColumnType::Blob;
        value.value = read.GetValue<std::vector<char>>();
        break;
    case SQLITE_NULL:
        value.value = std::string(); // tagged None, so that a reader never meets the tag Null
        break;
    default:
        Fail(MissingValue, "Unknown value type.");
        break;
    }
    if (read.Failed()) {
        CopyRecord(read);
    }
    return Succeeded();
}

bool DatabaseApi::ReadTableValues(const std::string& table, DbTableData& data) const
{
    return m_impl->ReadValues("SELECT * FROM " + table, data);
}

bool DatabaseApi::ReadValues(const std::string& sql, DbTableData& data) const
{
    return m_impl->ReadValues(sql, data);
}

} // namespace Morvik::sql
