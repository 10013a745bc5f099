#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <Poco/Data/LOB.h>
#include <Poco/Data/RecordSet.h>
#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/Session.h>
#include <Poco/Data/Statement.h>

#include "contenders/BoundContender.h"

namespace Morvik::sql::bench {

namespace data = ::Poco::Data;
namespace keywords = ::Poco::Data::Keywords;

/// Does the jobs with POCO Data, which binds and extracts complete columns. It cannot read single columns of a stepped
/// statement.
class Poco : public BoundContender<Poco> {
public:
    static constexpr const char* Name = "POCO";

    /// The rows, stored by column: POCO executes the statement once for each element.
    struct Columns {
        explicit Columns(const std::vector<SampleRow>& rows)
        {
            for (const SampleRow& row : rows) {
                numbers.push_back(row.number);
                measures.push_back(row.measure);
                labels.push_back(row.label);
                bytes.emplace_back(row.bytes.data(), row.bytes.size());
            }
        }

        std::vector<int> numbers;
        std::vector<double> measures;
        std::vector<std::string> labels;
        std::vector<data::CLOB> bytes;
    };

    using Write = Columns;

    static Write MakeWrite(const std::vector<SampleRow>& rows) { return Write(rows); }

    static void OpenAndClose(const std::string& path) { Opened(path).close(); }

    explicit Poco(const std::string& path) : m_session(Opened(path)) {}

    void Execute(const std::string& sql) { m_session << sql, keywords::now; }

    // POCO takes its arguments by reference to non-const and does not change them.
    void InsertBound(const Columns& columns)
    {
        auto& bound = const_cast<Columns&>(columns);
        m_session << InsertRow, keywords::use(bound.numbers), keywords::use(bound.measures),
            keywords::use(bound.labels), keywords::use(bound.bytes), keywords::now;
    }

    void InsertEach(const std::vector<Write>& writes)
    {
        Variables values;
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

    void UpdateEach(const std::vector<Change>& changes)
    {
        Variables values;
        data::Statement update(m_session);
        update << UpdateRow, keywords::use(values.measure), keywords::use(values.label), keywords::use(values.bytes),
            keywords::use(values.number);
        for (const Change& row : changes) {
            values.number = row.number;
            values.measure = row.measure;
            values.label = row.label;
            values.bytes.assignRaw(row.bytes.data(), row.bytes.size());
            update.execute();
        }
    }

    void Read(const std::string& sql, Rows& rows)
    {
        Columns read({});
        m_session << sql, keywords::into(read.numbers), keywords::into(read.measures), keywords::into(read.labels),
            keywords::into(read.bytes), keywords::now;
        for (std::size_t i = 0; i < read.numbers.size(); ++i) {
            const data::CLOB& bytes = read.bytes[i];
            rows.push_back(
                {read.numbers[i], read.measures[i], std::move(read.labels[i]), {bytes.begin(), bytes.end()}});
        }
    }

    Totals Walk(const std::string& sql)
    {
        Totals totals;
        Variables values;
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

    Totals LookUp(const std::vector<Query>& queries)
    {
        Totals totals;
        Variables values;
        Query number = 0;
        data::Statement query(m_session);
        query << SelectRow, keywords::use(number), keywords::into(values.number), keywords::into(values.measure),
            keywords::into(values.label), keywords::into(values.bytes);
        for (const Query wanted : queries) {
            number = wanted;
            Rows rows;
            if (query.execute() > 0) {
                rows.push_back(
                    {values.number, values.measure, values.label, {values.bytes.begin(), values.bytes.end()}});
            }
            totals += SumOf(rows);
        }
        return totals;
    }

private:
    // The variables that a statement binds or fills.
    struct Variables {
        int number = 0;
        double measure = 0.0;
        std::string label;
        data::CLOB bytes;
    };

    static data::Session Opened(const std::string& path)
    {
        static const bool registered = (data::SQLite::Connector::registerConnector(), true);
        static_cast<void>(registered);
        return {data::SQLite::Connector::KEY, path};
    }

    data::Session m_session;
};

} // namespace Morvik::sql::bench
