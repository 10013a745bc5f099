#pragma once

#include <sql/Config.h>
#include <sql/SqlValue.h>

#include <memory>
#include <string>

namespace Morvik::sql {

class SqlDatabase;

/// Reads the result of one query forward, row by row, and the current row's columns by index or by name. The
/// SqlDatabase must outlive the cursor, and an open cursor prevents its connection from closing.
///
///     SqlTable table(database);
///     for (table.Open("SELECT name, size FROM package"); table.ReadNext();) {
///         Print(table.GetText(0), table["size"].GetValue<long long>());
///     }
///     if (table.GetLastError() != 0) { ... }   // the end of the rows leaves 0
///
/// Columns count from 0. Operations are const although they move the cursor, so that a const reference to a cursor is
/// enough to read all rows. The cursors of one connection are used from one thread at a time.
///
/// The cursor compiles with SQLite's legacy interface: a failed step reports the generic code 1 ("SQL logic error") in
/// most cases, and Reset() or Close() then reports the specific code: 19 for a violated constraint, 17 when the schema
/// changed since Open(), 7 when SQLite had no memory.
///
/// A moved-from SqlTable may only be assigned to, and must be given a new value before it is destroyed. No other
/// operation of it may be called. So assigning from a temporary is not allowed, because the temporary is destroyed at
/// once.
/// @ingroup wrappers
class TKOSQLLITE_EXPORT SqlTable final {
public:
    /// @name Construction
    /// @{

    /// A closed cursor on `database`; code 0 and an empty message. The connection may be opened later.
    explicit SqlTable(SqlDatabase& database);

    /// Takes over the source's query and record.
    SqlTable(SqlTable&& other) noexcept;

    /// Takes over the source's query and record, then closes the query that this object held before.
    SqlTable& operator=(SqlTable&& other) noexcept;

    SqlTable(const SqlTable&) = delete;            ///< A query has one owner.
    SqlTable& operator=(const SqlTable&) = delete; ///< A query has one owner.

    /// Closes the cursor. If its connection is closed and a query is still held, the query is not finalized.
    ~SqlTable();
    /// @}

    /// @name The query
    /// @{

    /// Closes the query held before and compiles the first statement of `sql`, up to its first zero byte; text after
    /// the first statement is silently ignored. No row is fetched.
    ///
    /// Returns true with code 0 and an empty message, also for a text without a statement (empty, blanks, a comment):
    /// IsOpen() then stays false. Returns false with SQLite's code and message when the text is rejected; the cursor is
    /// closed afterwards. On a closed connection: code 21 with the misleading text "out of memory". If a query is still
    /// held on a closed connection, nothing is compiled, and the result is true exactly when the record's code counts
    /// as success.
    bool Open(const std::string& sql) const;

    /// True while a query is held, also after its last row.
    bool IsOpen() const;

    /// Advances to the next row. Returns true with code 100 and an empty message for a row. Returns false at the end of
    /// the rows with code 0 and an empty message, on a failure with SQLite's code and message, and on a closed cursor
    /// with the record unchanged. A call after the end starts the query again.
    bool ReadNext() const;

    /// The number of result columns of the query; 0 for a closed cursor.
    int Columns() const;

    /// Rewinds to before the first row. Returns true with code 0, and true with the record unchanged on a closed
    /// cursor. After a failed step: false with that step's specific code and an empty message.
    bool Reset() const;

    /// Releases the query. Returns true with code 0, and true with the record unchanged on a closed cursor. After a
    /// failed step: false with that step's specific code and message; the query is released anyway.
    bool Close() const;
    /// @}

    /// @name Reading the current row
    /// @{

    /// The length in bytes of column `column` (from 0) as text or bytes; also 0 if SQLite had no memory to convert the
    /// value: Close() then returns false with code 7. This function and the reads below, up to GetValue(), check
    /// nothing: call them after ReadNext() returned true, with an index below Columns().
    int GetLength(int column) const;

    /// Column `column` (from 0) as a 32-bit integer; a wider value is cut to its low 32 bits.
    int GetInteger(int column) const;

    /// Column `column` (from 0) as a 64-bit integer.
    long long GetInt64(int column) const;

    /// A copy of the text of column `column` (from 0) up to its first zero byte. Throws std::logic_error for every
    /// NULL: check GetValue(column).GetValueType() first if a column may hold NULL. Throws std::bad_alloc when SQLite
    /// has no memory for the text; SQLite may then have set the value to NULL; Close() reports this with code 7.
    std::string GetText(int column) const;

    /// The bytes of column `column` (from 0), owned by SQLite and valid until the next ReadNext(), Reset() or Close(),
    /// or until the same column is read as another type, which may free the bytes; null for NULL and for an empty
    /// value. Call GetLength() first to get the length.
    const void* GetBlob(int column) const;

    /// Column `column` (from 0) as a value that is valid until the next ReadNext(), Reset() or Close().
    SqlValue GetValue(int column) const;

    /// The same as GetValue().
    SqlValue operator[](int column) const;

    /// The first column of the query whose name has exactly these bytes (letter case counts), as a value like that of
    /// GetValue(). If there is no such column, a value that wraps nothing: its getters return zeroes and record code
    /// 112 in the value. The cursor's record is not changed.
    SqlValue operator[](const std::string& name) const;
    /// @}

    /// @name Errors
    /// @{

    /// The code of the last cursor operation that wrote the record.
    int GetLastError() const;

    /// The message in the record; the reference is valid until this object is assigned to, moved from or destroyed, the
    /// content until the next operation that writes it.
    const std::string& GetLastErrorMsg() const;
    /// @}

private:
    class Impl;

    std::unique_ptr<Impl> m_impl;
};

} // namespace Morvik::sql
