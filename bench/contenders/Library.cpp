#include "contenders/Library.h"

#include <span>
#include <variant>

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

Totals Library::SumOf(const Rows& rows, Totals totals)
{
    for (const DbTableRowValues& row : rows.rows) {
        Add(totals, row);
    }
    return totals;
}

void Library::OpenAndClose(const std::string& path)
{
    Library opened(path);
    RequireDone(opened.m_database, opened.m_database.CloseDatabase(), "close");
}

Library::Library(const std::string& path)
{
    RequireDone(m_database, m_database.OpenDatabase(path, false), "open");
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
        RequireDone(m_database, m_database.UpdateTableValues("sample", change.values, change.condition), "update");
    }
}

Totals Library::Walk(const std::string& sql)
{
    Totals totals;
    RequireDone(m_database, m_database.SqlQueryBegin(sql), "begin");
    DbTableRowValues row;
    while (m_database.ReadNextRow(row)) {
        Add(totals, row);
    }
    RequireDone(m_database, m_database.Succeeded() && m_database.CloseReadTable(), "walk");
    return totals;
}

Totals Library::Iterate(const std::string& sql)
{
    Totals totals;
    RequireDone(m_database, m_database.SqlQueryBegin(sql), "begin");
    for (const DbTableRowValues& row : m_database) {
        Add(totals, row);
    }
    RequireDone(m_database, m_database.Succeeded() && m_database.CloseReadTable(), "walk");
    return totals;
}

void Library::InsertBound(const std::vector<SampleRow>& rows)
{
    SqlCommand insert = m_database.PrepareStatement(InsertRow);
    for (const SampleRow& row : rows) {
        bench::Insert(insert, row);
    }
}

Totals Library::ReadColumns(int times)
{
    Totals totals;
    SqlCommand query = m_database.PrepareStatement(SelectAll);
    RequireDone(query, query.Step() && query.HasRowData(), "step");
    for (int i = 0; i < times; ++i) {
        const std::string label = query.ColumnText(2);
        const std::span<const unsigned char> bytes = query.ColumnBlob(3);
        totals.Add(query.ColumnInt(0), query.ColumnDouble(1), label.data(), label.size(),
                   reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    return totals;
}

} // namespace Morvik::sql::bench
