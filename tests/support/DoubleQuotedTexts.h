#pragma once

#include <sqlite3.h>

namespace Morvik::sql::tests {

/// While the object lives, every connection that is opened accepts texts between double quotation marks, or rejects
/// them as a SQLite built with SQLITE_DQS=0 does. If several objects exist, the newest applies.
class DoubleQuotedTexts {
public:
    explicit DoubleQuotedTexts(bool accepted) : m_extension(accepted ? Accept : Reject)
    {
        sqlite3_auto_extension(EntryPoint());
    }

    ~DoubleQuotedTexts() { sqlite3_cancel_auto_extension(EntryPoint()); }

    DoubleQuotedTexts(const DoubleQuotedTexts&) = delete;
    DoubleQuotedTexts& operator=(const DoubleQuotedTexts&) = delete;

private:
    using Extension = int(sqlite3*, char**, const sqlite3_api_routines*);

    static int Set(sqlite3* connection, int accepted)
    {
        sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, accepted, nullptr);
        return sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, accepted, nullptr);
    }

    static int Accept(sqlite3* connection, char**, const sqlite3_api_routines*) { return Set(connection, 1); }
    static int Reject(sqlite3* connection, char**, const sqlite3_api_routines*) { return Set(connection, 0); }

    void (*EntryPoint() const)() { return reinterpret_cast<void (*)()>(m_extension); }

    Extension* m_extension;
};

} // namespace Morvik::sql::tests
