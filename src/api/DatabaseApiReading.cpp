#include <algorithm>
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

// A walk keeps the memory of a text or blob for the next row, unless it is larger than this and than twice the value.
constexpr std::size_t LargestKeptBuffer = 4096;

// Copies the bytes into the alternative, whose memory is used again if the cell holds it already.
template <typename Alternative, typename Bytes>
void Store(DbTableColumnValue& cell, const Bytes& bytes)
{
    auto* const held = std::get_if<Alternative>(&cell.value);
    if (held == nullptr) {
        cell.value.emplace<Alternative>(bytes.begin(), bytes.end());
    } else if (held->capacity() <= std::max(LargestKeptBuffer, 2 * bytes.size())) {
        held->assign(bytes.begin(), bytes.end());
    } else {
        Alternative(bytes.begin(), bytes.end()).swap(*held); // assigning a short text would keep the memory
    }
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

        ~ConvertedCells()
        {
            if (count != cells.size()) {
                cells.resize(count);
            }
        }
    };

    const auto columns = static_cast<std::size_t>(cursor.Columns());
    ConvertedCells converted{row.cells};
    if (row.cells.size() != columns) {
        row.cells.resize(columns);
    }
    while (converted.count < columns &&
           GetColumnData(cursor, row.cells[converted.count], static_cast<unsigned int>(converted.count))) {
        ++converted.count;
    }
}

bool DatabaseApi::Impl::GetColumnData(const SqlTable& cursor, DbTableColumnValue& cell, unsigned int column)
{
    cell.type = DbTableColumnType::None;
    cell.column = column;
    sqlite3_value* const value = cursor.GetValue(static_cast<int>(column)).ValueInstance();
    const int storageClass = value != nullptr ? sqlite3_value_type(value) : -1;
    switch (storageClass) {
    case SQLITE_INTEGER:
        cell.type = DbTableColumnType::Integer;
        cell.value = sqlite3_value_int(value); // 32 bits, as every cell
        break;
    case SQLITE_FLOAT:
        cell.type = DbTableColumnType::Real;
        cell.value = sqlite3_value_double(value);
        break;
    case SQLITE_TEXT:
        cell.type = DbTableColumnType::Text;
        Store<std::string>(cell, TextOf(value, storageClass));
        break;
    case SQLITE_BLOB:
        cell.type = DbTableColumnType::Blob;
        Store<std::vector<char>>(cell, BytesOf(value));
        break;
    case SQLITE_NULL:
        Store<std::string>(cell, std::string_view()); // tagged None, so that a reader never meets the tag Null
        break;
    default:
        cell.value = 0;
        return Fail(MissingValue, storageClass < 0 ? "No value exists." : "Unknown value type.");
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
