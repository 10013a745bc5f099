#pragma once

#include <sql/Config.h>
#include <sql/DbTableRowValues.h>

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace Morvik::sql {

class DatabaseApi;

/// Reads the rows of the query begun with DatabaseApi::SqlQueryBegin, one at a time: an input iterator for range-for,
/// ranges and the algorithms of namespace std, made by DatabaseApi::begin and DatabaseApi::end.
///
///     for (const DbTableRowValues& row : database) { ... }
///     if (database.Failed()) { ... }   // the walk ended early
///
/// All iterators of a facade refer to its one current row: advancing any of them, or calling begin() again, replaces
/// the row that all of them return. The facade must outlive them. An iterator belongs to the same thread as the facade.
/// @ingroup facade
class TKOSQLLITE_EXPORT DbTableRowIterator {
public:
    using iterator_concept = std::input_iterator_tag; ///< Each row can be read only once.
    using iterator_category = iterator_concept;       ///< The same for the algorithms of namespace std.
    using value_type = DbTableRowValues;              ///< The type of a row.
    using difference_type = std::ptrdiff_t;           ///< Required of an iterator type; rows are not counted.
    using pointer = const DbTableRowValues*;          ///< Pointer to the current row.
    using reference = const DbTableRowValues&;        ///< Reference to the current row.

    /// An end iterator without a facade.
    DbTableRowIterator() noexcept = default;

    /// The current row; must not be called on an end iterator. The reference is valid during the lifetime of the
    /// facade, its content until the next row is fetched or a query is begun.
    reference operator*() const noexcept { return *m_row; }

    /// The current row; must not be called on an end iterator.
    pointer operator->() const noexcept { return m_row; }

    /// Fetches the next row with DatabaseApi::ReadNextRow and becomes the end iterator when that returns false. The
    /// facade's code then distinguishes the end of the rows (0) from a failure. Must not be called on an end iterator.
    DbTableRowIterator& operator++();

    /// The row before a postfix increment, which returns this type.
    class PostfixRow {
    public:
        /// A copy of the row.
        reference operator*() const noexcept { return m_row; }

    private:
        friend class DbTableRowIterator; ///< Creates the copy.

        explicit PostfixRow(reference row) : m_row(row) {}

        DbTableRowValues m_row;
    };

    /// Advances as the prefix form does. Returns a copy of the earlier row, because the facade no longer holds that
    /// row.
    PostfixRow operator++(int)
    {
        PostfixRow earlier(*m_row);
        ++*this;
        return earlier;
    }

    /// Equal if both iterators belong to the same facade and are either both on a row or both at the end.
    friend bool operator==(const DbTableRowIterator& left, const DbTableRowIterator& right) noexcept
    {
        return left.m_facade == right.m_facade && left.m_position == right.m_position;
    }

private:
    friend class DatabaseApi; ///< Makes the iterators.

    static constexpr std::int32_t OnRow = 0;
    static constexpr std::int32_t AtEnd = -1;

    DbTableRowIterator(const DatabaseApi* facade, DbTableRowValues* row) noexcept
        : m_facade(facade), m_position(row != nullptr ? OnRow : AtEnd), m_row(row)
    {}

    const DatabaseApi* m_facade = nullptr;
    std::int32_t m_position = AtEnd;
    DbTableRowValues* m_row = nullptr;
    std::uintptr_t m_reserved = 0;
    // `m_reserved` is part of the layout and otherwise unused. Naming it here prevents clang's warning about unused
    // fields.
    static_assert(sizeof(m_reserved) == sizeof(void*));
};

} // namespace Morvik::sql
