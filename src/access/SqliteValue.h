#pragma once

#include <sql/SqlValue.h>

#include <span>
#include <string_view>

struct sqlite3_value;

namespace Morvik::sql {

/// SQLite's storage classes with SQLite's numbers.
enum class StorageClass : int {
    Missing = -1, ///< There is no value.
    Integer = 1,
    Float = 2,
    Text = 3,
    Blob = 4,
    Null = 5,
};

/// Reads one value of a row. The value belongs to its statement. Texts and bytes are views of SQLite's memory; they are
/// valid until the value is read as another type or the statement steps. If there is no value (null), only Type() may
/// be called.
class SqliteValue {
public:
    explicit SqliteValue(const SqlValue& value) noexcept : m_value(value.ValueInstance()) {}

    /// The storage class. A newer SQLite may return a class that StorageClass does not list.
    StorageClass Type() const;

    /// The value as a 32-bit integer; a wider value is cut to its low 32 bits.
    int Integer() const;

    /// The value as a 64-bit integer.
    long long Integer64() const;

    /// The value as a floating-point number.
    double Real() const;

    /// The text up to its first zero byte. The value must not be NULL. Throws std::bad_alloc if SQLite has no memory.
    std::string_view Text() const;

    /// The bytes; empty for NULL. Throws std::bad_alloc if SQLite has no memory for them.
    std::span<const char> Blob() const;

private:
    sqlite3_value* m_value;
};

} // namespace Morvik::sql
