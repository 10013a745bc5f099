#pragma once

#include <sql/Config.h>

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace Morvik::sql {

class SqlDatabase;

/// Runs SQL on one connection: either complete texts (Execute), or one prepared statement that is bound, stepped, reset
/// and read column by column. The SqlDatabase must outlive the command, and the command must be finalized or destroyed
/// before the connection can close.
///
///     SqlCommand command(database);
///     if (command.Prepare("SELECT size FROM package WHERE name = ?") && command.BindText(1, name) &&
///         command.Step() && command.HasRowData()) {
///         total += command.ColumnInt64(0);
///     }
///
/// Parameters count from 1, columns from 0. Commands of one connection are used from one thread at a time.
///
/// When SQLite fails, an operation returns false and SQLite's code is in the record. Execute() and Step() also store
/// the message. Prepare(), the bind operations, ClearBindings(), Reset() and Finalize() store the code and keep the
/// earlier message, so a failed Prepare() of a new command leaves a code and no message. Operations that need a
/// statement return false without one and leave the record unchanged.
///
/// The only exception thrown is std::bad_alloc, when memory runs out.
///
/// A moved-from command may only be assigned to or destroyed.
/// @ingroup wrappers
class TKOSQLLITE_EXPORT SqlCommand final {
public:
    /// @name Construction
    /// @{

    /// A command on `database` without a statement; code 0 and an empty message. The connection may be opened later.
    explicit SqlCommand(SqlDatabase& database);

    /// Takes over the source's statement, record and connection.
    SqlCommand(SqlCommand&& other) noexcept;

    /// Takes over the source's statement, record and connection, then finalizes the statement that this object held
    /// before.
    SqlCommand& operator=(SqlCommand&& other) noexcept;

    SqlCommand(const SqlCommand&) = delete;            ///< A statement has one owner.
    SqlCommand& operator=(const SqlCommand&) = delete; ///< A statement has one owner.

    /// Finalizes a held statement.
    ~SqlCommand();
    /// @}

    /// @name Running
    /// @{

    /// Runs every statement of `sql` in turn and discards result rows; a prepared statement is not touched. The text
    /// ends at its first zero byte. Returns true with code 0 and an empty message (also for an empty text). On
    /// failure returns false with SQLite's code and error text; statements before the failing one stay done, unless the
    /// failure ends their transaction. On a closed connection: code 21 and an empty message.
    bool Execute(const std::string& sql);

    /// Compiles the first statement of `sql`; text after it is silently ignored. The view need not be zero-terminated,
    /// and may include its terminator.
    ///
    /// Returns true with code 0, also for a text without a statement (empty, blanks, a comment): then no statement is
    /// held and Step() returns false. Returns false with the record unchanged when a statement is already held;
    /// otherwise false with SQLite's code and the earlier message: 21 on a closed connection or for a view without data
    /// (a null pointer, such as a default-constructed view).
    bool Prepare(std::string_view sql);
    /// @}

    /// @name Binding
    /// @{

    /// Binds a 32-bit integer to parameter `index` (from 1). Returns false with code 25 for an index out of range, and
    /// with code 21 for a statement that has been stepped and not reset. This and the other bind operations leave the
    /// message unchanged.
    bool BindInteger(int index, int value);

    /// Binds a 64-bit integer to parameter `index` (from 1); results as for BindInteger().
    bool BindInt64(int index, long long value);

    /// Binds a floating-point number to parameter `index` (from 1); not-a-number is bound as NULL by SQLite. Results
    /// as for BindInteger().
    bool BindDouble(int index, double value);

    /// Binds a copy of `text` (UTF-8, embedded zero bytes included) to parameter `index` (from 1). A view without
    /// data (a null pointer) binds NULL, an empty text binds an empty text. Results as for BindInteger(); code 18 for
    /// a text beyond SQLite's length limit.
    bool BindText(int index, std::string_view text);

    /// Binds a copy of `bytes` to parameter `index` (from 1). A span without data (a null pointer) binds NULL.
    /// Results as for BindText().
    bool BindBlob(int index, std::span<const unsigned char> bytes);

    /// Sets every parameter back to NULL. Returns true with code 0; false without a statement.
    bool ClearBindings();
    /// @}

    /// @name Stepping
    /// @{

    /// Advances to the next row. Returns true with an empty message for a row (code 100, HasRowData() is true) and for
    /// the end (code 101, HasRowData() is false). Returns false with SQLite's code and message when the step fails, and
    /// false with the record unchanged without a statement. A step after the end starts the statement again, so while
    /// (Step()) never ends: loop while (Step() && HasRowData()).
    bool Step();

    /// Rewinds the statement to before its first row; bindings stay. Returns true with code 0. After a failed step,
    /// SQLite reports that step's code again, and Reset() returns false with that code.
    bool Reset();

    /// Always releases the statement. Returns true with code 0, or false with the code of the last failed step; false
    /// with the record unchanged without a statement.
    bool Finalize();
    /// @}

    /// @name Reading the current row
    /// @{

    /// The number of columns of the current row; 0 when no row is available. A row is available after a Step() that
    /// returned a row, until the next operation that stores a code (a bind, ClearBindings(), Reset(), Finalize(),
    /// Step(), Execute()).
    int ColumnCount() const;

    /// True when a row is available and column `column` (from 0) holds NULL.
    bool ColumnIsNull(int column) const;

    /// Column `column` (from 0) as a 32-bit integer, converted by SQLite; a wider value is cut to its low 32 bits. 0
    /// when no row is available. Column reads never change the record.
    int ColumnInt(int column) const;

    /// Column `column` (from 0) as a 64-bit integer; 0 when no row is available.
    long long ColumnInt64(int column) const;

    /// Column `column` (from 0) as a floating-point number; 0.0 when no row is available.
    double ColumnDouble(int column) const;

    /// A copy of the text of column `column` (from 0), embedded zero bytes included; empty for NULL, for an empty text
    /// and when no row is available. Also empty if SQLite had no memory to convert the value: the next Step(), Reset()
    /// or Finalize() then fails with code 7. The same holds for ColumnBlob().
    std::string ColumnText(int column) const;

    /// A view of the bytes of column `column` (from 0), valid until the next Step(), Reset() or Finalize(), or until
    /// the same column is read as another type, which may free the bytes. The view is empty, with a null pointer, for
    /// NULL, for an empty value and when no row is available.
    std::span<const unsigned char> ColumnBlob(int column) const;

    /// True when the record's code is 100: the last step returned a row.
    bool HasRowData() const;
    /// @}

    /// @name Errors
    /// @{

    /// The code of the last operation that wrote the record.
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
