#include "contenders/Soci.h"

#include <soci/sqlite3/soci-sqlite3.h>

namespace Morvik::sql::bench {

namespace {

// The variables that a statement binds or fills.
struct Exchanged {
    explicit Exchanged(soci::session& session) : blob(session) {}

    SampleRow row;
    soci::blob blob;

    void Assign(const SampleRow& from)
    {
        row.number = from.number;
        row.measure = from.measure;
        row.label = from.label;
        blob.write(0, from.bytes.data(),
                   from.bytes.size()); // all texts have the same length, so no byte of an earlier text remains
    }

    void TakeBytes()
    {
        row.bytes.resize(blob.get_len());
        blob.read(0, row.bytes.data(), row.bytes.size());
    }
};

class Inserter {
public:
    explicit Inserter(soci::session& session)
        : m_values(session), m_insert((session.prepare << "INSERT INTO sample VALUES (:number,:measure,:label,:bytes)",
                                       soci::use(m_values.row.number), soci::use(m_values.row.measure),
                                       soci::use(m_values.row.label), soci::use(m_values.blob)))
    {}

    void Insert(const SampleRow& row)
    {
        m_values.Assign(row);
        m_insert.execute(true);
    }

private:
    Exchanged m_values;
    soci::statement m_insert;
};

// Calls `action(row)` for every row of the query.
template <typename Action>
void ForEachRow(soci::session& session, const std::string& sql, Action action)
{
    Exchanged values(session);
    soci::statement query = (session.prepare << sql, soci::into(values.row.number), soci::into(values.row.measure),
                             soci::into(values.row.label), soci::into(values.blob));
    query.execute();
    while (query.fetch()) {
        values.TakeBytes();
        action(values.row);
    }
}

} // namespace

void Soci::OpenAndClose(const std::string& path)
{
    const soci::session session(soci::sqlite3, path);
}

Soci::Soci(const std::string& path) : m_session(soci::sqlite3, path) {}

void Soci::Execute(const std::string& sql)
{
    m_session << sql;
}

void Soci::Insert(const Write& write)
{
    soci::transaction transaction(m_session);
    InsertBound(write);
    transaction.commit();
}

void Soci::InsertEach(const std::vector<Write>& writes)
{
    Inserter inserter(m_session);
    for (const Write& write : writes) {
        inserter.Insert(write.front());
    }
}

void Soci::UpdateEach(const std::vector<Change>& changes)
{
    Exchanged values(m_session);
    soci::statement update =
        (m_session.prepare << "UPDATE sample SET measure=:measure, label=:label, bytes=:bytes WHERE number=:number",
         soci::use(values.row.measure), soci::use(values.row.label), soci::use(values.blob),
         soci::use(values.row.number));
    for (const Change& row : changes) {
        values.Assign(row);
        update.execute(true);
    }
}

void Soci::Read(const std::string& sql, Rows& rows)
{
    ForEachRow(m_session, sql, [&](const SampleRow& row) { rows.push_back(row); });
}

Totals Soci::Walk(const std::string& sql)
{
    Totals totals;
    ForEachRow(m_session, sql, [&](const SampleRow& row) { totals.Add(row); });
    return totals;
}

Totals Soci::LookUp(const std::vector<Query>& queries)
{
    Totals totals;
    Exchanged values(m_session);
    Query number = 0;
    soci::statement query = (m_session.prepare << "SELECT * FROM sample WHERE number=:number", soci::use(number),
                             soci::into(values.row.number), soci::into(values.row.measure),
                             soci::into(values.row.label), soci::into(values.blob));
    for (const Query wanted : queries) {
        number = wanted;
        Rows rows;
        query.execute();
        while (query.fetch()) {
            values.TakeBytes();
            rows.push_back(values.row);
        }
        totals += SumOf(rows);
    }
    return totals;
}

void Soci::InsertBound(const std::vector<SampleRow>& rows)
{
    Inserter inserter(m_session);
    for (const SampleRow& row : rows) {
        inserter.Insert(row);
    }
}

} // namespace Morvik::sql::bench
