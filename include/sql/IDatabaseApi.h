#pragma once

#include <sql/Config.h>
#include <sql/DbTableData.h>
#include <sql/DbTableDataWrite.h>
#include <sql/DbTableDefinition.h>

#include <string>

namespace Morvik::sql {

/// Uses one SQLite database file: opens and closes it, runs SQL text, manages tables, inserts and updates rows and
/// reads complete results. DatabaseApi implements it and adds the row-by-row query, prepared statements and the error
/// record.
///
///     DatabaseApi database;
///     if (!database.OpenDatabase("/var/lib/device/log.db", false) || !database.CreateTable(definition) ||
///         !database.WriteTableValues("log", rows)) {
///         return Report(database.GetLastError(), database.GetLastErrorMsg());
///     }
///
/// An object and everything that it returns belong to one thread at a time.
///
/// No operation throws for an SQL or file failure: it returns false and leaves a code and, in most cases, a message.
/// These cases differ: if the test for the table fails while it runs, DropTable() returns true, and ExistsTable() and
/// ExistData() set `result` to 0; OpenDatabase() on an open database returns true. Only std::bad_alloc is thrown, when
/// memory runs out. Three cases are reported in other ways: SQLite's allocator is out of memory (code 7, or 1 while
/// rows are stepped through), a directory cannot be created without memory (111), the quotation marks of a text cannot
/// be doubled (1, "near ")": syntax error"). In all cases a failed write or schema change has changed nothing, except
/// that earlier statements of Execute() and DropTable() stay done, as do rows before a conflict with ON CONFLICT FAIL;
/// inside a transaction, SQLite may undo the complete transaction on code 7, 10 or 13. Every operation that starts a
/// unit of work sets the code to 0 first and leaves the message, so a success may leave the message of an earlier
/// failure. The table lists the codes; each failure of each operation, in all classes, has a row in
/// @ref codes "codes and messages".
///
/// | Code | Message                                   | Meaning                                                  |
/// |------|-------------------------------------------|----------------------------------------------------------|
/// | 0    | (left from before)                        | success                                                  |
/// | 1-99 | SQLite's own                              | SQLite's primary result code                             |
/// | 100  | (empty)                                   | a row of a complete read could not be converted          |
/// | 110  | (none, only in ExistData's `result`)      | ExistData caught an exception                            |
/// | 111  | "Database isn't open."                    | the operation needs an open database                     |
/// | 111  | "Table isn't open."                       | a row was asked for without a query                      |
/// | 111  | "Create directory failed: " + path        | the database's directory could not be made or inspected  |
/// | 112  | "Missing command."                        | the SQL text to execute is empty                         |
/// | 112  | "Missing query SQL statement."            | the SQL text to read is empty                            |
/// | 112  | "Missing table name."                     | the table name is empty                                  |
/// | 112  | "Missing column names."                   | an update names no columns                               |
/// | 112  | "SQL statement is empty."                 | the statement made from a definition is empty            |
/// | 112  | "Invalid column value: (row \| column)" + position + "\|" + column | a cell has no SQL text          |
/// | 112  | "No value exists.", "Unknown value type." | a column of a row could not be converted                 |
/// | 113  | "No table exists: " + name                | the table to rename was not found                        |
///
/// Table and column names, conditions and SQL text are used unchanged, unquoted and unchecked; never build them from an
/// untrusted source. A name that contains a blank or a quote or is a keyword works in quotation marks ("\"my table\"")
/// for CreateTable(), WriteTableValues(), UpdateTableValues(), ReadTableValues(), for columns, and as the new name of
/// AlterTable(). ExistsTable() takes such a name without quotation marks. ExistData(), DropTable() and AlterTable()
/// (old name) do not work with such a name: with quotation marks they find no table, without them SQLite rejects the
/// statement. Use Execute() and ReadValues() instead.
/// @ingroup facade
class TKOSQLLITE_EXPORT IDatabaseApi {
public:
    virtual ~IDatabaseApi(); ///< Virtual, so that an object can be destroyed through the interface.

    IDatabaseApi(const IDatabaseApi&) = delete;            ///< An open database has one owner.
    IDatabaseApi& operator=(const IDatabaseApi&) = delete; ///< An open database has one owner.

    /// @name Opening and closing
    /// @{

    /// Opens the database file `path` read-only, or read-write and creates it if it is missing. Missing parent
    /// directories are created in both modes. ":memory:" opens a database in memory.
    ///
    /// Returns true with code 0. Returns false with 111 and "Create directory failed: " followed by `path`, or with
    /// SQLite's code and message (14: the file cannot be opened). While a database is already open, it stays open and
    /// the code and message of the last opening or closing are repeated: after a successful open the call returns true.
    virtual bool OpenDatabase(const std::string& path, bool readOnly) = 0;

    /// Closes the database. Returns true with code 0, also when it is closed already. Returns false with SQLite's code
    /// and message (5) while a query or a prepared statement is still held; the database then stays open. A read holds
    /// its query until DatabaseApi::CloseReadTable.
    virtual bool CloseDatabase() = 0;

    /// True from a successful OpenDatabase() to a successful CloseDatabase(). Does not change the code or the message.
    virtual bool IsOpen() const = 0;
    /// @}

    /// @name Tables
    /// @{

    /// Creates the table if no table or view of that name exists. An existing table or view is left unchanged, even
    /// if it has other columns.
    ///
    /// Returns true with code 0. Returns false with 111 "Database isn't open.", 112 "Missing table name.", or SQLite's
    /// code and message for a definition that SQLite rejects (such as one with a foreign key, see DbTableConstraints).
    virtual bool CreateTable(const DbTableDefinition& definition) = 0;

    /// Returns whether a table of that name exists, letter case ignored (ASCII). TEMP tables, tables of attached files
    /// and views are not found. `result` receives the facade's code: 0 when the test ran, 112 ("Missing table name.")
    /// for an empty name, SQLite's code when the test could not run (1 for a name whose apostrophes break the query, 5
    /// when the file is locked before its schema was read, 21 and "out of memory" on a closed database). If the test
    /// fails while it runs, because memory runs out or the file is locked, the table counts as absent and `result` is
    /// 0. A query in progress is not affected.
    virtual bool ExistsTable(const std::string& table, int& result) const = 0;

    /// Deletes all rows of the table, then drops it; an absent table is a success. These are two statements: if the
    /// second fails, an empty table remains. Run DropTable() in a transaction if that matters. A table that the test of
    /// ExistsTable() does not find counts as absent, also if the test fails while it runs: begin a transaction (BEGIN
    /// IMMEDIATE) first if another program may lock the file.
    ///
    /// Returns true with code 0. Returns false with 111 "Database isn't open.", 112 "Missing table name.", or SQLite's
    /// code and message (5 when the file is locked and the test could not run, or the rows cannot be deleted).
    virtual bool DropTable(const std::string& table) = 0;

    /// Renames a table. Returns true with code 0. Returns false with 111 "Database isn't open.", 113 "No table exists:
    /// " followed by `table` (also when `table` is empty or the test for it failed), or SQLite's code and message.
    virtual bool AlterTable(const std::string& table, const std::string& newName) = 0;
    /// @}

    /// @name Running SQL and writing
    /// @{

    /// Runs every statement of `sql` in turn and discards result rows; the text ends at its first zero byte.
    ///
    /// Returns true with code 0. Returns false with 112 "Missing command." for an empty text, or with SQLite's code and
    /// message. Statements before the failing one stay done, unless the failure ends their transaction (INSERT OR
    /// ROLLBACK, and possibly code 7, 10 or 13). On a closed database: code 21 with an empty message.
    virtual bool Execute(const std::string& sql) = 0;

    /// Inserts all rows of `data` with one statement: all of them or none, unless the table tells SQLite otherwise (the
    /// keys of DbTableConstraints skip rows that conflict, and a column's ON CONFLICT argument may skip or replace rows
    /// or keep those before the conflict). Without column names the rows give every column of the table in its order.
    ///
    /// Returns true with code 0. Returns false with 112 "Missing table name.", or with SQLite's code and message: 19
    /// for a violated constraint, 1 for a rejected statement (no rows, cells that do not match the columns, a cell
    /// without SQL text), 21 with an empty message on a closed database. DbTableColumnValue says how texts and blobs
    /// are stored.
    virtual bool WriteTableValues(const std::string& table, const DbTableDataWrite& data) = 0;

    /// Assigns the cells of the first row of `data` to `data.columns` in every row that `condition` selects; further
    /// rows of `data` are ignored. `condition` is the complete clause with its keyword ("WHERE id=3"); an empty
    /// condition changes every row of the table. A text or blob cell that equals a column's name stores that column's
    /// content: see DbTableColumnValue.
    ///
    /// Returns true with code 0, also when no row was selected. Returns false with 112 "Missing table name." or
    /// "Missing column names.", or with SQLite's code and message as for WriteTableValues().
    virtual bool UpdateTableValues(const std::string& table, const DbTableDataWrite& data,
                                   const std::string& condition) = 0;
    /// @}

    /// @name Reading
    /// @{

    /// Appends every row of the table to `data.rows`; see ReadValues().
    virtual bool ReadTableValues(const std::string& table, DbTableData& data) const = 0;

    /// Runs the query `sql` and appends its rows to `data.rows`, which is never cleared. Ends a row-by-row query in
    /// progress. The query stays open after the last row, so close it (DatabaseApi::CloseReadTable) before
    /// CloseDatabase().
    ///
    /// Returns true with code 0 and an empty message; a text without a statement reads no rows. Returns false with 111
    /// "Database isn't open.", 112 "Missing query SQL statement.", SQLite's code and message, or 100 and an empty
    /// message when a row could not be converted. Rows read before a failure stay in `data`.
    virtual bool ReadValues(const std::string& sql, DbTableData& data) const = 0;

    /// Returns the number of rows of the table that satisfy `condition`, as a 32-bit number. `condition` is a complete
    /// clause with its keyword ("WHERE size > 3") or empty. Returns 0 on a failure, except that the count is still
    /// returned when closing the query fails. `result` receives 0 (also for an absent table, and for a table that
    /// ExistsTable() does not find), the facade's code of the failed step, or 110 when an exception was caught. Ends a
    /// row-by-row query in progress if the table was found.
    virtual int ExistData(const std::string& table, const std::string& condition, int& result) = 0;
    /// @}

protected:
    IDatabaseApi() = default; ///< For the classes that implement the interface.
};

} // namespace Morvik::sql
