#pragma once

#include <string>
#include <vector>

#include <sql/DatabaseApi.h>

#include "contenders/BoundInput.h"

namespace Morvik::sql::bench {

/// Does the jobs with the facade's prepared statements, as an application does.
class LibraryPrepared : public BoundInput {
public:
    static constexpr const char* Name = "PrepareStatement";

    explicit LibraryPrepared(const std::string& path);

    void Execute(const std::string& sql);
    void Insert(const Write& write);
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes);
    void Read(const std::string& sql, Rows& rows);
    Totals Walk(const std::string& sql);
    Totals LookUp(const std::vector<Query>& queries);

private:
    DatabaseApi m_database;
};

} // namespace Morvik::sql::bench
