#pragma once

#include <cstddef>
#include <string>

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include "contenders/BoundContender.h"
#include "support/Require.h"

namespace Morvik::sql::bench {

/// Does the jobs with SQLiteCpp: prepared statements, bound without a copy where SQLiteCpp supports it.
class SqliteCpp : public BoundContender<SqliteCpp> {
public:
    static constexpr const char* Name = "SQLiteCpp";

    static void OpenAndClose(const std::string& path) { const SqliteCpp database(path); }

    explicit SqliteCpp(const std::string& path) : m_database(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE) {}

    void Execute(const std::string& sql) { m_database.exec(sql); }

    auto Inserter()
    {
        return [insert = SQLite::Statement(m_database, InsertRow)](const SampleRow& row) mutable {
            insert.bind(1, row.number);
            insert.bind(2, row.measure);
            insert.bindNoCopy(3, row.label);
            insert.bindNoCopy(4, row.bytes.data(), static_cast<int>(row.bytes.size()));
            insert.exec();
            insert.reset();
        };
    }

    auto Updater()
    {
        return [update = SQLite::Statement(m_database, UpdateRow)](const SampleRow& row) mutable {
            update.bind(1, row.measure);
            update.bindNoCopy(2, row.label);
            update.bindNoCopy(3, row.bytes.data(), static_cast<int>(row.bytes.size()));
            update.bind(4, row.number);
            update.exec();
            update.reset();
        };
    }

    auto Finder()
    {
        return [query = SQLite::Statement(m_database, SelectRow)](int number, Rows& rows) mutable {
            query.bind(1, number);
            while (query.executeStep()) {
                rows.push_back(RowOf(query));
            }
            query.reset();
        };
    }

    void ForEachRow(const std::string& sql, auto action)
    {
        SQLite::Statement query(m_database, sql);
        while (query.executeStep()) {
            action(query);
        }
    }

    static SampleRow RowOf(const SQLite::Statement& query)
    {
        const SQLite::Column bytes = query.getColumn(3);
        const char* const begin = Bytes(bytes);
        return {query.getColumn(0).getInt(),
                query.getColumn(1).getDouble(),
                query.getColumn(2).getString(),
                {begin, begin + Size(bytes)}};
    }

    static void AddTo(Totals& totals, const SQLite::Statement& query)
    {
        const SQLite::Column label = query.getColumn(2);
        const char* const text = label.getText();
        const SQLite::Column bytes = query.getColumn(3);
        totals.Add(query.getColumn(0).getInt(), query.getColumn(1).getDouble(), text, Size(label), Bytes(bytes),
                   Size(bytes));
    }

    Totals ReadColumns(int times)
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

private:
    static const char* Bytes(const SQLite::Column& column) { return static_cast<const char*>(column.getBlob()); }
    static std::size_t Size(const SQLite::Column& column) { return static_cast<std::size_t>(column.getBytes()); }

    SQLite::Database m_database;
};

} // namespace Morvik::sql::bench
