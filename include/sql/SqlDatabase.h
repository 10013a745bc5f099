#pragma once

#include <sql/Config.h>

#include <memory>
#include <string>

struct sqlite3;

namespace Morvik::sql {

/// Owns one SQLite connection to one database file. Statements and cursors (SqlCommand, SqlTable) refer to their
/// SqlDatabase and get the current handle from it at every call, so it must outlive them.
///
///     SqlDatabase database;
///     if (!database.Open("/var/lib/device/log.db", false)) {
///         return Report(database.GetLastError(), database.GetLastErrorMsg());
///     }
///
/// A connection and everything made on it is used from one thread at a time.
///
/// A moved-from SqlDatabase may only be assigned to, and must be given a new value before it is destroyed. No other
/// operation of it may be called. So assigning from a temporary is not allowed, because the temporary is destroyed at
/// once.
/// @ingroup wrappers
class TKOSQLLITE_EXPORT SqlDatabase final {
public:
    /// @name Construction
    /// @{

    /// A closed connection with code 0 and an empty message.
    SqlDatabase();

    /// Takes over the source's connection and record. Statements and cursors made on the source still refer to the
    /// source, so move a connection before making any.
    SqlDatabase(SqlDatabase&& other) noexcept;

    /// Takes over the source's connection and record. If this object still holds a connection, that connection is
    /// abandoned without being closed; call Close() before assigning.
    SqlDatabase& operator=(SqlDatabase&& other) noexcept;

    SqlDatabase(const SqlDatabase&) = delete;            ///< A connection has one owner.
    SqlDatabase& operator=(const SqlDatabase&) = delete; ///< A connection has one owner.

    /// Closes as Close() does. If that fails because statements are still held, the connection stays unclosed. If
    /// memory also runs out while SQLite's message about that is stored, the process terminates.
    ~SqlDatabase();
    /// @}

    /// @name The connection
    /// @{

    /// Opens the database file `path` read-only, or read-write and creates it if it is missing.
    ///
    /// Missing parent directories are created first, also for a read-only open. A path that begins with ":" (such as
    /// ":memory:") and a file name without a directory skip that step. A name that begins with "file:" is treated as a
    /// path in that step; SQLite reads it as a URI if it was built with SQLITE_USE_URI.
    ///
    /// Returns true with code 0 and an empty message. Returns false
    /// - while a connection is already open: that connection and the record stay as they are;
    /// - with code 111 and "Create directory failed: " followed by `path` when the parent directory could not be
    ///   inspected or created;
    /// - with SQLite's code and message when SQLite cannot open the file. The connection is closed afterwards.
    ///
    /// SQLite reads the file only when a statement needs it, so opening a file that is not a database succeeds, and
    /// the first such statement fails with code 26.
    bool Open(const std::string& path, bool readOnly);

    /// Closes the connection. Returns true with code 0 and an empty message. If the connection is closed already,
    /// returns true with the record unchanged. Returns false with SQLite's code and message (5 while statements or
    /// cursors on the connection are still held); the connection then stays open.
    bool Close();

    /// True from a successful Open() to a successful Close().
    bool IsOpen() const;

    /// SQLite's handle of the connection; null while closed. This object still owns the handle, which is valid until
    /// Close(). Only the form GetNativeDatabaseInstance<sqlite3>() exists.
    template <typename Native>
    Native* GetNativeDatabaseInstance() = delete;
    /// @}

    /// @name Errors
    /// @{

    /// The code of the last connection operation that wrote the record.
    int GetLastError() const;

    /// The message of the last connection operation that wrote the record; the reference is valid until this object
    /// is assigned to, moved from or destroyed, the content until the next operation.
    const std::string& GetLastErrorMsg() const;
    /// @}

private:
    class Impl;

    std::unique_ptr<Impl> m_impl;
};

/// @cond
template <>
TKOSQLLITE_EXPORT sqlite3* SqlDatabase::GetNativeDatabaseInstance<sqlite3>();
/// @endcond

} // namespace Morvik::sql
