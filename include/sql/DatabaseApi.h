#pragma once

#include <sql/Config.h>
#include <sql/DbTableRowIterator.h>
#include <sql/DbTableRowValues.h>
#include <sql/IDatabaseApi.h>
#include <sql/SqlCommand.h>

#include <memory>
#include <string>
#include <string_view>

namespace Morvik::sql {

/// The database facade: IDatabaseApi on one SQLite connection, with a row-by-row query, prepared statements and the
/// error record. It owns its connection and the one cursor that all reads use, so there is at most one query at a time.
///
///     DatabaseApi database;
///     if (database.OpenDatabase("/var/lib/device/log.db", true) && database.SqlQueryBegin("SELECT * FROM log")) {
///         for (const DbTableRowValues& row : database) { Print(row); }
///     }
///     if (database.Failed()) { Report(database.GetLastError(), database.GetLastErrorMsg()); }
///
/// IDatabaseApi describes the operations that this class inherits. An object, its statements and its iterators belong
/// to one thread at a time.
/// @ingroup facade
class TKOSQLLITE_EXPORT DatabaseApi : public IDatabaseApi {
public:
    /// @name Construction
    /// @{

    /// A facade without a database; code 0 and an empty message.
    DatabaseApi();

    /// Finalizes the query and closes the connection. Statements made by PrepareStatement() must be destroyed before.
    /// If a statement still exists, the connection stays unclosed; if memory also runs out while SQLite's message about
    /// that is stored, the process terminates.
    ~DatabaseApi() override;

    bool OpenDatabase(const std::string& path, bool readOnly) override;
    bool CloseDatabase() override;
    bool IsOpen() const override;

    bool CreateTable(const DbTableDefinition& definition) override;
    bool ExistsTable(const std::string& table, int& result) const override;
    bool DropTable(const std::string& table) override;
    bool AlterTable(const std::string& table, const std::string& newName) override;

    bool Execute(const std::string& sql) override;
    bool WriteTableValues(const std::string& table, const DbTableDataWrite& data) override;
    bool UpdateTableValues(const std::string& table, const DbTableDataWrite& data,
                           const std::string& condition) override;

    bool ReadTableValues(const std::string& table, DbTableData& data) const override;
    bool ReadValues(const std::string& sql, DbTableData& data) const override;
    int ExistData(const std::string& table, const std::string& condition, int& result) override;
    /// @}

    /// @name Reading row by row
    /// @{

    /// Ends the query in progress, empties the current row and opens the query `sql` without fetching a row. The query
    /// in progress also ends when the call is rejected.
    ///
    /// Returns true with code 0. Returns false with 111 "Database isn't open.", 112 "Missing query SQL statement.", or
    /// SQLite's code and message.
    bool SqlQueryBegin(const std::string& sql);

    /// Fetches the next row as the facade's current row and returns an iterator to it, or the end iterator if there is
    /// no row. Each call consumes a row, so call it once per query. The record is the same as after ReadNextRow().
    DbTableRowIterator begin();

    /// The end iterator of this facade. Does not change the query or the record.
    DbTableRowIterator end() const;

    /// Fetches the next row of the query into `row`. The row replaces the cells of `row` and reuses their memory.
    ///
    /// Returns true with code 0. Returns false at the end of the rows with code 0 and an empty message (`row` keeps the
    /// last row), with 111 "Table isn't open." without a query, with SQLite's code and message when the step fails,
    /// and with 112 "No value exists." or "Unknown value type." when a column cannot be converted.
    ///
    /// The code is not reset first: while the record holds another operation's failure, every call consumes a row,
    /// leaves `row` without cells and returns false. A call after the end of the rows starts the query again, so stop
    /// at the first false.
    ///
    /// In WAL mode, while a query is open on a row, the facade's next write fails at once with code 5 if another
    /// connection has written. Call CloseReadTable() before you repeat the write. Do not fetch the remaining rows
    /// first: ReadNextRow() returns false, because the record holds the code of the failed write.
    bool ReadNextRow(DbTableRowValues& row) const;

    /// Releases the query; CloseDatabase() fails while a query is held. Returns true with code 0, also without a query.
    /// Returns false with SQLite's code and message if the query's last step failed; the query is released anyway.
    bool CloseReadTable() const;
    /// @}

    /// @name Prepared statements
    /// @{

    /// Prepares the first statement of `sql` for binding and stepping and always returns an SqlCommand. Check its
    /// GetLastError(): a failure leaves a code without a message (21 on a closed database). Execute("EXPLAIN " + sql)
    /// gives the message. The facade's record is not changed. The statement must not outlive the facade, and must be
    /// finalized or destroyed before CloseDatabase().
    ///
    ///     SqlCommand insert = database.PrepareStatement("INSERT INTO picture VALUES (?, ?)");
    ///     if (insert.BindText(1, name) && insert.BindBlob(2, bytes) && insert.Step()) { ... }
    SqlCommand PrepareStatement(std::string_view sql) const;
    /// @}

    /// @name Errors
    /// @{

    /// The facade's result code, set by the last operation that writes the code.
    int GetLastError() const;

    /// The facade's message. The reference is valid during the lifetime of the facade, its content until the next
    /// operation.
    const std::string& GetLastErrorMsg() const;

    /// True exactly when the code is 0; unlike SqlError::Succeeded(), 100 and 101 are failures here.
    bool Succeeded() const;

    /// The negation of Succeeded().
    bool Failed() const;
    /// @}

private:
    struct Impl;

    std::unique_ptr<Impl> m_impl;
    DbTableRowValues m_row;
};

} // namespace Morvik::sql
