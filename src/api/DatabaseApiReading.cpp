#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

#include "access/ResultCode.h"
#include "access/SqliteValue.h"
#include "api/DatabaseApiImpl.h"
#include "model/TableStatements.h"

namespace Morvik::sql {

namespace {

using CellValue = decltype(DbTableColumnValue::value);

// A walk keeps the memory of a text or blob for the next row, unless it is larger than this limit and larger than twice
// the value.
constexpr std::size_t LargestKeptBuffer = 4096;

bool IsStorageClass(StorageClass type)
{
    return type >= StorageClass::Integer && type <= StorageClass::Null;
}

// Makes a cell from arguments. If the fields were written as constants, GCC would clear the cell's memory first.
template <typename Held, typename... Of>
DbTableColumnValue Cell(DbTableColumnType type, std::uint32_t column, Of... of)
{
    return {type, column, CellValue(std::in_place_type<Held>, of...)};
}

// Makes a cell with the value, constructed directly in the place of the return value.
[[gnu::noinline]] DbTableColumnValue MakeCell(SqliteValue value, StorageClass type, std::uint32_t column)
{
    switch (type) {
    case StorageClass::Integer:
        return Cell<int>(DbTableColumnType::Integer, column, value.Integer()); // cut to 32 bits, as in every cell
    case StorageClass::Float:
        return Cell<double>(DbTableColumnType::Real, column, value.Real());
    case StorageClass::Text:
        return Cell<std::string>(DbTableColumnType::Text, column, value.Text());
    case StorageClass::Blob: {
        const std::span<const char> bytes = value.Blob();
        return Cell<std::vector<char>>(DbTableColumnType::Blob, column, bytes.begin(), bytes.end());
    }
    default: // NULL is tagged None; readers rely on never getting the tag Null
        return Cell<std::string>(DbTableColumnType::None, column);
    }
}

// Lets a container construct the cell in place: emplace_back(CellMaker{...}) converts it to the cell.
struct CellMaker {
    SqliteValue value;
    StorageClass type;
    std::uint32_t column;

    operator DbTableColumnValue() const { return MakeCell(value, type, column); }
};

// The index of the variant's alternative for a cell of this type.
std::size_t AlternativeOf(StorageClass type)
{
    return type == StorageClass::Null ? 2 : static_cast<std::size_t>(type) - 1;
}

static_assert(std::is_same_v<std::variant_alternative_t<2, CellValue>, std::string>);

// Replaces the cell's value by another alternative of the variant.
[[gnu::cold, gnu::noinline]] void Replace(DbTableColumnValue& cell, DbTableColumnValue made)
{
    cell.type = made.type;
    std::destroy_at(&cell.value);
    std::construct_at(&cell.value, std::move(made.value));
}

// Whether a buffer of this capacity is too large to keep for so many bytes.
bool IsTooLarge(std::size_t capacity, std::size_t size)
{
    return capacity > std::max(LargestKeptBuffer, 2 * size);
}

// Copies the text into the buffer. If the buffer must grow, it grows by more than needed.
[[gnu::always_inline]] inline void Assign(std::string& buffer, std::string_view text)
{
    if (text.size() > buffer.capacity()) [[unlikely]] {
        buffer.assign(text);
        return;
    }
    buffer.resize(text.size()); // including the copy, this takes a fifth of the time of assign()
    std::copy(text.begin(), text.end(), buffer.begin());
}

// Sets the cell to the column's value, reusing the cell's buffer. Returns the storage class. A cell without a storage
// class becomes an untyped zero.
[[gnu::always_inline]] inline StorageClass UpdateCell(DbTableColumnValue& cell, const SqlTable& cursor,
                                                      unsigned int column)
{
    const SqliteValue value(cursor.GetValue(static_cast<int>(column)));
    const StorageClass type = value.Type();
    cell.column = column;
    if (!IsStorageClass(type)) {
        Replace(cell, {});
        return type;
    }
    if (cell.value.index() != AlternativeOf(type)) {
        Replace(cell, MakeCell(value, type, column));
        return type;
    }
    switch (type) {
    case StorageClass::Integer:
        cell.type = DbTableColumnType::Integer;
        *std::get_if<int>(&cell.value) = value.Integer();
        break;
    case StorageClass::Float:
        cell.type = DbTableColumnType::Real;
        *std::get_if<double>(&cell.value) = value.Real();
        break;
    case StorageClass::Text: {
        auto& text = *std::get_if<std::string>(&cell.value);
        const std::string_view read = value.Text();
        cell.type = DbTableColumnType::Text;
        if (IsTooLarge(text.capacity(), read.size())) [[unlikely]] {
            Replace(cell, MakeCell(value, type, column));
        } else {
            Assign(text, read);
        }
        break;
    }
    case StorageClass::Blob: {
        auto& bytes = *std::get_if<std::vector<char>>(&cell.value);
        const std::span<const char> read = value.Blob();
        if (IsTooLarge(bytes.capacity(), read.size())) [[unlikely]] {
            Replace(cell, MakeCell(value, type, column));
        } else {
            bytes.assign(read.begin(), read.end());
        }
        cell.type = DbTableColumnType::Blob;
        break;
    }
    default: {
        auto& text = *std::get_if<std::string>(&cell.value);
        if (IsTooLarge(text.capacity(), 0)) [[unlikely]] {
            Replace(cell, MakeCell(value, type, column));
        } else {
            text.clear();
        }
        cell.type = DbTableColumnType::None;
        break;
    }
    }
    return type;
}

[[gnu::cold, gnu::noinline]] void Truncate(std::vector<DbTableColumnValue>& cells, std::size_t count)
{
    while (cells.size() > count) {
        cells.pop_back();
    }
}

} // namespace

bool DatabaseApi::Impl::ReadValues(const std::string& sql, DbTableData& data)
{
    if (!OpenCursor(sql)) {
        return false;
    }
    // If the text has no statement, the cursor stays closed, and there are no rows to read.
    while (table.ReadNext()) {
        // The row is appended first and read into its final place. If it is not complete, it is removed.
        DbTableRowValues& row = data.rows.emplace_back();
        try {
            ReadRow(table, row);
        } catch (...) {
            data.rows.pop_back();
            throw;
        }
        if (!Succeeded()) {
            data.rows.pop_back();
            break;
        }
    }
    // The cursor's error replaces that of a failed conversion: callers rely on the code of the last step, 100.
    CopyErrorFrom(table);
    return Succeeded();
}

// Cells of an earlier row with the same number of columns are reused with their buffers, so that a walk over similar
// rows allocates nothing. If reading stops early, also with an exception, only the converted cells remain.
void DatabaseApi::Impl::ReadRow(const SqlTable& cursor, DbTableRowValues& row)
{
    std::vector<DbTableColumnValue>& cells = row.cells;
    const auto columns = static_cast<std::size_t>(cursor.Columns());
    if (cells.size() != columns) {
        ReadNewCells(cursor, cells, columns);
        return;
    }
    std::size_t converted = 0;
    try {
        for (; converted < columns; ++converted) {
            const StorageClass type = UpdateCell(cells[converted], cursor, static_cast<unsigned int>(converted));
            if (!IsStorageClass(type)) [[unlikely]] {
                FailConversion(type);
            }
            if (!Succeeded()) {
                break;
            }
        }
    } catch (...) {
        Truncate(cells, converted);
        throw;
    }
    if (converted != columns) [[unlikely]] {
        Truncate(cells, converted);
    }
}

// Each cell is constructed with its value, which takes half as long as constructing an empty one and assigning to it.
void DatabaseApi::Impl::ReadNewCells(const SqlTable& cursor, std::vector<DbTableColumnValue>& cells,
                                     std::size_t columns)
{
    cells.clear();
    cells.reserve(columns);
    for (std::size_t column = 0; column < columns; ++column) {
        const SqliteValue value(cursor.GetValue(static_cast<int>(column)));
        const StorageClass type = value.Type();
        if (!IsStorageClass(type)) {
            FailConversion(type);
            return;
        }
        if (cells.size() == cells.capacity()) {
            __builtin_unreachable(); // memory for all cells is reserved
        }
        cells.emplace_back(CellMaker{value, type, static_cast<std::uint32_t>(column)});
        if (!Succeeded()) { // after an earlier failure, no cell is stored
            cells.pop_back();
            return;
        }
    }
}

bool DatabaseApi::Impl::GetColumnData(const SqlTable& cursor, DbTableColumnValue& cell, unsigned int column)
{
    const StorageClass type = UpdateCell(cell, cursor, column);
    return IsStorageClass(type) ? Succeeded() : FailConversion(type);
}

[[gnu::cold]] bool DatabaseApi::Impl::FailConversion(StorageClass type)
{
    return Fail(MissingValue, type == StorageClass::Missing ? "No value exists." : "Unknown value type.");
}

bool DatabaseApi::ReadTableValues(const std::string& table, DbTableData& data) const
{
    return m_impl->ReadValues(SelectAllQuery(table), data);
}

bool DatabaseApi::ReadValues(const std::string& sql, DbTableData& data) const
{
    return m_impl->ReadValues(sql, data);
}

} // namespace Morvik::sql
