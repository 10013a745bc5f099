#pragma once

#include <sql/Config.h>
#include <sql/SqlError.h>

#include <string>
#include <utility>
#include <vector>

struct sqlite3_value;

namespace Morvik::sql {

/// A non-owning view of one column of a cursor's current row, valid until that cursor steps, is reset or is closed.
/// A value that wraps nothing (a column name that was not found) is a normal object: its getters return zeroes and
/// record code 112 with "No value instance exists." in the value itself.
///
///     SqlValue size = table["size"];
///     const long long bytes = size.GetValue<long long>();
///     if (size.Failed()) { ... }   // there is no column of that name
///
/// The record starts as code 0 with an empty message. A failure stays recorded, also after later reads that succeed. A
/// value belongs to the thread of its cursor.
/// @ingroup wrappers
class TKOSQLLITE_EXPORT SqlValue : public SqlError {
public:
    /// @name Construction
    /// @{

    /// Wraps `value`, which is still owned by the statement that produced it; null wraps nothing.
    explicit SqlValue(sqlite3_value* value) noexcept : m_value(value) {}

    /// Takes over the source's instance; the source then wraps nothing. The new record has code 0 and an empty message:
    /// the source's record is not taken over.
    SqlValue(SqlValue&& other) noexcept : SqlError(), m_value(std::exchange(other.m_value, nullptr)) {}

    /// Exchanges the two instances and leaves both records as they are; nothing happens on self-assignment.
    SqlValue& operator=(SqlValue&& other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }

    SqlValue(const SqlValue&) = delete;            ///< Moved, not copied.
    SqlValue& operator=(const SqlValue&) = delete; ///< Moved, not copied.
    ~SqlValue() = default;                         ///< Frees nothing: the statement owns the instance.
    /// @}

    /// @name Reading
    /// @{

    /// The wrapped instance; null when nothing is wrapped.
    sqlite3_value* ValueInstance() const { return m_value; }

    /// The storage class: 1 INTEGER, 2 FLOAT, 3 TEXT, 4 BLOB, 5 NULL; -1 when nothing is wrapped.
    int GetValueType() const;

    /// The value, converted by SQLite if its storage class is a different one; NULL reads as 0, 0.0 or no bytes. When
    /// nothing is wrapped, returns the zero of the type and records code 112 with "No value instance exists."
    ///
    /// T is one of
    /// - int: a wider integer is cut to its low 32 bits;
    /// - long long;
    /// - double;
    /// - std::string: up to the first zero byte; throws std::logic_error for NULL, so check GetValueType() first;
    /// - std::vector<char>: all bytes. If the value is not a blob and SQLite had no memory to convert it, the vector is
    ///   empty, and closing the cursor then fails with code 7.
    ///
    /// Texts and bytes are copies. If a copy fails, std::bad_alloc is thrown. If SQLite ran out of memory, the value
    /// may be NULL afterwards.
    template <typename T>
    T GetValue() = delete;
    /// @}

private:
    sqlite3_value* m_value;
};

/// @cond
template <>
int SqlValue::GetValue<int>();
template <>
long long SqlValue::GetValue<long long>();
template <>
double SqlValue::GetValue<double>();
template <>
std::string SqlValue::GetValue<std::string>();
template <>
std::vector<char> SqlValue::GetValue<std::vector<char>>();
/// @endcond

} // namespace Morvik::sql
