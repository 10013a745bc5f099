#pragma once

#include <sql/DatabaseApi.h>

#include <span>
#include <string>
#include <utility>

#include "contenders/BoundContender.h"
#include "contenders/Library.h"

namespace Morvik::sql::bench {

/// Does the jobs with the facade's prepared statements, as an application does.
class LibraryPrepared : public BoundContender<LibraryPrepared> {
public:
    static constexpr const char* Name = "PrepareStatement";

    explicit LibraryPrepared(const std::string& path)
    {
        RequireDone(m_database, m_database.OpenDatabase(path, false), Name);
    }

    void Execute(const std::string& sql) { RequireDone(m_database, m_database.Execute(sql), Name); }

    auto Inserter()
    {
        return [insert = m_database.PrepareStatement(InsertRow)](const SampleRow& row) mutable {
            bench::Insert(insert, row);
        };
    }

    auto Updater()
    {
        return [update = m_database.PrepareStatement(UpdateRow)](const SampleRow& row) mutable {
            const bool done = update.BindDouble(1, row.measure) && update.BindText(2, row.label) &&
                              update.BindBlob(3, Bytes(row)) && update.BindInteger(4, row.number) && update.Step() &&
                              update.Reset();
            RequireDone(update, done, Name);
        };
    }

    auto Finder()
    {
        return [query = m_database.PrepareStatement(SelectRow)](int number, Rows& rows) mutable {
            RequireDone(query, query.BindInteger(1, number), Name);
            ForEachRowOf(query, [&](SampleRow& row) { rows.push_back(std::move(row)); });
        };
    }

    void ForEachRow(const std::string& sql, auto action)
    {
        SqlCommand query = m_database.PrepareStatement(sql);
        ForEachRowOf(query, action);
    }

private:
    static void ForEachRowOf(SqlCommand& query, auto action)
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
        RequireDone(query, query.Reset(), Name);
    }

    DatabaseApi m_database;
};

} // namespace Morvik::sql::bench
