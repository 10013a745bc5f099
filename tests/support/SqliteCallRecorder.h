#pragma once

#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// Records, in order, every call to SQLite while the object lives. The program that links this file defines the SQLite
/// functions that the library uses and forwards them. SQLite's internal calls are not recorded; calls of the test are,
/// so check the recorded calls before the test calls SQLite.
///
/// A call is written as its name and the arguments that matter:
///
///     sqlite3_open_v2(/tmp/x.db, 6, null)          path, flags, name of the file system
///     sqlite3_exec(handle, SELECT 1, null, null)   connection, text, callback, its argument
///     sqlite3_prepare(handle, SELECT 1, -1)        connection, text, byte count; the same for sqlite3_prepare_v2
///     sqlite3_bind_text(1, ab, 2, transient)       index, value, byte count, destructor; the same for blobs
///     sqlite3_bind_int(1, 7)                       index, value; the same for the other numbers
///     sqlite3_column_text(0)                       column; the same for every column read
///     sqlite3_step(), sqlite3_value_int(), sqlite3_close(handle) and so on
///
/// "handle", "statement" or "null" tells whether a pointer was given.
class SqliteCallRecorder {
public:
    SqliteCallRecorder();
    ~SqliteCallRecorder();

    SqliteCallRecorder(const SqliteCallRecorder&) = delete;
    SqliteCallRecorder& operator=(const SqliteCallRecorder&) = delete;

    const std::vector<std::string>& Calls() const;

    /// The calls of one function.
    std::vector<std::string> CallsOf(const std::string& function) const;

    /// The texts passed to sqlite3_exec.
    std::vector<std::string> Executed() const;

    /// Makes the next call of `function` return `result` (0 for a null pointer). With `forward`, the real call is made
    /// first and only its result is replaced; without it, an open or a prepare returns null. The first `skipped` calls
    /// of the function are not changed. Several functions may wait for their call at the same time. Pending() stays
    /// true until every one of these calls has happened.
    void ReplaceNextResult(const std::string& function, int result, bool forward, int skipped = 0);
    bool Pending() const;
};

} // namespace Morvik::sql::tests
