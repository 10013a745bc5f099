#pragma once

#include <vector>

#include <sqlite3.h>

namespace Morvik::sql::tests {

/// While the object lives, every connection that is opened accepts texts between double quotation marks, or rejects
/// them as a SQLite built with SQLITE_DQS=0 does. If several objects exist, the newest applies.
class DoubleQuotedTexts {
public:
    explicit DoubleQuotedTexts(bool accepted)
    {
        settings.push_back(accepted ? 1 : 0);
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(ApplyNewest));
    }

    ~DoubleQuotedTexts() { settings.pop_back(); }

    DoubleQuotedTexts(const DoubleQuotedTexts&) = delete;
    DoubleQuotedTexts& operator=(const DoubleQuotedTexts&) = delete;

private:
    static int ApplyNewest(sqlite3* connection, char**, const sqlite3_api_routines*)
    {
        if (settings.empty()) {
            return SQLITE_OK;
        }
        sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, settings.back(), nullptr);
        return sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, settings.back(), nullptr);
    }

    static inline std::vector<int> settings;
};

} // namespace Morvik::sql::tests
