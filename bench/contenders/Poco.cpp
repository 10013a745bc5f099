#include "contenders/Poco.h"

#include <cstddef>

#include <Poco/Data/RecordSet.h>
#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/Statement.h>

namespace Morvik::sql::bench {

namespace {

namespace data = ::Poco::Data;
namespace keywords = ::Poco::Data::Keywords;

data::Session Opened(const std::string& path)
{
    static const bool registered = [] {
        data::SQLite::Connector::registerConnector();
        return true;
    }();
    static_cast<void>(registered);
    return {data::SQLite::Connector::KEY, path};
}

// The variables that a statement binds or fills.
struct Exchanged {
    int number = 0;
    double measure = 0.0;
    std::string label;
    data::CLOB bytes;

    void Assign(const SampleRow& row)
    {
        number = row.number;
        measure = row.measure;
        label = row.label;
        bytes.assignRaw(row.bytes.data(), row.bytes.size());
    }

    SampleRow Row() const { return {number, measure, label, {bytes.begin(), bytes.end()}}; }
};

constexpr const char* InsertRow = "INSERT INTO sample VALUES (?,?,?,?)";

} // namespace

Poco::Columns::Columns(const std::vector<SampleRow>& rows)
{
    for (const SampleRow& row : rows) {
        numbers.push_back(row.number);
        measures.push_back(row.measure);
        labels.push_back(row.label);
        bytes.emplace_back(row.bytes.data(), row.bytes.size());
    }
}

void Poco::OpenAndClose(const std::string& path)
{
    Opened(path).close();
}

Poco::Poco(const std::string& path) : m_session(Opened(path)) {}

void Poco::Execute(const std::string& sql)
{
    m_session << sql, keywords::now;
}

void Poco::Insert(const Write& write)
{
    m_session.begin();
    InsertBound(write);
    m_session.commit();
}

void Poco::InsertEach(const std::vector<Write>& writes)
{
    Exchanged values;
    data::Statement insert(m_session);
    insert << InsertRow, keywords::use(values.number), keywords::use(values.measure), keywords::use(values.label),
        keywords::use(values.bytes);
    for (const Write& write : writes) {
        values.number = write.numbers.front();
        values.measure = write.measures.front();
        values.label = write.labels.front();
        values.bytes = write.bytes.front();
        insert.execute();
    }
}

void Poco::UpdateEach(const std::vector<Change>& changes)
{
    Exchanged values;
    data::Statement update(m_session);
    update << "UPDATE sample SET measure=?, label=?, bytes=? WHERE number=?", keywords::use(values.measure),
        keywords::use(values.label), keywords::use(values.bytes), keywords::use(values.number);
    for (const Change& row : changes) {
        values.Assign(row);
        update.execute();
    }
}

void Poco::Read(const std::string& sql, Rows& rows)
{
    std::vector<int> numbers;
    std::vector<double> measures;
    std::vector<std::string> labels;
    std::vector<data::CLOB> bytes;
    m_session << sql, keywords::into(numbers), keywords::into(measures), keywords::into(labels), keywords::into(bytes),
        keywords::now;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        rows.push_back({numbers[i], measures[i], std::move(labels[i]), {bytes[i].begin(), bytes[i].end()}});
    }
}

Totals Poco::Walk(const std::string& sql)
{
    Totals totals;
    Exchanged values;
    data::Statement query(m_session);
    query << sql, keywords::into(values.number), keywords::into(values.measure), keywords::into(values.label),
        keywords::into(values.bytes), keywords::range(0, 1);
    while (!query.done()) {
        if (query.execute() > 0) {
            totals.Add(values.number, values.measure, values.label.data(), values.label.size(),
                       values.bytes.rawContent(), values.bytes.size());
        }
    }
    return totals;
}

Totals Poco::LookUp(const std::vector<Query>& queries)
{
    Totals totals;
    Exchanged values;
    Query number = 0;
    data::Statement query(m_session);
    query << "SELECT * FROM sample WHERE number=?", keywords::use(number), keywords::into(values.number),
        keywords::into(values.measure), keywords::into(values.label), keywords::into(values.bytes);
    for (const Query wanted : queries) {
        number = wanted;
        Rows rows;
        if (query.execute() > 0) {
            rows.push_back(values.Row());
        }
        totals += SumOf(rows);
    }
    return totals;
}

// POCO takes its arguments by reference to non-const and does not change them.
void Poco::InsertBound(const Columns& columns)
{
    auto& bound = const_cast<Columns&>(columns);
    m_session << InsertRow, keywords::use(bound.numbers), keywords::use(bound.measures), keywords::use(bound.labels),
        keywords::use(bound.bytes), keywords::now;
}

} // namespace Morvik::sql::bench
