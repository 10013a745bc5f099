#pragma once

#include <string>
#include <vector>

#include <Poco/Data/LOB.h>
#include <Poco/Data/Session.h>

#include "contenders/BoundInput.h"

namespace Morvik::sql::bench {

/// Does the jobs with POCO Data, which binds and extracts complete columns. It cannot read single columns of a stepped
/// statement.
class Poco : public BoundInput {
public:
    static constexpr const char* Name = "POCO";

    /// The rows, stored by column: POCO executes the statement once for each element.
    struct Columns {
        explicit Columns(const std::vector<SampleRow>& rows);

        std::vector<int> numbers;
        std::vector<double> measures;
        std::vector<std::string> labels;
        std::vector<::Poco::Data::CLOB> bytes;
    };

    using Write = Columns;

    static Write MakeWrite(const std::vector<SampleRow>& rows) { return Write(rows); }
    static void OpenAndClose(const std::string& path);

    explicit Poco(const std::string& path);

    void Execute(const std::string& sql);
    void Insert(const Write& write);
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes);
    void Read(const std::string& sql, Rows& rows);
    Totals Walk(const std::string& sql);
    Totals LookUp(const std::vector<Query>& queries);
    void InsertBound(const Columns& columns);

private:
    ::Poco::Data::Session m_session;
};

} // namespace Morvik::sql::bench
