#include "common/OwnDatabase.h"

#include <filesystem>
#include <system_error>

#include "common/Cells.h"
#include "common/Failure.h"

namespace examples {

using Morvik::sql::DbTableData;

OwnDatabase::OwnDatabase(const std::string& path, int applicationId) : m_path(path)
{
    // SQLite would write to a device and leave a journal beside it.
    std::error_code ignored;
    if (const auto file = std::filesystem::status(path, ignored); exists(file) && !is_regular_file(file)) {
        throw Failure("cannot use " + path + ": it is no regular file");
    }
    Require(m_api.OpenDatabase(path, false), "open");
    // Without this, a program that reads the file at the wrong moment would make a write fail at once.
    Execute("PRAGMA busy_timeout = 3000", "open");

    // SQLite looks into the file at the first statement; this is where one that is no database is found out.
    const DbTableData found = Read("SELECT application_id, (SELECT count(*) FROM sqlite_master) "
                                   "FROM pragma_application_id",
                                   "read");
    const int id = IntegerOf(found.rows.at(0), 0);
    const int tables = IntegerOf(found.rows.at(0), 1);
    if (id == 0 && tables == 0) {
        Execute("PRAGMA application_id = " + std::to_string(applicationId), "write to");
    } else if (id != applicationId) {
        throw Failure("cannot use " + path + ": it is the database of another program");
    }
}

void OwnDatabase::Require(bool succeeded, const std::string& what) const
{
    if (!succeeded) {
        throw Failure("cannot " + what + " " + m_path + ": " + m_api.GetLastErrorMsg() + " (code " +
                      std::to_string(m_api.GetLastError()) + ")");
    }
}

void OwnDatabase::Execute(const std::string& sql, const std::string& what)
{
    Require(m_api.Execute(sql), what);
}

DbTableData OwnDatabase::Read(const std::string& sql, const std::string& what)
{
    DbTableData data;
    Require(m_api.ReadValues(sql, data), what);
    // The query stays open after its last row, and an open query keeps the database from closing.
    Require(m_api.CloseReadTable(), what);
    return data;
}

int OwnDatabase::Count(const std::string& table, const std::string& condition)
{
    int code = 0;
    const int count = m_api.ExistData(table, condition, code);
    Require(code == 0, "count the rows in");
    return count;
}

bool OwnDatabase::HasTable(const std::string& table)
{
    int code = 0;
    const bool exists = m_api.ExistsTable(table, code);
    Require(code == 0, "look for a table in");
    return exists;
}

void OwnDatabase::Close()
{
    Require(m_api.CloseDatabase(), "close");
}

// IMMEDIATE takes the write lock at once, so that a second run at the same time is turned away here and not half-way.
Transaction::Transaction(OwnDatabase& database) : m_database(database)
{
    m_database.Execute("BEGIN IMMEDIATE", "begin to write to");
}

Transaction::~Transaction()
{
    if (!m_committed) {
        // After some failures SQLite has rolled back already and refuses. If rolling back fails for another reason, the
        // journal stays beside the database and whoever opens it next rolls back. Neither is for the caller to mend.
        m_database.Api().CloseReadTable();
        m_database.Api().Execute("ROLLBACK");
    }
}

void Transaction::Commit()
{
    m_database.Execute("COMMIT", "save");
    m_committed = true;
}

} // namespace examples
