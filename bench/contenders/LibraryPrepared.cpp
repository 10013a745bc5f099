#include "contenders/LibraryPrepared.h"

#include <span>
#include <string_view>

#include "support/Require.h"

namespace Morvik::sql::bench {

namespace {

constexpr std::string_view InsertRow = "INSERT INTO sample VALUES (?,?,?,?)";

std::span<const unsigned char> Bytes(const SampleRow& row)
{
    return {reinterpret_cast<const unsigned char*>(row.bytes.data()), row.bytes.size()};
}

void InsertOne(SqlCommand& insert, const SampleRow& row)
{
    const bool done = insert.BindInteger(1, row.number) && insert.BindDouble(2, row.measure) &&
                      insert.BindText(3, row.label) && insert.BindBlob(4, Bytes(row)) && insert.Step() &&
                      insert.Reset();
    Require(done, "prepared insert", insert.GetLastErrorMsg().c_str());
}

// Calls `action(row)` for every row of the stepped statement.
template <typename Action>
void ForEachRow(SqlCommand& query, Action action)
{
    SampleRow row;
    while (query.Step() && query.HasRowData()) {
        const std::span<const unsigned char> bytes = query.ColumnBlob(3);
        row.number = query.ColumnInt(0);
        row.measure = query.ColumnDouble(1);
        row.label = query.ColumnText(2);
        row.bytes.assign(bytes.begin(), bytes.end());
        action(row);
    }
    Require(query.Reset(), "prepared query", query.GetLastErrorMsg().c_str());
}

} // namespace

LibraryPrepared::LibraryPrepared(const std::string& path)
{
    Require(m_database.OpenDatabase(path, false), "open", m_database.GetLastErrorMsg().c_str());
}

void LibraryPrepared::Execute(const std::string& sql)
{
    Require(m_database.Execute(sql), sql.c_str(), m_database.GetLastErrorMsg().c_str());
}

void LibraryPrepared::Insert(const Write& write)
{
    Execute("BEGIN");
    SqlCommand insert = m_database.PrepareStatement(InsertRow);
    for (const SampleRow& row : write) {
        InsertOne(insert, row);
    }
    Execute("COMMIT");
}

void LibraryPrepared::InsertEach(const std::vector<Write>& writes)
{
    SqlCommand insert = m_database.PrepareStatement(InsertRow);
    for (const Write& write : writes) {
        InsertOne(insert, write.front());
    }
}

void LibraryPrepared::UpdateEach(const std::vector<Change>& changes)
{
    SqlCommand update = m_database.PrepareStatement("UPDATE sample SET measure=?, label=?, bytes=? WHERE number=?");
    for (const Change& row : changes) {
        const bool done = update.BindDouble(1, row.measure) && update.BindText(2, row.label) &&
                          update.BindBlob(3, Bytes(row)) && update.BindInteger(4, row.number) && update.Step() &&
                          update.Reset();
        Require(done, "prepared update", update.GetLastErrorMsg().c_str());
    }
}

void LibraryPrepared::Read(const std::string& sql, Rows& rows)
{
    SqlCommand query = m_database.PrepareStatement(sql);
    ForEachRow(query, [&](SampleRow& row) { rows.push_back(row); });
}

Totals LibraryPrepared::Walk(const std::string& sql)
{
    Totals totals;
    SqlCommand query = m_database.PrepareStatement(sql);
    ForEachRow(query, [&](const SampleRow& row) { totals.Add(row); });
    return totals;
}

Totals LibraryPrepared::LookUp(const std::vector<Query>& queries)
{
    Totals totals;
    SqlCommand query = m_database.PrepareStatement("SELECT * FROM sample WHERE number=?");
    for (const Query number : queries) {
        Require(query.BindInteger(1, number), "bind", query.GetLastErrorMsg().c_str());
        Rows rows;
        ForEachRow(query, [&](SampleRow& row) { rows.push_back(std::move(row)); });
        totals += SumOf(rows);
    }
    return totals;
}

} // namespace Morvik::sql::bench
