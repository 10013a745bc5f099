#pragma once

#include <sql/DatabaseApi.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace Morvik::sql {

class StatementText;

/// The facade's implementation object. Its operations stand in one file per room: DatabaseApi.cpp (lifecycle, executing
/// and the record), DatabaseApiTables.cpp, DatabaseApiWriting.cpp, DatabaseApiReading.cpp and DatabaseApiCursor.cpp.
///
/// The recording rule, for all of them: an operation that starts a piece of work calls ResetCode(), which leaves the
/// message; a failed check of the facade's own calls Fail(); the failure of a lower object is taken over with
/// CopyRecord(); and the result is Succeeded().
class __attribute__((visibility("hidden"))) DatabaseApi::Impl {
public:
    Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() = default;

    bool Succeeded() const noexcept { return code == 0; }
    void ResetCode() noexcept { code = 0; }

    /// Records a failed check and returns false.
    bool Fail(int failureCode, std::string_view failureMessage);

    /// Takes over code and message of a connection, statement, cursor or value.
    template <typename Recorded>
    void CopyRecord(const Recorded& recorded)
    {
        Fail(recorded.GetLastError(), recorded.GetLastErrorMsg());
    }

    /// True with the record untouched while the database is open; otherwise records 111.
    bool CheckOpen();

    /// Runs the text on the connection, open or not, and takes over the failure. The code is not reset.
    bool RunCommand(const std::string& sql);

    /// Resets the code and runs the text, which must not be empty.
    bool Execute(const std::string& sql);

    bool CreateTable(const DbTableDefinition& definition);
    bool ExistsTable(const std::string& table);
    bool DropTable(const std::string& table);
    bool AlterTable(const std::string& table, const std::string& newName);
    static std::string TableDefinitionToString(const DbTableDefinition& definition);

    /// Runs what a definition was turned into, which must not be empty.
    bool RunDefinition(const std::string& sql);

    bool Write(const std::string& table, const DbTableDataWrite& data);
    bool Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition);

    /// Closes the cursor, resets the code and opens the cursor on the query.
    bool OpenCursor(const std::string& sql);
    bool ReadValues(const std::string& sql, DbTableData& data);

    /// Fetches the cursor's next row without resetting the code.
    bool ReadNextRow(DbTableRowValues& row);

    /// Converts the cursor's current row, up to the first cell that fails. Whether the whole row was converted is read
    /// from the code afterwards; a code that was not 0 before keeps every cell out.
    void ReadRow(const SqlTable& cursor, DbTableRowValues& row);
    bool GetColumnData(const SqlTable& cursor, DbTableColumnValue& cell, unsigned int column);

    bool CloseCursor();

    std::int32_t code = 0;
    std::string message;
    SqlDatabase database;
    SqlTable table;

private:
    void AppendCells(StatementText& sql, const DbTableRowValues& row);
};

} // namespace Morvik::sql
