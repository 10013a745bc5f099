#pragma once

#include "contenders/BoundInput.h"

#include <Poco/Data/Session.h>

#include <string>

namespace Morvik::sql::bench {

/// The jobs with POCO Data: whole columns bound and extracted at once. It reads no columns of a stepped statement.
class Poco : public BoundInput {
public:
    static constexpr const char* Name = "POCO";

    static void OpenAndClose(const std::string& path);

    explicit Poco(const std::string& path);

    void Execute(const std::string& sql);
    void Insert(const Write& write);
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes);
    void Read(const std::string& sql, Rows& rows);
    Totals Walk(const std::string& sql);
    Totals LookUp(const std::vector<Query>& queries);
    void InsertBound(const std::vector<SampleRow>& rows);

private:
    ::Poco::Data::Session m_session;
};

} // namespace Morvik::sql::bench
