#include <cstddef>
#include <utility>
#include <variant>

#include <sqlite3.h>

#include "access/ResultCode.h"
#include "access/ValueReading.h"
#include "api/DatabaseApiImpl.h"
#include "model/Concatenated.h"

namespace Morvik::sql {

namespace {

// The alternative of the cell's value, made anew only if the cell holds another one.
template <typename Alternative>
Alternative& Hold(DbTableColumnValue& cell)
{
    auto* const held = std::get_if<Alternative>(&cell.value);
    return held != nullptr ? *held : cell.value.emplace<Alternative>();
}

} // namespace

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

// The row's cells are used again with the memory of their texts and bytes, so that a walk over rows of one shape
// allocates nothing. Whatever ends the reading, an exception too, leaves only the cells that were converted.
void DatabaseApi::Impl::ReadRow(const SqlTable& cursor, DbTableRowValues& row)
{
    struct ConvertedCells {
        std::vector<DbTableColumnValue>& cells;
        std::size_t count = 0;

        ~ConvertedCells() { cells.resize(count); }
    };

    const auto columns = static_cast<std::size_t>(cursor.Columns());
    ConvertedCells converted{row.cells};
    row.cells.resize(columns);
    while (converted.count < columns &&
           GetColumnData(cursor, row.cells[converted.count], static_cast<unsigned int>(converted.count))) {
        ++converted.count;
    }
}

bool DatabaseApi::Impl::GetColumnData(const SqlTable& cursor, DbTableColumnValue& value, unsigned int column)
{
    value.type = DbTableColumnType::None;
    value.column = column;
    SqlValue read = cursor.GetValue(static_cast<int>(column));
    const int storageClass = read.GetValueType();
    if (storageClass < 0) {
        value.value = 0;
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
        ReadText(read.ValueInstance(), Hold<std::string>(value));
        break;
    case SQLITE_BLOB:
        value.type = DbTableColumnType::Blob;
        ReadBytes(read.ValueInstance(), Hold<std::vector<char>>(value));
        break;
    case SQLITE_NULL:
        Hold<std::string>(value).clear(); // tagged None, so that a reader never meets the tag Null
        break;
    default:
        value.value = 0;
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
    return m_impl->ReadValues(Concatenated({"SELECT * FROM ", table}), data);
}

bool DatabaseApi::ReadValues(const std::string& sql, DbTableData& data) const
{
    return m_impl->ReadValues(sql, data);
}

} // namespace Morvik::sql
