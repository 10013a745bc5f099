#include "contenders/Library.h"

#include <span>
#include <variant>

#include "support/Require.h"

namespace Morvik::sql::bench {

namespace {

void Add(Totals& totals, const DbTableRowValues& row)
{
    const auto& label = std::get<std::string>(row.cells[2].value);
    const auto& bytes = std::get<std::vector<char>>(row.cells[3].value);
    totals.Add(std::get<int>(row.cells[0].value), std::get<double>(row.cells[1].value), label.data(), label.size(),
               bytes.data(), bytes.size());
}

} // namespace

Library::Change Library::MakeChange(const SampleRow& row)
{
    Change change{WriteRequest({row}), UpdateCondition(row)};
    change.values.columns.erase(change.values.columns.begin());
    change.values.rows[0].cells.erase(change.values.rows[0].cells.begin());
    return change;
}

Totals Library::SumOf(const Rows& rows)
{
    Totals totals;
    for (const DbTableRowValues& row : rows.rows) {
        Add(totals, row);
    }
    return totals;
}

void Library::OpenAndClose(const std::string& path)
{
    DatabaseApi database;
    Require(database.OpenDatabase(path, false), "open", database.GetLastErrorMsg().c_str());
    Require(database.CloseDatabase(), "close", database.GetLastErrorMsg().c_str());
}

Library::Library(const std::string& path)
{
    Require(m_database.OpenDatabase(path, false), "open", m_database.GetLastErrorMsg().c_str());
}

void Library::Execute(const std::string& sql)
{
    Require(m_database.Execute(sql), sql.c_str(), m_database.GetLastErrorMsg().c_str());
}

void Library::Insert(const Write& write)
{
    Require(m_database.WriteTableValues("sample", write), "write", m_database.GetLastErrorMsg().c_str());
}

void Library::InsertEach(const std::vector<Write>& writes)
{
    for (const Write& write : writes) {
        Insert(write);
    }
}

void Library::UpdateEach(const std::vector<Change>& changes)
{
    for (const Change& change : changes) {
        Require(m_database.UpdateTableValues("sample", change.values, change.condition), "update",
                m_database.GetLastErrorMsg().c_str());
    }
}

void Library::Read(const std::string& sql, Rows& rows)
{
    Require(m_database.ReadValues(sql, rows), "read", m_database.GetLastErrorMsg().c_str());
}

Totals Library::Walk(const std::string& sql)
{
    Totals totals;
    Require(m_database.SqlQueryBegin(sql), "begin", m_database.GetLastErrorMsg().c_str());
    DbTableRowValues row;
    while (m_database.ReadNextRow(row)) {
        Add(totals, row);
    }
    Require(m_database.Succeeded() && m_database.CloseReadTable(), "walk", m_database.GetLastErrorMsg().c_str());
    return totals;
}

Totals Library::Iterate(const std::string& sql)
{
    Totals totals;
    Require(m_database.SqlQueryBegin(sql), "begin", m_database.GetLastErrorMsg().c_str());
    for (const DbTableRowValues& row : m_database) {
        Add(totals, row);
    }
    Require(m_database.Succeeded() && m_database.CloseReadTable(), "walk", m_database.GetLastErrorMsg().c_str());
    return totals;
}

void Library::InsertBound(const std::vector<SampleRow>& rows)
{
    SqlCommand insert = m_database.PrepareStatement("INSERT INTO sample VALUES (?,?,?,?)");
    for (const SampleRow& row : rows) {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(row.bytes.data());
        const bool done = insert.BindInteger(1, row.number) && insert.BindDouble(2, row.measure) &&
                          insert.BindText(3, row.label) && insert.BindBlob(4, {bytes, row.bytes.size()}) &&
                          insert.Step() && insert.Reset();
        Require(done, "bound insert", insert.GetLastErrorMsg().c_str());
    }
}

Totals Library::ReadColumns(int times)
{
    Totals totals;
    SqlCommand query = m_database.PrepareStatement(SelectAll);
    Require(query.Step() && query.HasRowData(), "step", query.GetLastErrorMsg().c_str());
    for (int i = 0; i < times; ++i) {
        const std::string label = query.ColumnText(2);
        const std::span<const unsigned char> bytes = query.ColumnBlob(3);
        totals.Add(query.ColumnInt(0), query.ColumnDouble(1), label.data(), label.size(),
                   reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    return totals;
}

} // namespace Morvik::sql::bench
