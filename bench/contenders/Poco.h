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

    template <typename Number, typename Measure, typename Label, typename Bytes>
    struct Values {
        Number number{};
        Measure measure{};
        Label label{};
        Bytes bytes{};
    };

    /// The rows, stored by column: POCO executes the statement once for each element.
    using Write = Values<std::vector<int>, std::vector<double>, std::vector<std::string>, std::vector<data::CLOB>>;

    static Write MakeWrite(const std::vector<SampleRow>& rows)
    {
        Write columns;
        for (const SampleRow& row : rows) {
            columns.number.push_back(row.number);
            columns.measure.push_back(row.measure);
            columns.label.push_back(row.label);
            columns.bytes.emplace_back(row.bytes.data(), row.bytes.size());
        }
        return columns;
    }

    static void OpenAndClose(const std::string& path) { Opened(path).close(); }

    explicit Poco(const std::string& path) : m_session(Opened(path)) {}

    void Execute(const std::string& sql) { m_session << sql, keywords::now; }

    // POCO takes its arguments by reference to non-const and does not change them.
    void InsertBound(const Write& columns) { Use(m_session << InsertRow, const_cast<Write&>(columns)), keywords::now; }

    void InsertEach(const std::vector<Write>& writes)
    {
        Variables values;
        data::Statement insert = Use(m_session << InsertRow, values);
        for (const Write& write : writes) {
            values.number = write.number.front();
            values.measure = write.measure.front();
            values.label = write.label.front();
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
        Write read;
        Into(m_session << sql, read), keywords::now;
        for (std::size_t i = 0; i < read.number.size(); ++i) {
            const data::CLOB& bytes = read.bytes[i];
            rows.push_back({read.number[i], read.measure[i], std::move(read.label[i]), {bytes.begin(), bytes.end()}});
        }
    }

    Totals Walk(const std::string& sql)
    {
        Totals totals;
        Variables values;
        data::Statement query = (Into(m_session << sql, values), keywords::range(0, 1));
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
        Variables values;
        Query number = 0;
        data::Statement query = Into((m_session << SelectRow, keywords::use(number)), values);
        return SumOfFound<Poco>(queries, [&](Query wanted, Rows& rows) {
            number = wanted;
            if (query.execute() > 0) {
                const data::CLOB& bytes = values.bytes;
                rows.push_back({values.number, values.measure, values.label, {bytes.begin(), bytes.end()}});
            }
        });
    }

private:
    // The variables that a statement binds or fills.
    using Variables = Values<int, double, std::string, data::CLOB>;

    static data::Statement Use(data::Statement statement, auto& values)
    {
        return statement, keywords::use(values.number), keywords::use(values.measure), keywords::use(values.label),
               keywords::use(values.bytes);
    }

    static data::Statement Into(data::Statement statement, auto& values)
    {
        return statement, keywords::into(values.number), keywords::into(values.measure), keywords::into(values.label),
               keywords::into(values.bytes);
    }

    static data::Session Opened(const std::string& path)
    {
        static const bool registered = (data::SQLite::Connector::registerConnector(), true);
        static_cast<void>(registered);
        return {data::SQLite::Connector::KEY, path};
    }

    data::Session m_session;
};

} // namespace Morvik::sql::bench
