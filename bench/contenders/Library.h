#pragma once

#include <sql/DatabaseApi.h>

#include <span>
#include <string>
#include <vector>

#include "support/Require.h"
#include "support/Sample.h"

namespace Morvik::sql::bench {

/// Ends the program with the object's message unless `done` holds.
inline void RequireDone(const auto& object, bool done, const char* what)
{
    Require(done, what, object.GetLastErrorMsg().c_str());
}

inline std::span<const unsigned char> Bytes(const SampleRow& row)
{
    return {reinterpret_cast<const unsigned char*>(row.bytes.data()), row.bytes.size()};
}

/// Executes the prepared statement InsertRow with the values of a row.
inline void Insert(SqlCommand& insert, const SampleRow& row)
{
    const bool done = insert.BindInteger(1, row.number) && insert.BindDouble(2, row.measure) &&
                      insert.BindText(3, row.label) && insert.BindBlob(4, Bytes(row)) && insert.Step() &&
                      insert.Reset();
    RequireDone(insert, done, "bound insert");
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
    static Query MakeQuery(int number) { return "SELECT * FROM sample WHERE number=" + std::to_string(number); }
    static Change MakeChange(const SampleRow& row);
    static Totals SumOf(const Rows& rows, Totals totals = {});
    static void OpenAndClose(const std::string& path);

    explicit Library(const std::string& path);

    void Execute(const std::string& sql) { RequireDone(m_database, m_database.Execute(sql), sql.c_str()); }
    void Insert(const Write& write) { RequireDone(m_database, m_database.WriteTableValues("sample", write), "write"); }
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes);
    void Read(const std::string& sql, Rows& rows) { RequireDone(m_database, m_database.ReadValues(sql, rows), "read"); }
    Totals LookUp(const std::vector<Query>& queries)
    {
        return SumOfFound<Library>(queries, [this](const Query& query, Rows& rows) { Read(query, rows); });
    }
    Totals Walk(const std::string& sql);
    Totals Iterate(const std::string& sql);
    void InsertBound(const std::vector<SampleRow>& rows);
    Totals ReadColumns(int times);

private:
    DatabaseApi m_database;
};

} // namespace Morvik::sql::bench
