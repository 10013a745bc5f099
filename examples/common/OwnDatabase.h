#pragma once

#include <sql/DatabaseApi.h>

#include <string>

namespace examples {

/// A database file that belongs to one program, with every call checked: what fails throws Failure with the library's
/// code and message.
///
/// The file carries the program's application id, so that a database of another program is refused rather than changed.
/// While another program uses the file, calls wait for it for up to three seconds.
class OwnDatabase {
public:
    /// Opens `path` for writing; the library makes missing directories. Throws Failure if that is impossible and if
    /// the file is no database or the database of another program.
    OwnDatabase(const std::string& path, int applicationId);

    const std::string& Path() const { return m_path; }

    Morvik::sql::DatabaseApi& Api() { return m_api; }

    /// Throws Failure saying that `what` could not be done, with the library's code and message, unless `succeeded`.
    ///
    ///     database.Require(database.Api().CreateTable(definition), "create the table");
    void Require(bool succeeded, const std::string& what) const;

    /// Runs SQL text that returns no rows.
    void Execute(const std::string& sql, const std::string& what);

    /// The rows of a query, as many as there are, with the query closed again.
    Morvik::sql::DbTableData Read(const std::string& sql, const std::string& what);

    /// The number of rows of `table` that satisfy `condition`.
    int Count(const std::string& table, const std::string& condition);

    bool HasTable(const std::string& table);

    /// Closes the database, which fails while a query is open. Destruction closes it too, but cannot report a failure.
    void Close();

private:
    std::string m_path;
    Morvik::sql::DatabaseApi m_api;
};

/// All or nothing: what is done on the database between construction and Commit() is kept together or not at all, also
/// when the program is killed in between.
class Transaction {
public:
    explicit Transaction(OwnDatabase& database);

    /// Rolls back unless Commit() has succeeded.
    ~Transaction();

    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void Commit();

private:
    OwnDatabase& m_database;
    bool m_committed = false;
};

} // namespace examples
