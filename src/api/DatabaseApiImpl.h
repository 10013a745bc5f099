#pragma once

#include <sql/DatabaseApi.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace Morvik::sql {

enum class StorageClass : int;
struct InvalidCell;
struct WriteStatement;

/// The facade's implementation: it checks arguments, runs the statements of the model on its connection, converts rows,
/// and holds the error. There is one file for each group of operations: DatabaseApi.cpp (opening, executing, the
/// error), DatabaseApiTables.cpp, DatabaseApiWriting.cpp, DatabaseApiReading.cpp and DatabaseApiCursor.cpp. All rows
/// are converted in DatabaseApiReading.cpp, which is built for speed.
///
/// All operations store errors in the same way. An operation that starts a unit of work calls ResetCode(), which leaves
/// the message. A failed check calls Fail(). A failure of a connection, command or cursor is copied with
/// CopyErrorFrom(). The operation returns Succeeded().
struct __attribute__((visibility("hidden"))) DatabaseApi::Impl {
    Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() = default;

    bool Succeeded() const noexcept { return code == 0; }
    void ResetCode() noexcept { code = 0; }

    /// Sets the code and the message, and returns false.
    bool Fail(int failureCode, const char* failureMessage);
    bool Fail(int failureCode, std::string_view failureMessage);

    /// Copies the code and the message of a connection, command or cursor.
    template <typename Source>
    void CopyErrorFrom(const Source& source)
    {
        Fail(source.GetLastError(), source.GetLastErrorMsg());
    }

    /// Returns true if the database is open and leaves the error unchanged; otherwise sets code 111 and returns false.
    bool CheckOpen();

    /// Runs the text on the connection, which may be closed, and copies the failure. The code is not reset.
    bool RunCommand(const std::string& sql);

    /// Resets the code and runs the text, which must not be empty.
    bool Execute(const std::string& sql);

    bool CreateTable(const DbTableDefinition& definition);
    bool ExistsTable(const std::string& table);
    bool DropTable(const std::string& table);
    bool AlterTable(const std::string& table, const std::string& newName);
    static std::string TableDefinitionToString(const DbTableDefinition& definition);

    /// Runs the statement made from a definition. The statement must not be empty.
    bool RunDefinition(const std::string& sql);

    bool Write(const std::string& table, const DbTableDataWrite& data);
    bool Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition);

    /// Runs the statement. If it has an invalid cell, first sets the error that names the cell.
    bool RunWrite(WriteStatement& statement);

    /// Sets the error that names the cell.
    void FailInvalidCell(const InvalidCell& cell);

    /// Closes the cursor, resets the code and opens the cursor on the query.
    bool OpenCursor(const std::string& sql);
    bool ReadValues(const std::string& sql, DbTableData& data);

    /// Fetches the cursor's next row without resetting the code.
    bool ReadNextRow(DbTableRowValues& row);

    /// Converts the cursor's current row, up to the first cell that fails. The code is 0 afterwards if the row is
    /// complete. If the code was not 0 before, the row has no cells.
    void ReadRow(const SqlTable& cursor, DbTableRowValues& row);

    /// Converts one column of the current row into the cell. Returns false if the code is not 0 afterwards, even
    /// if it was set before the call.
    bool GetColumnData(const SqlTable& cursor, DbTableColumnValue& cell, unsigned int column);
    void AppendCells(const SqlTable& cursor, std::vector<DbTableColumnValue>& cells);
    bool FailConversion(StorageClass type);

    bool CloseCursor();

    std::int32_t code = 0;
    std::string message;
    SqlDatabase database;
    SqlTable table;
};

} // namespace Morvik::sql
