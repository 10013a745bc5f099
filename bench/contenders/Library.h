#pragma once

#include <sql/DatabaseApi.h>

#include <string>
#include <vector>

#include "support/Sample.h"

namespace Morvik::sql::bench {

/// Reads the result of each query with `Reader`, and adds up all of them.
template <typename Reader>
Totals SumOfReads(Reader& reader, const std::vector<std::string>& queries)
{
    Totals totals;
    for (const std::string& query : queries) {
        typename Reader::Rows rows;
        reader.Read(query, rows);
        totals += Reader::SumOf(rows);
    }
    return totals;
}

/// Does the jobs with the facade, as an application does.
class Library {
public:
    static constexpr const char* Name = "tkosqllite";

    using Write = DbTableDataWrite;
    using Rows = DbTableData;
    using Query = std::string;
    struct Change {
        DbTableDataWrite values;
        std::string condition;
    };

    static Write MakeWrite(const std::vector<SampleRow>& rows) { return WriteRequest(rows); }
    static Query MakeQuery(int number) { return SelectByNumber(number); }
    static Change MakeChange(const SampleRow& row);
    static Totals SumOf(const Rows& rows);
    static void OpenAndClose(const std::string& path);

    explicit Library(const std::string& path);

    void Execute(const std::string& sql);
    void Insert(const Write& write);
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes);
    void Read(const std::string& sql, Rows& rows);
    Totals LookUp(const std::vector<Query>& queries) { return SumOfReads(*this, queries); }
    Totals Walk(const std::string& sql);
    Totals Iterate(const std::string& sql);
    void InsertBound(const std::vector<SampleRow>& rows);
    Totals ReadColumns(int times);

private:
    DatabaseApi m_database;
};

} // namespace Morvik::sql::bench
