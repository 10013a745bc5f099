#pragma once

#include "contenders/BoundInput.h"

#include <SQLiteCpp/Database.h>

#include <string>

namespace Morvik::sql::bench {

/// Does the jobs with SQLiteCpp: prepared statements, bound without a copy where SQLiteCpp supports it.
class SqliteCpp : public BoundInput {
public:
    static constexpr const char* Name = "SQLiteCpp";

    static void OpenAndClose(const std::string& path);

    explicit SqliteCpp(const std::string& path);

    void Execute(const std::string& sql);
    void Insert(const Write& write);
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes);
    void Read(const std::string& sql, Rows& rows);
    Totals Walk(const std::string& sql);
    Totals LookUp(const std::vector<Query>& queries);
    void InsertBound(const std::vector<SampleRow>& rows);
    Totals ReadColumns(int times);

private:
    SQLite::Database m_database;
};

} // namespace Morvik::sql::bench
