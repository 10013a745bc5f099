#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
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

// Reads the value and calls `store` with the content of its cell: the tag, the alternative and the arguments to
// construct the alternative.
template <typename Store>
[[gnu::always_inline]] inline void ReadCell(SqliteValue value, StorageClass type, Store store)
{
    switch (type) {
    case StorageClass::Integer:
        store(DbTableColumnType::Integer, std::in_place_type<int>, value.Integer()); // cut to 32 bits, as in every cell
        break;
    case StorageClass::Float:
        store(DbTableColumnType::Real, std::in_place_type<double>, value.Real());
        break;
    case StorageClass::Text:
        store(DbTableColumnType::Text, std::in_place_type<std::string>, value.Text());
        break;
    case StorageClass::Blob: {
        const std::span<const char> bytes = value.Blob();
        store(DbTableColumnType::Blob, std::in_place_type<std::vector<char>>, bytes.data(),
              bytes.data() + bytes.size());
        break;
    }
    case StorageClass::Null: // tagged None; readers rely on never getting the tag Null
        store(DbTableColumnType::None, std::in_place_type<std::string>);
        break;
    default: // there is no value, or it has an unknown type
        store(DbTableColumnType::None, std::in_place_type<int>, 0);
    }
}

// Lets a container construct a cell in place: emplace_back() calls make(), which returns the cell.
template <typename Make>
struct Made {
    Make make;

    operator DbTableColumnValue() const { return make(); }
};

// Whether a buffer of this capacity is too large to keep for so many bytes.
bool IsTooLarge(std::size_t capacity, std::size_t size)
{
    return capacity > LargestKeptBuffer && capacity > 2 * size;
}

// Assigns to the value that a cell holds. Returns false if the buffer of the value is too large to keep.
template <typename Number>
bool Reuse(Number& held, Number number)
{
    held = number;
    return true;
}

// A buffer that is too small at least doubles its capacity, so few rows allocate.
[[gnu::always_inline]] inline bool Reuse(std::string& held, std::string_view text = "")
{
    if (IsTooLarge(held.capacity(), text.size())) [[unlikely]] {
        return false;
    }
    if (text.size() != held.size()) {
        held.resize(text.size()); // including the copy, this takes a fifth of the time of assign()
    }
    std::memcpy(held.data(), text.data(), text.size());
    return true;
}

[[gnu::always_inline]] inline bool Reuse(std::vector<char>& held, const char* bytes, const char* end)
{
    const auto size = static_cast<std::size_t>(end - bytes);
    if (IsTooLarge(held.capacity(), size)) [[unlikely]] {
        return false;
    }
    if (size != held.size()) {
        held.assign(bytes, end);
    } else if (size != 0) {
        std::memcpy(held.data(), bytes, size);
    }
    return true;
}

// Replaces the value that a cell holds. The new value is made first, because making it may throw an exception.
template <typename Held, typename... Of>
[[gnu::cold, gnu::noinline]] void Replace(CellValue& value, Of... of)
{
    Held made(of...);
    std::destroy_at(&value);
    std::construct_at(&value, std::in_place_type<Held>, std::move(made));
}

// Sets the cell to the column's value, reusing the cell's buffer. Returns the storage class. A cell without a storage
// class becomes an untyped zero.
[[gnu::always_inline]] inline StorageClass UpdateCell(DbTableColumnValue& cell, const SqlTable& cursor,
                                                      unsigned int column)
{
    const SqliteValue value(cursor.GetValue(static_cast<int>(column)));
    const StorageClass type = value.Type();
    cell.column = column;
    ReadCell(value, type, [&]<typename Held>(DbTableColumnType tag, std::in_place_type_t<Held>, auto... of) {
        auto* const held = std::get_if<Held>(&cell.value);
        if (held == nullptr || !Reuse(*held, of...)) [[unlikely]] {
            Replace<Held>(cell.value, of...);
        }
        cell.type = tag;
    });
    return type;
}

// Replaces all cells by untyped zeroes.
[[gnu::cold, gnu::noinline]] void MakeCells(std::vector<DbTableColumnValue>& cells, std::size_t count)
{
    cells.clear();
    cells.resize(count);
}

[[gnu::cold, gnu::noinline]] void Truncate(std::vector<DbTableColumnValue>& cells, std::size_t count)
{
    while (cells.size() > count) {
        cells.pop_back();
    }
}

} // namespace

// Each cell is constructed with its value, which takes half as long as constructing an empty one and assigning to it.
void DatabaseApi::Impl::AppendCells(const SqlTable& cursor, std::vector<DbTableColumnValue>& cells)
{
    const int columns = cursor.Columns();
    cells.reserve(static_cast<std::size_t>(columns));
    // An SQL function of the application may have called this facade and failed. Then only the first column is read.
    const int end = Succeeded() ? columns : std::min(columns, 1);
    for (int column = 0; column < end; ++column) {
        const SqliteValue value(cursor.GetValue(column));
        const StorageClass type = value.Type();
        if (!IsStorageClass(type)) [[unlikely]] {
            FailConversion(type);
            return;
        }
        ReadCell(value, type, [&](DbTableColumnType tag, auto held, auto... of) {
            if (cells.size() == cells.capacity()) {
                __builtin_unreachable(); // memory for all cells is reserved
            }
            const auto make = [&] {
                return DbTableColumnValue{tag, static_cast<std::uint32_t>(column), CellValue(held, of...)};
            };
            cells.emplace_back(Made<decltype(make)>{make});
        });
    }
}

bool DatabaseApi::Impl::ReadValues(const std::string& sql, DbTableData& data)
{
    if (!OpenCursor(sql)) {
        return false;
    }
    // If the text has no statement, the cursor stays closed, and there are no rows to read.
    while (table.ReadNext()) {
        // The row is appended first and read into its final place. If it is not complete, it is removed.
        data.rows.emplace_back();
        try {
            AppendCells(table, data.rows.back().cells);
        } catch (...) {
            data.rows.pop_back();
            throw;
        }
        if (!Succeeded()) [[unlikely]] {
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
    if (cells.size() != columns) [[unlikely]] {
        MakeCells(cells, columns);
    }
    DbTableColumnValue* const first = cells.data();
    std::size_t column = 0;
    try {
        for (; column < columns; ++column) {
            const StorageClass type = UpdateCell(first[column], cursor, static_cast<unsigned int>(column));
            if (!IsStorageClass(type)) [[unlikely]] {
                FailConversion(type);
            }
            if (!Succeeded()) [[unlikely]] { // after an earlier failure, `column` is 0: no cell is kept
                Truncate(cells, column);
                return;
            }
        }
    } catch (...) {
        Truncate(cells, column);
        throw;
    }
}

bool DatabaseApi::Impl::ReadNextRow(DbTableRowValues& row)
{
    // The code is not reset: an earlier failure stays recorded until the walk ends or another operation begins.
    if (!table.ReadNext()) [[unlikely]] {
        if (!table.IsOpen()) {
            return Fail(NotOpen, "Table isn't open.");
        }
        CopyErrorFrom(table);
        return false;
    }
    ReadRow(table, row);
    return Succeeded();
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

bool DatabaseApi::ReadNextRow(DbTableRowValues& row) const
{
    return m_impl->ReadNextRow(row);
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
