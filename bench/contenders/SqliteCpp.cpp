#include "contenders/SqliteCpp.h"

#include "support/Require.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <cstddef>

namespace Morvik::sql::bench {

namespace {

const int ReadWrite = SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE;
constexpr const char* InsertRow = "INSERT INTO sample VALUES (?,?,?,?)";

void InsertOne(SQLite::Statement& insert, const SampleRow& row)
{
    insert.bind(1, row.number);
    insert.bind(2, row.measure);
    insert.bindNoCopy(3, row.label);
    insert.bindNoCopy(4, row.bytes.data(), static_cast<int>(row.bytes.size()));
    insert.exec();
    insert.reset();
}

const char* Bytes(const SQLite::Column& column)
{
    return static_cast<const char*>(column.getBlob());
}

std::size_t Size(const SQLite::Column& column)
{
    return static_cast<std::size_t>(column.getBytes());
}

SampleRow RowOf(const SQLite::Statement& query)
{
    const SQLite::Column bytes = query.getColumn(3);
    const char* const begin = Bytes(bytes);
    return {query.getColumn(0).getInt(),
            query.getColumn(1).getDouble(),
            query.getColumn(2).getString(),
            {begin, begin + Size(bytes)}};
}

void AddColumns(Totals& totals, const SQLite::Statement& query)
{
    const SQLite::Column label = query.getColumn(2);
    const char* const text = label.getText();
    const SQLite::Column bytes = query.getColumn(3);
    totals.Add(query.getColumn(0).getInt(), query.getColumn(1).getDouble(), text, Size(label), Bytes(bytes),
               Size(bytes));
}

} // namespace

void SqliteCpp::OpenAndClose(const std::string& path)
{
    const SQLite::Database database(path, ReadWrite);
}

SqliteCpp::SqliteCpp(const std::string& path) : m_database(path, ReadWrite) {}

void SqliteCpp::Execute(const std::string& sql)
{
    m_database.exec(sql);
}

void SqliteCpp::Insert(const Write& write)
{
    SQLite::Transaction transaction(m_database);
    InsertBound(write);
    transaction.commit();
}

void SqliteCpp::InsertEach(const std::vector<Write>& writes)
{
    SQLite::Statement insert(m_database, InsertRow);
    for (const Write& write : writes) {
        InsertOne(insert, write.front());
    }
}

void SqliteCpp::UpdateEach(const std::vector<Change>& changes)
{
    SQLite::Statement update(m_database, "UPDATE sample SET measure=?, label=?, bytes=? WHERE number=?");
    for (const Change& row : changes) {
        update.bind(1, row.measure);
        update.bindNoCopy(2, row.label);
        update.bindNoCopy(3, row.bytes.data(), static_cast<int>(row.bytes.size()));
        update.bind(4, row.number);
        update.exec();
        update.reset();
    }
}

void SqliteCpp::Read(const std::string& sql, Rows& rows)
{
    SQLite::Statement query(m_database, sql);
    while (query.executeStep()) {
        rows.push_back(RowOf(query));
    }
}

Totals SqliteCpp::Walk(const std::string& sql)
{
    Totals totals;
    SQLite::Statement query(m_database, sql);
    while (query.executeStep()) {
        AddColumns(totals, query);
    }
    return totals;
}

Totals SqliteCpp::LookUp(const std::vector<Query>& queries)
{
    Totals totals;
    SQLite::Statement query(m_database, "SELECT * FROM sample WHERE number=?");
    for (const Query number : queries) {
        query.bind(1, number);
        Rows rows;
        while (query.executeStep()) {
            rows.push_back(RowOf(query));
        }
        query.reset();
        totals += SumOf(rows);
    }
    return totals;
}

void SqliteCpp::InsertBound(const std::vector<SampleRow>& rows)
{
    SQLite::Statement insert(m_database, InsertRow);
    for (const SampleRow& row : rows) {
        InsertOne(insert, row);
    }
}

Totals SqliteCpp::ReadColumns(int times)
{
    Totals totals;
    SQLite::Statement query(m_database, SelectAll);
    Require(query.executeStep(), "step", Name);
    for (int i = 0; i < times; ++i) {
        const std::string label = query.getColumn(2).getString();
        const SQLite::Column bytes = query.getColumn(3);
        totals.Add(query.getColumn(0).getInt(), query.getColumn(1).getDouble(), label.data(), label.size(),
                   Bytes(bytes), Size(bytes));
    }
    return totals;
}

} // namespace Morvik::sql::bench
