#pragma once

#include "contenders/BoundInput.h"

#include <soci/soci.h>

#include <string>

namespace Morvik::sql::bench {

/// Does the jobs with SOCI: prepared statements that bind and fill variables. SOCI has no bulk operations for blobs,
/// and it cannot read single columns of a stepped statement.
class Soci : public BoundInput {
public:
    static constexpr const char* Name = "SOCI";

    static void OpenAndClose(const std::string& path);

    explicit Soci(const std::string& path);

    void Execute(const std::string& sql);
    void Insert(const Write& write);
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes);
    void Read(const std::string& sql, Rows& rows);
    Totals Walk(const std::string& sql);
    Totals LookUp(const std::vector<Query>& queries);
    void InsertBound(const std::vector<SampleRow>& rows);

private:
    soci::session m_session;
};

} // namespace Morvik::sql::bench
